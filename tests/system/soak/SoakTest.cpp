// Thousands of requests of all kinds in one process, on simulated servers whose tool misbehaves at
// random: memory, descriptors, children and files stay what they were. So that a server that was
// not laid out as it should be cannot pass with nothing but empty answers, each one is asked first
// what has a known answer, and the random requests must have had every kind of answer often.
//
// Faults that take real time are left out (a tool that hangs is killed after 150 s, one that is
// stopped after 0.5 s), and so are those that leave something on purpose.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <list>
#include <random>
#include <stdexcept>
#include <string>

#include "PrivateServerFixture.h"
#include "Process.h"
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
constexpr const char* PCI_DEVICES = "/sys/bus/pci/devices";
constexpr const char* KEPT_LIST = "/opt/tarmica/kept-list";

enum EOutcome { ITEMS, NOTHING, FAILURE, EXCEPTION };

// What is due of a server.
struct CHost {
    const char* name;
    EOutcome storage;     // to GetStorageInfo
    EOutcome brokenTool;  // the same when the tool fails
    EOutcome cutTable;    // to GetPDInfo when the tool's report ends inside the SMART table
};
constexpr std::array<CHost, 8> HOSTS = {{{"small", ITEMS, FAILURE, EXCEPTION},
                                         {"degraded", ITEMS, FAILURE, EXCEPTION},
                                         {"sata", ITEMS, FAILURE, EXCEPTION},
                                         {"no-tool-storcli", FAILURE, FAILURE, FAILURE},
                                         {"future", ITEMS, FAILURE, EXCEPTION},
                                         {"pssd-only", ITEMS, NOTHING, FAILURE},
                                         {"tool-4.3", ITEMS, FAILURE, EXCEPTION},
                                         {"no-controller", NOTHING, NOTHING, FAILURE}}};
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

using Request = std::function<bool(std::list<CItemDisp*>&)>;

class Soak : public qortest::CPrivateServerFixture {
protected:
    void SetUp() override;

    void UseHost(const CHost& host);
    void ExpectKnownAnswers(const CHost& host);
    void AskAtRandom();
    void ExpectEveryKindOfAnswer(unsigned long requests) const;

    size_t Pick(size_t count) { return m_Random() % count; }

    std::mt19937 m_Random{std::random_device{}()};
    std::array<unsigned long, 4> m_Outcomes = {};  // of the random requests
    unsigned long m_ListsMade = 0;

private:
    static void PlaceFault(const std::string& fault);
    std::string RandomFault();
    // Makes one request, and demands that nothing is left of it.
    EOutcome OutcomeOf(const Request& request);
    static void ExpectNothingLeft();

    // A random request; returns whether it succeeded.
    bool Ask(std::list<CItemDisp*>& items);
    bool AskForStorage(std::list<CItemDisp*>& items);
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
    CPrivateServerFixture::SetUp();
    const unsigned long seed = Setting("QOR_SOAK_SEED", 20261120);
    m_Random.seed(static_cast<std::mt19937::result_type>(seed));
    fs::remove_all(SERVER + std::string("/qor"));
    fs::create_directories(SERVER + std::string("/hosts"));
    for (const CHost& host : HOSTS) {
        const qortest::CEnd end =
            qortest::RunProgram({QORSIM_PROGRAM, "install",
                                 SERVER + std::string("/hosts/") + host.name, "--host", host.name});
        ASSERT_EQ(end.status, 0) << end.err;
    }
    qortest::WriteFile("/etc/opt/tarmica/qor/comlib.ini", "[Trace]\nSink=none\n");
}

// hosts/NAME/opt/tarmica/* of one server goes back, that of the next one comes.
void Soak::UseHost(const CHost& host) {
    const fs::path hosts = fs::path(SERVER) / "hosts";
    const fs::path current = hosts / "current";
    if (fs::exists(current)) {
        const fs::path home = fs::read_symlink(current);
        for (const char* part : {"krz", "qor"}) {
            fs::rename(fs::path(SERVER) / part, home / part);
        }
        fs::remove(current);
    }
    const fs::path next = hosts / host.name / "opt/tarmica";
    fs::create_directory_symlink(next, current);
    for (const char* part : {"krz", "qor"}) {
        fs::rename(next / part, fs::path(SERVER) / part);
    }
}

void Soak::PlaceFault(const std::string& fault) {
    fs::remove_all(FAULTS);
    if (!fault.empty()) {
        qortest::WriteFile(std::string(FAULTS) + "/list", fault + "\n");
    }
}

// One request in three meets a fault.
std::string Soak::RandomFault() {
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
            return "";
    }
    const size_t when = std::min(fault.find('#'), fault.size());
    return fault.insert(when, COMMANDS[Pick(COMMANDS.size())]);
}

bool Soak::AskForStorage(std::list<CItemDisp*>& items) {
    return m_Library->GetStorageInfo(&items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail) != 0;
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
            return AskForStorage(items);
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

EOutcome Soak::OutcomeOf(const Request& request) {
    std::list<CItemDisp*> items;
    EOutcome outcome = EXCEPTION;
    try {
        const bool result = request(items);
        EXPECT_TRUE(result || items.empty());
        outcome = !result ? FAILURE : items.empty() ? NOTHING : ITEMS;
    } catch (const std::out_of_range&) {  // documented for some damaged reports
        EXPECT_TRUE(items.empty());
    }
    m_Library->FreeItemList(&items);
    ExpectNothingLeft();
    return outcome;
}

void Soak::ExpectKnownAnswers(const CHost& host) {
    const Request askForStorage = [this](auto& items) { return AskForStorage(items); };
    const Request askAboutDrive = [this](auto& items) {
        return m_Library->GetPDInfo(0, 252, 2, &items, &m_ErrorCode, &m_NoticeCode) != 0;
    };
    PlaceFault("");
    EXPECT_EQ(OutcomeOf(askForStorage), host.storage) << host.name;
    PlaceFault("exit=3");
    EXPECT_EQ(OutcomeOf(askForStorage), host.brokenTool) << host.name;
    PlaceFault("truncate=820@-pdinfo");
    EXPECT_EQ(OutcomeOf(askAboutDrive), host.cutTable) << host.name;
}

// One request in eight finds no device list: it is made of the real bus, if the request needs it.
void Soak::AskAtRandom() {
    PlaceFault(RandomFault());
    const bool withoutList = Pick(8) == 0;
    if (withoutList) {
        fs::rename(qortest::DEVICE_LIST, KEPT_LIST);
    }
    ++m_Outcomes[OutcomeOf([this](auto& items) { return Ask(items); })];
    if (withoutList) {
        m_ListsMade += fs::exists(qortest::DEVICE_LIST) ? 1U : 0U;
        fs::rename(KEPT_LIST, qortest::DEVICE_LIST);
    }
}

// About half of what comes, whatever the seed, when every host has had its turn.
void Soak::ExpectEveryKindOfAnswer(unsigned long requests) const {
    const unsigned long rounds = requests / (TURN * HOSTS.size());
    EXPECT_GE(m_Outcomes[ITEMS], 30 * rounds);
    EXPECT_GE(m_Outcomes[NOTHING], 30 * rounds);
    EXPECT_GE(m_Outcomes[FAILURE], 35 * rounds);
    EXPECT_GE(m_ListsMade, fs::exists(PCI_DEVICES) ? 4 * rounds : 0);
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

bool HoldsOnly(const fs::path& folder, const std::string& name) {
    const fs::directory_iterator entries(folder);
    return std::all_of(begin(entries), end(entries), [&name](const fs::directory_entry& entry) {
        return entry.path().filename() == name;
    });
}

void Soak::ExpectNothingLeft() {
    EXPECT_TRUE(!fs::exists(qortest::RESULT_DIR) || fs::is_empty(qortest::RESULT_DIR));
    const fs::path list = qortest::DEVICE_LIST;
    EXPECT_TRUE(HoldsOnly(list.parent_path(), list.filename())) << "a part of a list was left";
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
            const CHost& host = HOSTS[request / TURN % HOSTS.size()];
            UseHost(host);
            ExpectKnownAnswers(host);
        }
        AskAtRandom();
    }
    ASSERT_FALSE(HasFailure());
    const long growth = ResidentKiB() - before;
    std::printf(
        "%lu answers with items, %lu without, %lu failures, %lu exceptions, %lu lists made, "
        "resident memory %ld KiB and %+ld KiB\n",
        m_Outcomes[ITEMS], m_Outcomes[NOTHING], m_Outcomes[FAILURE], m_Outcomes[EXCEPTION],
        m_ListsMade, before, growth);
    RecordProperty("growth", std::to_string(growth));
    ExpectEveryKindOfAnswer(requests);
    EXPECT_EQ(OpenFiles(), openFiles);
    EXPECT_LT(growth, QOR_SOAK_LARGEST_GROWTH_KIB);
}

}  // namespace
