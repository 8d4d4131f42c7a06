#include "InjectionFixture.h"

#include <dlfcn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>

#include "plugin/ItemDisp.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* KERNEL_BUS = "/sys/bus/pci/devices";
constexpr const char* LIST_DIR = "/opt/tarmica/qor/kam/work";
constexpr int RESULTS_AND_FAILURES = 3;
constexpr const char* THROWN = "std::bad_alloc";
constexpr const char* NO_DETAIL = "none";

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

    bool HasObject() const { return m_Object != nullptr; }

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

// Where result files go while the install directory is not seen: a directory of the whole machine.
constexpr const char* WITHOUT_INSTALL_PATH = "/tmp/MSRAID";

size_t CountOwnFilesWithoutInstallPath() {
    const fs::path directory = WITHOUT_INSTALL_PATH;
    std::array<char, 16> own = {};
    std::snprintf(own.data(), own.size(), "%08x_", static_cast<unsigned>(gettid()));
    size_t count = 0;
    for (const fs::directory_entry& entry :
         fs::exists(directory) ? fs::directory_iterator(directory) : fs::directory_iterator()) {
        count += entry.path().filename().string().starts_with(own.data()) ? 1U : 0U;
    }
    return count;
}

std::string ReadIfThere(const char* path) {
    return fs::exists(path) ? ReadFile(path) : "";
}

}  // namespace

struct CTrial {
    COutcome outcome;
    std::string verdict;  // or THROWN
    std::string content;
    std::string file;  // of KRZExecCli
    CRecord record;
    bool isAsked = false;  // there was memory for the plug-in's object
};

namespace {

// A failing allocation is noted with the file that was opened last, which may be the one being
// read.
void PlaceAllocations(std::vector<CCall>& calls) {
    std::string opened;
    for (CCall& call : calls) {
        if (call.function == ALLOCATION) {
            call.text = opened;
        } else if (call.function == "open" || call.function == "fopen") {
            opened = call.text;
        }
    }
}

void Ask(const CRequest& request, CLibrary& library, const CInjection* injection, CTrial& trial) {
    std::list<CItemDisp*> items = library.Items();
    injection != nullptr ? Arm(*injection) : Arm();
    bool thrown = false;
    try {
        request.ask(library.Object(), items, trial.outcome);
    } catch (const std::bad_alloc&) {
        thrown = true;
    }
    trial.isAsked = library.HasObject();
    trial.record = Disarm();
    PlaceAllocations(trial.record.calls);
    trial.verdict = thrown ? THROWN : Verdict(request, trial.outcome);
    trial.content = Content(trial.outcome);
    trial.file = ReadIfThere(EXEC_RESULT);
    library.Object().FreeItemList(&trial.outcome.items);
    library.Object().FreeItemList(&items);
    fs::remove(EXEC_RESULT);
}

// Each run of a tool has a result file of its own, whose directory is made anew.
bool StartsRun(const CCall& call) {
    return call.function == "mkdir" && call.text.ends_with("/MSRAID");
}

bool IsFailureOf(const CCall& call, std::initializer_list<const char*> functions) {
    const auto isIt = [&](const char* function) { return call.function == function; };
    return call.error != 0 && std::any_of(functions.begin(), functions.end(), isIt);
}

// Interrupted, it is called again.
bool IsUnread(const CCall& call) {
    return IsFailureOf(call, {"read", "pread"}) && call.error > 0 && call.error != EINTR;
}

// What counts as "no supported device", of which only the trace tells, is a device list or a list
// of supported devices that cannot be read.
bool IsDeviceListUnread(const CCall& call) {
    return call.text == DEVICE_LIST && (IsFailureOf(call, {"fopen", ALLOCATION}) || IsUnread(call));
}

bool IsIniUnread(const CCall& call, const char* name) {
    return fs::path(call.text).filename() == name &&
           (IsFailureOf(call, {"stat", "open", "fstat", ALLOCATION}) || IsUnread(call));
}

bool IsToolUnseen(const CCall& call) {
    return call.text == TOOL && IsFailureOf(call, {"stat"});
}

template <class Predicate>
bool HasCall(const CTrial& trial, Predicate predicate) {
    return std::any_of(trial.record.calls.begin(), trial.record.calls.end(), predicate);
}

// Each look for devices asks twice: whether the list is there, and what it is.
bool IsDeviceListUnseen(const CTrial& trial) {
    size_t asked = 0;
    return HasCall(trial, [&asked](const CCall& call) {
        return call.function == "stat" && call.text == DEVICE_LIST && ++asked % 2 == 0 &&
               call.error != 0;
    });
}

bool MayLackRaid(const CTrial& trial) {
    return IsDeviceListUnseen(trial) || HasCall(trial, [](const CCall& call) {
               return IsDeviceListUnread(call) || IsIniUnread(call, RAID_INI);
           });
}

// What a tool run, or the reading of its report, comes to grief by.
bool SpoilsRun(const CCall& call) {
    if (call.text.ends_with("_MngSrvRaid.txt")) {
        return IsFailureOf(call, {"open", "fopen", ALLOCATION}) || IsUnread(call);
    }
    return IsToolUnseen(call) ||
           IsFailureOf(call, {"mmap", "__clone", "dup2", "getdents64", "execvpe", "waitpid"});
}

// SSDs are reported by a tool that is known to be new enough: the run behind the look for supported
// SSDs asks for its version.
bool IsVersionForSsdsUnread(const CTrial& trial) {
    const std::vector<CCall>& calls = trial.record.calls;
    const auto look = std::find_if(calls.rbegin(), calls.rend(), [](const CCall& call) {
        return fs::path(call.text).filename() == SSD_INI;
    });
    const auto run = std::find_if(look.base(), calls.end(), StartsRun);
    if (look == calls.rend() || run == calls.end()) {
        return false;
    }
    return std::any_of(run, std::find_if(run + 1, calls.end(), StartsRun), SpoilsRun);
}

// A report whose first line cannot be read has no error of the tool's; what else it holds is read.
bool IsFirstLineUnread(const CTrial& trial) {
    return HasCall(trial, [](const CCall& call) {
        return call.text.ends_with("_MngSrvRaid.txt") &&
               (IsFailureOf(call, {"open", ALLOCATION}) || IsUnread(call));
    });
}

bool MayLackSsds(const CTrial& trial) {
    return IsVersionForSsdsUnread(trial) || IsDeviceListUnseen(trial) ||
           HasCall(trial, [](const CCall& call) {
               return IsDeviceListUnread(call) || IsIniUnread(call, SSD_INI);
           });
}

// The commands of the tool as the error detail names them, by the number of their run.
std::set<std::pair<size_t, std::string>> CommandsOf(const CTrial& trial) {
    const std::string prefix = std::string(TOOL_DIR) + "/";
    std::set<std::pair<size_t, std::string>> commands;
    size_t runs = 0;
    for (const CCall& call : trial.record.calls) {
        runs += StartsRun(call) ? 1U : 0U;
        if (call.function == "execvpe" && call.text.starts_with(prefix)) {
            commands.insert({runs, call.text.substr(prefix.size())});
        }
    }
    return commands;
}

size_t CountRuns(const CTrial& trial) {
    const std::vector<CCall>& calls = trial.record.calls;
    return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), StartsRun));
}

std::string Describe(const CInjection& injection) {
    const CFailure& cause = injection.cause;
    return std::string(injection.function) + " fails with " + std::to_string(injection.error) +
           " after " + std::to_string(injection.successes) + " calls" +
           (cause.function != nullptr ? std::string(", because of ") + cause.function : "");
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
    EXPECT_TRUE(mayStay || CountOwnFilesWithoutInstallPath() == 0);
    fs::remove_all(RESULT_DIR);
}

// The service-processor form has the codes of its items' request before it asks for memory itself.
bool HoldsCodesOfAnAnswer(const CRequest& request, const COutcome& outcome) {
    const std::string codes = "/" + outcome.errorCode + "/" + outcome.noticeCode;
    return codes == "//" || Holds(request.failures, "0" + codes) ||
           Holds(request.successes, "1" + codes);
}

void ExpectThrown(const CRequest& request, const CTrial& trial, const CInjection& injection) {
    EXPECT_STREQ(injection.function, ALLOCATION) << "only a lack of memory throws";
    EXPECT_EQ(trial.content, "");
    if (!trial.isAsked) {
        return;
    }
    if (request.texts == ETexts::CODES) {
        EXPECT_TRUE(HoldsCodesOfAnAnswer(request, trial.outcome))
            << trial.outcome.errorCode << "/" << trial.outcome.noticeCode;
    } else if (request.texts == ETexts::CODES_AND_DETAIL) {
        EXPECT_EQ(trial.outcome.errorCode, "");
        EXPECT_EQ(trial.outcome.noticeCode, "");
        EXPECT_EQ(trial.outcome.errorDetail, NO_DETAIL);
    }
}

}  // namespace

void CInjectionFixture::SetUp() {
    CPrivateServerFixture::SetUp();
    fs::create_directories(PCI_BUS);
    ASSERT_EQ(mount(PCI_BUS, KERNEL_BUS, "none", MS_BIND, nullptr), 0);
    const auto& [request, duration] = GetParam();
    m_Duration = duration;
    Use(Requests()[request], RESULTS_AND_FAILURES);
}

void CInjectionFixture::TearDown() {
    RecordProperty("injections", std::to_string(m_Struck));
    std::printf("%ld injections\n", m_Struck);
    umount2(KERNEL_BUS, MNT_DETACH);
    rmdir(WITHOUT_INSTALL_PATH);  // goes only if it is empty
    CPrivateServerFixture::TearDown();
}

CInjectionFixture::Answer CInjectionFixture::LearnAnswer() {
    CLibrary library;
    CTrial trial;
    Ask(*m_Request, library, nullptr, trial);
    m_Commands.merge(CommandsOf(trial));
    m_WholeFile = trial.file;
    return {trial.verdict, trial.content};
}

CInjectionFixture::Answer CInjectionFixture::AnswerWith(const std::string& deviceList) {
    WriteFile(DEVICE_LIST, deviceList);
    return LearnAnswer();
}

void CInjectionFixture::Use(const CRequest& request, int traceLevels) {
    m_Request = &request;
    // An error of the tool's that cannot be read lets the request go on as where there is none.
    LayOutServer(traceLevels);
    LearnAnswer();
    LayOutServer(traceLevels);
    request.prepare();
    m_Nothing = AnswerWith("none");
    m_RaidOnly = AnswerWith(RAID_CARD);
    m_SsdOnly = AnswerWith(SSD);
    LayOutServer(traceLevels);
    HideVersion();
    request.prepare();
    LearnAnswer();
    LayOutServer(traceLevels);
    request.prepare();
    m_Whole = LearnAnswer();
    ExpectUsefulAnswers();
}

// An answer that holds nothing, or the same as others, would let every failure pass.
void CInjectionFixture::ExpectUsefulAnswers() const {
    EXPECT_EQ(m_Whole.first, m_Request->whole);
    EXPECT_EQ(m_Whole.second.empty(), Holds(m_Request->failures, m_Whole.first));
    const std::set<Answer> answers = {m_Whole, m_RaidOnly, m_SsdOnly, m_Nothing};
    EXPECT_EQ(answers.size(), m_Request->answers);
    EXPECT_EQ(m_WholeFile, m_Request->file);
}

void CInjectionFixture::ExpectAnswer(const CTrial& trial) const {
    if (Holds(m_Request->failures, trial.verdict)) {
        ExpectFailure(trial);
    } else {
        EXPECT_TRUE(Holds(m_Request->successes, trial.verdict)) << trial.verdict;
        ExpectSuccess(trial);
    }
    if (m_Request->texts == ETexts::CODES_AND_DETAIL) {
        ExpectDetail(trial);
    }
    if (trial.outcome.errorCode == "02") {
        EXPECT_TRUE(HasCall(trial, IsToolUnseen));
    }
}

void CInjectionFixture::ExpectFailure(const CTrial& trial) const {
    EXPECT_TRUE(trial.outcome.items.empty());
    if (m_Request->texts == ETexts::CODES) {
        EXPECT_EQ(trial.content, m_Nothing.second) << "no form of no controller";
    } else if (m_Request->texts == ETexts::CODES_AND_DETAIL) {
        EXPECT_EQ(trial.content, "");
    }
}

// Whole, but for a part that counts as not in the server.
void CInjectionFixture::ExpectSuccess(const CTrial& trial) const {
    if (trial.verdict == "1/02/02") {
        EXPECT_EQ(trial.content, m_Nothing.second);
        return;
    }
    if (Holds(m_Request->failures, m_Whole.first)) {
        EXPECT_TRUE(IsFirstLineUnread(trial) || MayLackRaid(trial)) << trial.content;
        return;
    }
    const bool isVersionTold = trial.verdict != "1//01";
    const bool mayLackRaid = MayLackRaid(trial);
    const bool mayLackSsds = MayLackSsds(trial) || !isVersionTold;
    std::set<Answer> answers = {m_Whole};
    if (mayLackRaid) {
        answers.insert(m_SsdOnly);
    }
    if (mayLackSsds) {
        answers.insert(m_RaidOnly);
    }
    if (mayLackRaid && mayLackSsds) {
        answers.insert(m_Nothing);
    }
    const Answer answer = {isVersionTold ? trial.verdict : "1//", trial.content};
    EXPECT_TRUE(answers.contains(answer)) << trial.verdict << "\n" << trial.content;
    EXPECT_EQ(trial.file, m_WholeFile);
}

void CInjectionFixture::ExpectDetail(const CTrial& trial) const {
    const std::string& code = trial.outcome.errorCode;
    const std::string& detail = trial.outcome.errorDetail;
    if (code == "01") {
        EXPECT_TRUE(m_Commands.contains({CountRuns(trial), detail}))
            << "\"" << detail << "\" is not the command of run " << CountRuns(trial);
    } else {
        EXPECT_EQ(detail, code == "03" ? "" : NO_DETAIL);
    }
}

bool CInjectionFixture::Try(const CInjection& injection) {
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
        struck = trial.record.strikes > 0;
        if (trial.verdict == THROWN) {
            ExpectThrown(request, trial, injection);
        } else {
            ExpectAnswer(trial);
        }
        CTrial again;
        Ask(request, library, nullptr, again);
        EXPECT_EQ(Answer(again.verdict, again.content), m_Whole);
        EXPECT_EQ(again.file, m_WholeFile);
    }
    EXPECT_EQ(LiveBlocks(), blocks) << "memory was left";
    EXPECT_EQ(CountEntries("/proc/self/fd"), openFiles) << "a descriptor was left";
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    EXPECT_EQ(errno, ECHILD);
    ExpectNoFileLeft(request, injection);
    m_Struck += struck ? 1 : 0;
    return struck && !HasFailure();
}

long CInjectionFixture::Stride() const {
    return std::getenv("QOR_ALL_INJECTIONS") != nullptr ? 1 : m_Request->stride;
}

void CInjectionFixture::TryAllocations() {
    for (long call = 0; Try({ALLOCATION, ENOMEM, call, m_Duration}); call += Stride()) {
    }
}

void CInjectionFixture::TryCalls(const CFailingFunction& function) {
    const size_t count = function.errors.size();
    const long struckBefore = m_Struck;
    bool left = !HasFailure();
    for (size_t round = 0; left; ++round) {
        const long call = static_cast<long>(round) * Stride();
        const size_t first = Stride() == 1 ? 0 : round % count;
        const size_t end = Stride() == 1 ? count : first + 1;
        for (size_t i = first; left && i < end; ++i) {
            const int error = function.errors[i];
            // Interruptions do not last; whoever is interrupted tries again.
            const EDuration duration = error == EINTR ? EDuration::ONCE : m_Duration;
            left = Try({function.name, error, call, duration, function.cause});
        }
    }
    if (!HasFailure() && std::strcmp(function.request, m_Request->name) == 0) {
        EXPECT_GT(m_Struck, struckBefore) << function.name << " is not called any more";
    }
}

std::string ParameterName(const testing::TestParamInfo<CInjectionFixture::ParamType>& parameter) {
    const auto& [request, duration] = parameter.param;
    return std::string(Requests()[request].name) +
           (duration == EDuration::LASTING ? "Lasting" : "Once");
}

}  // namespace qortest
