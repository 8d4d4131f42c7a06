#include "InjectionTest.h"

#include <dlfcn.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>

#include "plugin/ItemDisp.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* KERNEL_BUS = "/sys/bus/pci/devices";
constexpr const char* LIST_DIR = "/opt/tarmica/qor/kam/work";
constexpr const char* RAID_CARD = "02:00.0_1000:005d_0000_02\n";
constexpr const char* SSD = "03:00.0_1aed:2001_0000_00\n";
constexpr int RESULTS_AND_FAILURES = 3;
constexpr const char* THROWN = "std::bad_alloc";

// The plug-in loaded anew, so that it reads its settings anew.
class CLibrary {
public:
    CLibrary() : m_Handle(dlopen(QOR_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(m_Handle, nullptr) << dlerror();
        m_Create = reinterpret_cast<void* (*)()>(dlsym(m_Handle, "CreateLibIF"));
        m_Delete = reinterpret_cast<void (*)(void*)>(dlsym(m_Handle, "DeleteLibIF"));
    }
    ~CLibrary() {
        m_Delete(m_Object);
        dlclose(m_Handle);
    }
    CLibrary(const CLibrary&) = delete;  // one loaded library, one owner
    CLibrary& operator=(const CLibrary&) = delete;

    CMngSrv_QorLibIF& Object() {
        if (m_Object == nullptr) {
            m_Object = static_cast<CMngSrv_QorLibIF*>(m_Create());
        }
        return *m_Object;
    }

    // The list that XML is made of; to be freed with FreeItemList().
    std::list<CItemDisp*> Items() const {
        const auto create =
            reinterpret_cast<decltype(&CreateItemDisp)>(dlsym(m_Handle, "CreateItemDisp"));
        const char* const title = "### General Information ###";
        return {create("", "Controller Information", "", "TRUE"),
                create("Controller Information", title, "", "TRUE"),
                create(title, "Product Name", "A controller with a long name", "TRUE")};
    }

private:
    void* m_Handle;
    void* (*m_Create)();
    void (*m_Delete)(void*);
    CMngSrv_QorLibIF* m_Object = nullptr;
};

size_t CountEntries(const char* directory) {
    const fs::directory_iterator entries(directory);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

struct CTrial {
    COutcome outcome;
    std::string verdict;  // or THROWN
    std::string content;
    long strikes = 0;
};

void Ask(const CRequest& request, CLibrary& library, const CInjection* injection, CTrial& trial) {
    std::list<CItemDisp*> items = library.Items();
    if (injection != nullptr) {
        Arm(*injection);
    }
    bool thrown = false;
    try {
        request.ask(library.Object(), items, trial.outcome);
    } catch (const std::bad_alloc&) {
        thrown = true;
    }
    trial.strikes = Disarm();
    trial.verdict = thrown ? THROWN : Verdict(trial.outcome);
    trial.content = Content(trial.outcome);
    library.Object().FreeItemList(&trial.outcome.items);
    library.Object().FreeItemList(&items);
    fs::remove(EXEC_RESULT);
}

std::string Describe(const CInjection& injection) {
    return std::string(injection.function) + " fails with " + std::to_string(injection.error) +
           " after " + std::to_string(injection.successes) + " calls";
}

bool Holds(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

// A file that cannot be removed stays; so does, on purpose, the output of a utility that could not
// be run.
void ExpectNoFileLeft(const CRequest& request, const CInjection& injection) {
    const bool mayStay = std::strcmp(injection.function, "unlink") == 0 ||
                         std::strstr(request.name, "WithoutTool") != nullptr;
    for (const char* directory : {RESULT_DIR, LIST_DIR}) {
        if (!mayStay && fs::exists(directory)) {
            const bool hasList = fs::exists(DEVICE_LIST) && directory == LIST_DIR;
            EXPECT_EQ(CountEntries(directory), hasList ? 1U : 0U) << directory;
        }
    }
    fs::remove_all(RESULT_DIR);
}

void ExpectThrown(const COutcome& outcome, const CInjection& injection) {
    EXPECT_STREQ(injection.function, ALLOCATION) << "only a lack of memory throws";
    EXPECT_EQ(outcome.errorCode + outcome.noticeCode, "");
}

}  // namespace

void CInjectionTest::SetUp() {
    CPrivateServerTest::SetUp();
    fs::create_directories(PCI_BUS);
    ASSERT_EQ(mount(PCI_BUS, KERNEL_BUS, "none", MS_BIND, nullptr), 0);
    const auto& [request, duration] = GetParam();
    m_Duration = duration;
    Use(Requests()[request], RESULTS_AND_FAILURES);
}

void CInjectionTest::TearDown() {
    RecordProperty("injections", std::to_string(m_Struck));
    std::printf("%ld injections\n", m_Struck);
    umount2(KERNEL_BUS, MNT_DETACH);
    CPrivateServerTest::TearDown();
}

void CInjectionTest::LearnContent(const std::string& deviceList) {
    WriteFile(DEVICE_LIST, deviceList);
    CLibrary library;
    CTrial trial;
    Ask(*m_Request, library, nullptr, trial);
    m_Contents.insert(trial.content);
}

void CInjectionTest::Use(const CRequest& request, int traceLevels) {
    m_Request = &request;
    m_Contents = {""};
    LayOutServer(traceLevels);
    request.prepare();
    LearnContent("none");
    LearnContent(RAID_CARD);
    LearnContent(SSD);
    LayOutServer(traceLevels);
    request.prepare();
    CLibrary library;
    CTrial trial;
    Ask(request, library, nullptr, trial);
    m_WholeVerdict = trial.verdict;
    m_WholeContent = trial.content;
    m_Contents.insert(trial.content);
}

bool CInjectionTest::Try(const CInjection& injection) {
    const CRequest& request = *m_Request;
    const testing::ScopedTrace trace(__FILE__, __LINE__, Describe(injection));
    request.prepare();
    const long blocks = LiveBlocks();
    const size_t openFiles = CountEntries("/proc/self/fd");
    bool struck = false;
    {
        CLibrary library;
        CTrial trial;
        Ask(request, library, &injection, trial);
        struck = trial.strikes > 0;
        if (trial.verdict == THROWN) {
            ExpectThrown(trial.outcome, injection);
            EXPECT_EQ(trial.content, "");
        } else if (Holds(request.failures, trial.verdict)) {
            EXPECT_TRUE(m_Contents.contains(trial.content)) << trial.content;
            EXPECT_TRUE(trial.outcome.items.empty());
        } else {
            EXPECT_TRUE(Holds(request.successes, trial.verdict)) << trial.verdict;
            EXPECT_TRUE(m_Contents.contains(trial.content)) << trial.content;
        }
        CTrial again;
        Ask(request, library, nullptr, again);
        EXPECT_EQ(again.verdict, m_WholeVerdict);
        EXPECT_EQ(again.content, m_WholeContent);
    }
    EXPECT_EQ(LiveBlocks(), blocks) << "memory was left";
    EXPECT_EQ(CountEntries("/proc/self/fd"), openFiles) << "a descriptor was left";
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    EXPECT_EQ(errno, ECHILD);
    ExpectNoFileLeft(request, injection);
    m_Struck += struck ? 1 : 0;
    return struck && !HasFailure();
}

long CInjectionTest::Stride() const {
    return std::getenv("QOR_ALL_INJECTIONS") != nullptr ? 1 : m_Request->stride;
}

void CInjectionTest::TryAllocations() {
    for (long call = 0; Try({ALLOCATION, 0, call, m_Duration}); call += Stride()) {
    }
}

void CInjectionTest::TryCalls(const CFailingFunction& function) {
    const size_t count = function.errors.size();
    bool left = !HasFailure();
    for (size_t round = 0; left; ++round) {
        const long call = static_cast<long>(round) * Stride();
        const size_t first = Stride() == 1 ? 0 : round % count;
        const size_t end = Stride() == 1 ? count : first + 1;
        for (size_t i = first; left && i < end; ++i) {
            const int error = function.errors[i];
            // Interruptions do not last; whoever is interrupted tries again.
            left = Try({function.name, error, call, error == EINTR ? EDuration::Once : m_Duration});
        }
    }
}

std::string ParameterName(const testing::TestParamInfo<CInjectionTest::ParamType>& parameter) {
    const auto& [request, duration] = parameter.param;
    return std::string(Requests()[request].name) +
           (duration == EDuration::Lasting ? "Lasting" : "Once");
}

}  // namespace qortest
