// Thousands of requests of all kinds in one process, on simulated servers whose tool misbehaves at
// random: memory, descriptors, children and files stay what they were.
//
// Faults that take real time are left out (a tool that hangs is killed after 150 s, one that is
// stopped after 0.5 s), and so are those that leave something on purpose.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <random>
#include <stdexcept>
#include <string>

#include "PrivateServerTest.h"
#include "plugin/MngSrv_QorLibIF.h"

// The plug-in's pause between two attempts costs nothing here: it finds this one first.
extern "C" int clock_nanosleep(clockid_t /*clock*/, int /*flags*/, const timespec* /*time*/,
                               timespec* /*rest*/) {
    return 0;
}

namespace {

namespace fs = std::filesystem;

constexpr const char* SERVER = "/opt/tarmica";
constexpr const char* FAULTS = "/opt/tarmica/krz/faults";
constexpr const char* EXEC_RESULT = "/opt/tarmica/exec.txt";
constexpr std::array HOSTS = {"small",  "degraded",  "sata",     "no-tool-storcli",
                              "future", "pssd-only", "tool-4.3", "no-controller"};
constexpr std::array FAULT_KINDS = {
    "exit=3",    "exit=3#1", "kill=9#1",   "kill=11", "error=Something is wrong",
    "bad-token", "empty",    "no-newline", "crlf",    "tabs",
    "stderr",    "nul=7",    "size=100000"};
constexpr std::array COMMANDS = {"", "@-v", "@-ctrlinfo", "@-ldpdinfo", "@-pdinfo", "@-pssdinfo"};
// Requests that one server answers before the next one takes its place.
constexpr unsigned long TURN = 25;

unsigned long Setting(const char* name, unsigned long otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::stoul(text) : otherwise;
}

class CLibrary {
public:
    CLibrary() : m_Handle(dlopen(QOR_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) {
        const auto create = reinterpret_cast<void* (*)()>(dlsym(m_Handle, "CreateLibIF"));
        m_Object = static_cast<CMngSrv_QorLibIF*>(create());
    }
    ~CLibrary() {
        reinterpret_cast<void (*)(void*)>(dlsym(m_Handle, "DeleteLibIF"))(m_Object);
        dlclose(m_Handle);
    }
    CLibrary(const CLibrary&) = delete;  // one loaded library, one owner
    CLibrary& operator=(const CLibrary&) = delete;

    CMngSrv_QorLibIF* operator->() const { return m_Object; }

private:
    void* m_Handle;
    CMngSrv_QorLibIF* m_Object;
};

struct CTally {
    unsigned long answers = 0;
    unsigned long failures = 0;
    unsigned long exceptions = 0;
};

class Soak : public qortest::CPrivateServerTest {
protected:
    void SetUp() override;

    void UseHost(size_t number);
    void PlaceFault();
    void AskOnce();
    void ExpectNothingLeft() const;

    size_t Pick(size_t count) { return m_Random() % count; }

    std::mt19937 m_Random{std::random_device{}()};
    CTally m_Tally;

private:
    // Makes one request; returns whether it succeeded.
    bool Ask(std::list<CItemDisp*>& items);
    bool AskAboutDrive(std::list<CItemDisp*>& items);
    bool AskForForm();
    bool AskForXml(std::list<CItemDisp*>& items);
    bool RunCommand();

    CLibrary m_Library;
    std::string m_ErrorCode;
    std::string m_NoticeCode;
    std::string m_ErrorDetail;
};

// All hosts are laid out at once, to be moved into place: quicker than laying them out anew.
void Soak::SetUp() {
    CPrivateServerTest::SetUp();
    const unsigned long seed = Setting("QOR_SOAK_SEED", 20261120);
    m_Random.seed(static_cast<std::mt19937::result_type>(seed));
    fs::remove_all(SERVER + std::string("/qor"));
    fs::create_directories(SERVER + std::string("/hosts"));
    for (const std::string host : HOSTS) {
        const std::string command = std::string(QORSIM_PROGRAM) + " install " + SERVER + "/hosts/" +
                                    host + " --host " + host;
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
    qortest::WriteFile("/etc/opt/tarmica/qor/comlib.ini", "[Trace]\nSink=none\n");
}

// hosts/NAME/opt/tarmica/* of one server goes back, that of the next one comes.
void Soak::UseHost(size_t number) {
    const fs::path hosts = fs::path(SERVER) / "hosts";
    const fs::path current = hosts / "current";
    if (fs::exists(current)) {
        const fs::path home = fs::read_symlink(current);
        for (const char* part : {"krz", "qor"}) {
            fs::rename(fs::path(SERVER) / part, home / part);
        }
        fs::remove(current);
    }
    const fs::path next = hosts / HOSTS[number] / "opt/tarmica";
    fs::create_directory_symlink(next, current);
    for (const char* part : {"krz", "qor"}) {
        fs::rename(next / part, fs::path(SERVER) / part);
    }
}

// One request in three meets a fault.
void Soak::PlaceFault() {
    fs::remove_all(FAULTS);
    std::string fault;
    switch (Pick(9)) {
        case 0:
            fault = FAULT_KINDS[Pick(FAULT_KINDS.size())];
            break;
        case 1:
            fault = "mutate=" + std::to_string(m_Random());
            break;
        case 2:
            fault = "truncate=" + std::to_string(Pick(3000));
            break;
        default:
            return;
    }
    const size_t when = std::min(fault.find('#'), fault.size());
    fault.insert(when, COMMANDS[Pick(COMMANDS.size())]);
    qortest::WriteFile(std::string(FAULTS) + "/list", fault + "\n");
}

bool Soak::AskAboutDrive(std::list<CItemDisp*>& items) {
    const long enclosure = 252 + static_cast<long>(Pick(2));
    const long slot = static_cast<long>(Pick(4));
    if (Pick(2) == 0) {
        return m_Library->GetPDInfo(0, enclosure, slot, &items, &m_ErrorCode, &m_NoticeCode) != 0;
    }
    return m_Library->GetPDInfo(0, enclosure, slot, &items, &m_ErrorCode, &m_NoticeCode,
                                &m_ErrorDetail) != 0;
}

bool Soak::AskForForm() {
    std::string digits;
    return m_Library->GetCtrlPDInfoBinaryString(&digits, &m_ErrorCode, &m_NoticeCode) != 0;
}

bool Soak::AskForXml(std::list<CItemDisp*>& items) {
    char* text = nullptr;
    return m_Library->GetRAIDInfo(&items, &m_ErrorCode, &m_NoticeCode) != 0 &&
           (items.empty() || m_Library->XmlSerialize(0, "component", &items, &text) == 0 ||
            text == nullptr);
}

bool Soak::RunCommand() {
    unsigned long status = 0;
    const bool result = m_Library->KRZExecCli("krzcli -v", &status, EXEC_RESULT) == 0;
    fs::remove(EXEC_RESULT);
    return result;
}

bool Soak::Ask(std::list<CItemDisp*>& items) {
    switch (Pick(8)) {
        case 0:
            return m_Library->GetStorageInfo(&items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail) !=
                   0;
        case 1:
            return m_Library->GetRAIDInfo(&items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail) != 0;
        case 2:
            return AskForForm();
        case 3:
            return AskForXml(items);
        case 4:
            return RunCommand();
        default:
            return AskAboutDrive(items);
    }
}

void Soak::AskOnce() {
    std::list<CItemDisp*> items;
    try {
        const bool result = Ask(items);
        EXPECT_TRUE(result || items.empty());
        ++(result ? m_Tally.answers : m_Tally.failures);
    } catch (const std::out_of_range&) {  // documented for some damaged reports
        EXPECT_TRUE(items.empty());
        ++m_Tally.exceptions;
    }
    m_Library->FreeItemList(&items);
}

size_t OpenFiles() {
    const fs::directory_iterator entries("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

// What the C library keeps for the next allocation is given back first.
long ResidentKiB() {
    malloc_trim(0);
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void Soak::ExpectNothingLeft() const {
    EXPECT_TRUE(!fs::exists(qortest::RESULT_DIR) || fs::is_empty(qortest::RESULT_DIR));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(Soak, RequestsWithRandomFaultsLeaveNothing) {
    const unsigned long requests = Setting("QOR_SOAK_REQUESTS", QOR_SOAK_DEFAULT_REQUESTS);
    const unsigned long warmUp = std::min(requests / 4, 2000UL);
    const size_t openFiles = OpenFiles();
    long before = 0;
    for (unsigned long request = 0; request < requests && !HasFailure(); ++request) {
        if (request == warmUp) {
            before = ResidentKiB();
        }
        if (request % TURN == 0) {
            UseHost(Pick(HOSTS.size()));
        }
        PlaceFault();
        AskOnce();
        ExpectNothingLeft();
    }
    const long growth = ResidentKiB() - before;
    std::printf("%lu answers, %lu failures, %lu exceptions, resident memory %ld KiB and %+ld KiB\n",
                m_Tally.answers, m_Tally.failures, m_Tally.exceptions, before, growth);
    RecordProperty("growth", std::to_string(growth));
    EXPECT_EQ(OpenFiles(), openFiles);
    EXPECT_LT(growth, QOR_SOAK_LARGEST_GROWTH_KIB);
}

}  // namespace
