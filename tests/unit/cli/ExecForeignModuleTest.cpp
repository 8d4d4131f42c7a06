#include <fcntl.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>

#include <array>
#include <chrono>
#include <thread>
#include <vector>

#include "FakeComLib.h"
#include "Host.h"
#include "PrivateServerFixture.h"
#include "cli/ExecForeignModule.h"
#include "plugin/ComLib.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;
using std::chrono::milliseconds;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string DIR = "/opt/tarmica/run";
const std::string OUT = DIR + "/out.txt";
constexpr unsigned long UNTOUCHED = 4711;
// Polls without a pause in these tests, until the child has ended.
constexpr unsigned long NEARLY_ENDLESS = EXEC_NO_TIMEOUT - 1;
constexpr milliseconds SHORT_LIMIT(1500);

class CExecForeignModuleTest : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        fs::create_directories(DIR);
    }

    int RunTool(const std::string& command) { return ExecForeignModule(command, OUT, &m_ExitCode); }
    unsigned int RunUtility(const std::string& command, const std::string& workDir = "") {
        return ExecForeignModule(command, OUT, workDir, &m_ExitCode, EXEC_NO_TIMEOUT);
    }
    static CTraceLine Failure(const std::string& text) {
        return {CTraceUtility::TRACE_DBG_FAILURE, text};
    }

    unsigned long m_ExitCode = UNTOUCHED;
};

int g_Signals = 0;
void CountSignal(int) {
    ++g_Signals;
}

// A set of signals in a "/proc/PID/status" that the child left in the file, but for the two that
// the C library keeps for itself.
unsigned long SignalsInStatus(const std::string& key) {
    constexpr unsigned long LIBRARY_SIGNALS = 3UL << 31;
    const std::string status = ReadFile(OUT);
    const size_t place = status.find("\n" + key + ":\t");
    EXPECT_NE(place, std::string::npos);
    return std::stoul(status.substr(place + key.size() + 2), nullptr, 16) & ~LIBRARY_SIGNALS;
}

class CToolRunTest : public CExecForeignModuleTest {};
class CUtilityRunTest : public CExecForeignModuleTest {};

// ---- the RAID tool's runner ----

TEST_F(CToolRunTest, EmptyCommandLeavesExitCodeUntouched) {
    EXPECT_EQ(RunTool(""), EXEC_FAILED);
    EXPECT_EQ(m_ExitCode, UNTOUCHED);
    EXPECT_FALSE(fs::exists(OUT));
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CToolRunTest, EmptyFileNameLeavesExitCodeUntouched) {
    EXPECT_EQ(ExecForeignModule("true", std::string(), &m_ExitCode), EXEC_FAILED);
    EXPECT_EQ(m_ExitCode, UNTOUCHED);
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CToolRunTest, StandardErrorFollowsStandardOutputInTheFile) {
    EXPECT_EQ(RunTool("echo first; echo second >&2; echo third"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 0U);
    EXPECT_EQ(ReadFile(OUT), "first\nsecond\nthird\n");
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CToolRunTest, ExitStatusIsHandedOver) {
    for (const unsigned long status : {0UL, 1UL, 3UL, 97UL, 127UL, 128UL, 254UL, 255UL}) {
        EXPECT_EQ(RunTool("exit " + std::to_string(status)), EXEC_OK);
        EXPECT_EQ(m_ExitCode, status);
    }
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CToolRunTest, CommandThatDoesNotExistEndsAsTheShellSays) {
    EXPECT_EQ(RunTool("/opt/tarmica/no/such/tool"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 127U);
    EXPECT_THAT(ReadFile(OUT), HasSubstr("not found"));
}

TEST_F(CToolRunTest, FormerContentOfTheFileIsGone) {
    WriteFile(OUT, std::string(10000, 'x'));
    EXPECT_EQ(RunTool("echo new"), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "new\n");
}

TEST_F(CToolRunTest, FileModeFollowsTheHostsMask) {
    const mode_t mask = umask(0027);
    EXPECT_EQ(RunTool("umask"), EXEC_OK);
    EXPECT_EQ(umask(mask), 0027U);
    EXPECT_EQ(ReadFile(OUT), "0027\n");
    EXPECT_EQ(fs::status(OUT).permissions(), fs::perms(0640));
}

TEST_F(CToolRunTest, FileIsForAllWhomTheHostsMaskLets) {
    const mode_t mask = umask(0);
    EXPECT_EQ(RunTool("true"), EXEC_OK);
    umask(mask);
    EXPECT_EQ(fs::status(OUT).permissions(), fs::perms(0666));
}

TEST_F(CToolRunTest, LargeOutputIsComplete) {
    EXPECT_EQ(RunTool("head -c 5000000 /dev/zero"), EXEC_OK);
    EXPECT_EQ(fs::file_size(OUT), 5000000U);
}

TEST_F(CToolRunTest, LibraryPathIsExtendedForTheToolOnly) {
    struct {
        const char* host;
        const char* tool;
    } const rows[] = {
        {nullptr, "/opt/tarmica/krz/lib\n"},
        {"", ":/opt/tarmica/krz/lib\n"},
        {"/a", "/a:/opt/tarmica/krz/lib\n"},
        {"/a:/b", "/a:/b:/opt/tarmica/krz/lib\n"},
    };
    for (const auto& row : rows) {
        const CVariable variable("LD_LIBRARY_PATH", row.host);
        EXPECT_EQ(RunTool("echo \"$LD_LIBRARY_PATH\""), EXEC_OK);
        EXPECT_EQ(ReadFile(OUT), row.tool);
        const char* after = getenv("LD_LIBRARY_PATH");
        EXPECT_EQ(after == nullptr, row.host == nullptr);
        if (after != nullptr) {
            EXPECT_STREQ(after, row.host);
        }
    }
}

TEST_F(CToolRunTest, LibraryPathIsInTheEnvironmentOnce) {
    const CVariable variable("LD_LIBRARY_PATH", "/a");
    EXPECT_EQ(RunTool("tr '\\0' '\\n' < /proc/$$/environ | grep ^LD_LIBRARY_PATH="), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "LD_LIBRARY_PATH=/a:/opt/tarmica/krz/lib\n");
}

TEST_F(CToolRunTest, HostWithoutAnEnvironmentIsServed) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  clearenv();
                  return RunTool("tr '\\0' '\\n' < /proc/$$/environ") == EXEC_OK && m_ExitCode == 0
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "LD_LIBRARY_PATH=/opt/tarmica/krz/lib\n");
}

TEST_F(CToolRunTest, EnvironmentIsPassedOnAndUntouched) {
    const CVariable variable("QOR_TEST_VARIABLE", "a b=c");
    const CVariable similar("LD_LIBRARY_PATH_OF_MINE", "kept");
    char** const before = environ;
    const std::string first = environ[0];
    EXPECT_EQ(RunTool("echo \"$QOR_TEST_VARIABLE $LD_LIBRARY_PATH_OF_MINE\""), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "a b=c kept\n");
    EXPECT_EQ(environ, before);
    EXPECT_EQ(environ[0], first);
}

TEST_F(CToolRunTest, ToolThatAsksGetsAnEndOfFile) {
    EXPECT_EQ(RunTool("readlink /proc/$$/fd/0; cat; read -r answer; echo $?"), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "/dev/null\n1\n");
}

TEST_F(CToolRunTest, ToolHasDefaultSignalsWhateverTheHostHas) {
    const CSignalAction ignored(SIGPIPE, SIG_IGN);
    const CSignalAction handled(SIGUSR1, CountSignal);
    const CBlockedSignal blocked(SIGTERM);
    EXPECT_EQ(RunTool("exec cat /proc/self/status"), EXEC_OK);
    EXPECT_EQ(SignalsInStatus("SigBlk"), 0U);
    EXPECT_EQ(SignalsInStatus("SigIgn"), 0U);
    EXPECT_EQ(ignored.Current(), SIG_IGN);
    EXPECT_EQ(handled.Current(), CountSignal);
    sigset_t mask;
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 1);
}

TEST_F(CToolRunTest, ToolHasAProcessGroupOfItsOwn) {
    EXPECT_EQ(RunTool("read -r pid name state parent group rest < /proc/$$/stat; "
                      "echo $((pid == group)) $parent"),
              EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "1 " + std::to_string(getpid()) + "\n");
}

TEST_F(CToolRunTest, NoDescriptorOfTheHostReachesTheTool) {
    const int low = open("/etc/passwd", O_RDONLY);
    ASSERT_GE(low, 0);
    ASSERT_EQ(dup2(low, 200), 200);
    EXPECT_EQ(RunTool("exec ls /proc/self/fd"), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "0\n1\n2\n3\n") << "3 is the directory that ls reads";
    close(low);
    close(200);
}

TEST_F(CToolRunTest, HostWithoutStandardDescriptorsIsServed) {
    for (int closed = 0; closed < 8; ++closed) {
        fs::remove(OUT);
        const int status = RunAsAnotherHost([&] {
            for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
                if ((closed >> fd & 1) != 0) {
                    close(fd);
                }
            }
            return RunTool("echo out; echo err >&2; exec ls /proc/self/fd") == EXEC_OK &&
                           m_ExitCode == 0
                       ? 0
                       : 1;
        });
        EXPECT_EQ(status, 0) << "closed: " << closed;
        EXPECT_EQ(ReadFile(OUT), "out\nerr\n0\n1\n2\n3\n") << "closed: " << closed;
    }
}

TEST_F(CToolRunTest, OutputThatCannotBeOpenedCountsAsExitStatusOne) {
    const CTmpfs readOnly(DIR + "/readonly", "", MS_RDONLY);
    const CTmpfs noInodes(DIR + "/noinodes", "nr_inodes=1");
    struct {
        std::string path;
        const char* error;
    } const rows[] = {
        {DIR + "/missing/out.txt", "00000002"},
        {DIR, "00000015"},
        {DIR + "/readonly/out.txt", "0000001e"},
        {DIR + "/noinodes/out.txt", "0000001c"},
    };
    for (const auto& row : rows) {
        ResetFakeComLib();
        m_ExitCode = UNTOUCHED;
        EXPECT_EQ(ExecForeignModule("touch " + DIR + "/ran", row.path, &m_ExitCode), EXEC_OK);
        EXPECT_EQ(m_ExitCode, 1U);
        EXPECT_THAT(FakeComLib().traces, ElementsAre(Failure("ExecForeignModule open Error " +
                                                             std::string(row.error) + ".")));
        EXPECT_FALSE(fs::exists(DIR + "/ran"));
    }
}

TEST_F(CToolRunTest, FullDiskIsTheToolsOwnFailure) {
    const CTmpfs full(DIR + "/full", "size=4096");
    const std::string out = DIR + "/full/out.txt";
    EXPECT_EQ(ExecForeignModule("head -c 100000 /dev/zero", out, &m_ExitCode), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 1U);
    EXPECT_EQ(fs::file_size(out), 4096U);
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CToolRunTest, MissingShellCountsAsExitStatusOne) {
    fs::create_directories(DIR + "/empty");
    const CVariable path("PATH", (DIR + "/empty").c_str());
    EXPECT_EQ(RunTool("true"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 1U);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Failure("ExecForeignModule execlp Error 00000002.")));
}

TEST_F(CToolRunTest, CommandBeyondTheSystemsLimitCountsAsExitStatusOne) {
    EXPECT_EQ(RunTool("true " + std::string(1000000, 'x')), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 1U);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Failure("ExecForeignModule execlp Error 00000007.")));
}

TEST_F(CToolRunTest, ChildKilledBySignalIsNoExitStatus) {
    struct {
        const char* command;
        const char* status;
    } const rows[] = {{"kill -KILL $$", "00000009"}, {"kill -TERM $$", "0000000f"}};
    for (const auto& row : rows) {
        ResetFakeComLib();
        EXPECT_EQ(RunTool(row.command), EXEC_FAILED);
        EXPECT_EQ(m_ExitCode, 255U);
        EXPECT_THAT(FakeComLib().traces,
                    ElementsAre(Failure("ExecForeignModule WEXITSTATUS Error " +
                                        std::string(row.status) + ".")));
    }
}

TEST_F(CToolRunTest, ChildThatStopsItselfIsEnded) {
    const CWitness witness(DIR + "/witness");
    EXPECT_EQ(RunTool("exec 9>" + DIR + "/witness; echo here >&9; kill -STOP $$"), EXEC_FAILED);
    EXPECT_EQ(m_ExitCode, 255U);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Failure("ExecForeignModule WEXITSTATUS Error 0000137f.")));
    EXPECT_EQ(witness.TextWhenAllAreGone(), "here\n");
}

// Hosts know the limit; reaching it is a test of its own.
static_assert(TOOL_TIME_LIMIT == std::chrono::seconds(150));

TEST_F(CToolRunTest, ChildBeyondTheLimitIsKilled) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(
        ExecForeignModuleWithLimit("echo begun; exec sleep 600", OUT, &m_ExitCode, SHORT_LIMIT),
        EXEC_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, SHORT_LIMIT);
    EXPECT_EQ(m_ExitCode, 255U);
    EXPECT_EQ(ReadFile(OUT), "begun\n");
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CToolRunTest, ChildThatIgnoresTermIsKilled) {
    const CWitness witness(DIR + "/witness");
    EXPECT_EQ(ExecForeignModuleWithLimit("trap '' HUP INT TERM; exec 9>" + DIR +
                                             "/witness; echo here >&9; while :; do sleep 600; done",
                                         OUT, &m_ExitCode, SHORT_LIMIT),
              EXEC_TIMEOUT);
    EXPECT_EQ(witness.TextWhenAllAreGone(), "here\n");
}

TEST_F(CToolRunTest, GrandchildrenThatHoldTheOutputAreKilled) {
    const CWitness witness(DIR + "/witness");
    EXPECT_EQ(ExecForeignModuleWithLimit("exec 9>" + DIR +
                                             "/witness; echo here >&9; "
                                             "(sleep 600; true) & (sleep 600; true) & wait",
                                         OUT, &m_ExitCode, SHORT_LIMIT),
              EXEC_TIMEOUT);
    EXPECT_EQ(m_ExitCode, 255U);
    EXPECT_EQ(witness.TextWhenAllAreGone(), "here\n");
}

TEST_F(CToolRunTest, ChildInASessionOfItsOwnLivesOn) {
    EXPECT_EQ(ExecForeignModuleWithLimit(
                  "setsid sh -c 'echo $$ > " + DIR + "/pid; exec sleep 600' & exec sleep 600", OUT,
                  &m_ExitCode, SHORT_LIMIT),
              EXEC_TIMEOUT);
    const pid_t outside = std::stoi(ReadFile(DIR + "/pid"));
    EXPECT_EQ(kill(outside, SIGKILL), 0);
}

TEST_F(CToolRunTest, EndIsSeenAlthoughAGrandchildHoldsTheOutput) {
    const CWitness witness(DIR + "/witness");
    EXPECT_EQ(RunTool("exec 9>" + DIR + "/witness; sleep 600 & echo $!"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 0U);
    kill(std::stoi(ReadFile(OUT)), SIGKILL);
    EXPECT_EQ(witness.TextWhenAllAreGone(), "");
}

TEST_F(CToolRunTest, StormOfTheHostsTimerSignalsDisturbsNothing) {
    const CSignalAction alarmed(SIGALRM, CountSignal);
    g_Signals = 0;
    const itimerval storm = {{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &storm, nullptr);
    EXPECT_EQ(RunTool("sleep 0.3; echo done"), EXEC_OK);
    itimerval now = {};
    getitimer(ITIMER_REAL, &now);
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
    EXPECT_EQ(m_ExitCode, 0U);
    EXPECT_EQ(ReadFile(OUT), "done\n");
    EXPECT_GT(g_Signals, 10);
    EXPECT_EQ(now.it_interval.tv_usec, 500) << "the host's timer still runs";
    EXPECT_EQ(alarmed.Current(), CountSignal);
}

TEST_F(CToolRunTest, TimerSignalsDoNotStretchTheLimit) {
    const CSignalAction alarmed(SIGALRM, CountSignal);
    const itimerval storm = {{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &storm, nullptr);
    EXPECT_EQ(ExecForeignModuleWithLimit("exec sleep 600", OUT, &m_ExitCode, milliseconds(300)),
              EXEC_TIMEOUT);
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
}

TEST_F(CToolRunTest, HostsChildHandlerStaysAndIsCalled) {
    const CSignalAction handled(SIGCHLD, CountSignal);
    g_Signals = 0;
    EXPECT_EQ(RunTool("exit 3"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 3U);
    EXPECT_EQ(g_Signals, 1);
    EXPECT_EQ(handled.Current(), CountSignal);
}

TEST_F(CToolRunTest, EndTakenBySomebodyElseIsAFailure) {
    const CSignalAction ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(RunTool("echo ran"), EXEC_FAILED);
    EXPECT_EQ(m_ExitCode, 255U);
    EXPECT_EQ(ReadFile(OUT), "ran\n");
    EXPECT_THAT(FakeComLib().traces, ElementsAre(Failure("ExecForeignModule waitpid Error.")));
    EXPECT_EQ(ignored.Current(), SIG_IGN);
}

TEST_F(CToolRunTest, LimitHoldsForAHostThatIgnoresItsChildren) {
    const CSignalAction ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(ExecForeignModuleWithLimit("exec sleep 600", OUT, &m_ExitCode, milliseconds(100)),
              EXEC_TIMEOUT);
    EXPECT_EQ(m_ExitCode, 255U);
}

// Becomes a user whose processes are counted, and lets it have no more.
void AllowNoMoreProcesses() {
    constexpr uid_t NOBODY = 65534;
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_NPROC, &none);
    if (geteuid() == 0) {
        [[maybe_unused]] const int result = setresuid(NOBODY, NOBODY, NOBODY);
    }
}

TEST_F(CToolRunTest, ProcessThatCannotBeMadeIsAFailure) {
    fs::permissions(DIR, fs::perms::all);
    EXPECT_EQ(RunAsAnotherHost([&] {
                  AllowNoMoreProcesses();
                  return RunTool("true") == EXEC_FAILED && m_ExitCode == 255 &&
                                 FakeComLib().traces.empty()
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_FALSE(fs::exists(OUT));
}

TEST_F(CToolRunTest, ProcessThatCannotBeMadeLeavesTheFileAsItWas) {
    fs::permissions(DIR, fs::perms::all);
    WriteFile(OUT, "of an earlier run");
    fs::permissions(OUT, fs::perms::all);
    EXPECT_EQ(RunAsAnotherHost([&] {
                  AllowNoMoreProcesses();
                  return RunTool("true") == EXEC_FAILED ? 0 : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "of an earlier run");
}

TEST_F(CToolRunTest, ChildThatLeftItsGroupIsKilled) {
    const CWitness witness(DIR + "/witness");
    EXPECT_EQ(ExecForeignModuleWithLimit(
                  "exec 9>" + DIR +
                      "/witness; sleep 600 & "
                      "exec perl -e 'setpgrp(0, getpgrp(getppid())) or die; sleep 600'",
                  OUT, &m_ExitCode, SHORT_LIMIT),
              EXEC_TIMEOUT);
    EXPECT_EQ(OwnChildren(), "");
    EXPECT_EQ(witness.TextWhenAllAreGone(), "") << "its group has ended, too";
}

TEST_F(CToolRunTest, OutputThatNobodyReadsCannotBeOpened) {
    ASSERT_EQ(mkfifo(OUT.c_str(), 0600), 0);
    EXPECT_EQ(RunTool("touch " + DIR + "/ran"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 1U);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Failure("ExecForeignModule open Error 00000006.")));
    EXPECT_FALSE(fs::exists(DIR + "/ran"));
}

TEST_F(CToolRunTest, OutputThatIsReadSlowlyIsComplete) {
    ASSERT_EQ(mkfifo(OUT.c_str(), 0600), 0);
    const int reader = open(OUT.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    fcntl(reader, F_SETFL, 0);
    size_t received = 0;
    std::thread slow([&] {
        pollfd entry = {reader, POLLIN, 0};
        poll(&entry, 1, -1);
        std::array<char, 1000> bytes = {};
        for (ssize_t n = 1; n > 0; received += static_cast<size_t>(n)) {
            n = read(reader, bytes.data(), bytes.size());
        }
    });
    EXPECT_EQ(RunTool("head -c 300000 /dev/zero"), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 0U) << "writing to a full pipe waits";
    slow.join();
    close(reader);
    EXPECT_EQ(received, 300000U);
}

TEST_F(CToolRunTest, DeviceOrMemoryFileServesAsOutput) {
    const int memory = memfd_create("output", 0);
    EXPECT_EQ(ExecForeignModule("echo out", "/proc/self/fd/" + std::to_string(memory), &m_ExitCode),
              EXEC_OK);
    EXPECT_EQ(m_ExitCode, 0U);
    EXPECT_EQ(ReadFile("/proc/self/fd/" + std::to_string(memory)), "out\n");
    close(memory);
    EXPECT_EQ(ExecForeignModule("echo out", std::string("/dev/null"), &m_ExitCode), EXEC_OK);
    EXPECT_EQ(m_ExitCode, 0U);
    EXPECT_EQ(ExecForeignModule("echo out", std::string("/dev/full"), &m_ExitCode), EXEC_OK);
    EXPECT_NE(m_ExitCode, 0U);
}

TEST_F(CToolRunTest, MissingNullDeviceKeepsNoToolFromRunning) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  unshare(CLONE_NEWNS);
                  mount("test", "/dev", "tmpfs", 0, "");
                  const bool ran =
                      RunTool("cat; echo $?; exec ls /proc/self/fd") == EXEC_OK && m_ExitCode == 0;
                  return ran && !fs::exists("/dev/null") ? 0 : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "0\n0\n1\n2\n3\n");
}

// Linux before 5.9.
TEST_F(CToolRunTest, KernelThatClosesOneDescriptorAtATimeServesTheTool) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  if (!RefuseSystemCall(SYS_close_range, ENOSYS)) {
                      return 2;
                  }
                  for (int i = 0; i < 500; ++i) {
                      [[maybe_unused]] const int fd = open("/etc/passwd", O_RDONLY);
                  }
                  return RunTool("exec ls /proc/self/fd") == EXEC_OK && m_ExitCode == 0 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "0\n1\n2\n3\n") << "3 is the directory that ls reads";
}

TEST_F(CToolRunTest, DescriptorsThatCannotBeClosedKeepTheToolFromRunning) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  if (!RefuseSystemCall(SYS_close_range, ENOSYS)) {
                      return 2;
                  }
                  unshare(CLONE_NEWNS);
                  mount("test", "/proc", "tmpfs", 0, "");
                  const bool refused = RunTool("echo ran") == EXEC_OK && m_ExitCode == 1;
                  return refused && FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE) ==
                                        std::vector<std::string>{
                                            "ExecForeignModule execlp Error 00000002."}
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "");
}

TEST_F(CToolRunTest, HostsThreadCanBeCancelledNoSoonerThanTheChildRuns) {
    std::thread thread([&] {
        int state = PTHREAD_CANCEL_DISABLE;
        EXPECT_EQ(RunTool("echo ran"), EXEC_OK);
        pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
        EXPECT_EQ(state, PTHREAD_CANCEL_ENABLE) << "as the host had it";
    });
    thread.join();
    EXPECT_EQ(ReadFile(OUT), "ran\n");
}

TEST_F(CToolRunTest, HostWithoutFreeDescriptorsCannotOpenTheOutput) {
    EXPECT_EQ(
        RunAsAnotherHost([&] {
            const rlimit three = {3, 3};
            setrlimit(RLIMIT_NOFILE, &three);
            unsigned long exitCode = UNTOUCHED;
            return ExecForeignModule("true", OUT, &exitCode) == EXEC_OK && exitCode == 1 &&
                           FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE) ==
                               std::vector<std::string>{"ExecForeignModule open Error 00000018."}
                       ? 0
                       : 1;
        }),
        0);
}

TEST_F(CToolRunTest, WorkingDirectoryIsTheHosts) {
    const fs::path before = fs::current_path();
    EXPECT_EQ(RunTool("pwd -P"), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), fs::canonical(before).string() + "\n");
    EXPECT_EQ(fs::current_path(), before);
}

TEST_F(CToolRunTest, CommandIsShellText) {
    EXPECT_EQ(RunTool("echo 'a  b' \"$((1 + 1))\" | tr a c\necho next"), EXEC_OK);
    EXPECT_EQ(ReadFile(OUT), "c  b 2\nnext\n");
}

// ---- the LSI utilities' runner ----

TEST_F(CUtilityRunTest, EmptyCommandSetsExitCode) {
    EXPECT_EQ(RunUtility(""), unsigned{EXEC_FAILED});
    EXPECT_EQ(m_ExitCode, 255U);
    EXPECT_FALSE(fs::exists(OUT));
}

TEST_F(CUtilityRunTest, ExitStatusIsHandedOver) {
    for (const unsigned long status : {0UL, 1UL, 3UL, 255UL}) {
        EXPECT_EQ(RunUtility("exit " + std::to_string(status)), unsigned{EXEC_OK});
        EXPECT_EQ(m_ExitCode, status);
    }
}

TEST_F(CUtilityRunTest, StandardErrorIsLost) {
    EXPECT_EQ(RunUtility("echo out; echo err >&2; readlink /proc/$$/fd/0 /proc/$$/fd/2"),
              unsigned{EXEC_OK});
    EXPECT_EQ(ReadFile(OUT), "out\n/dev/null\n/dev/null\n");
}

TEST_F(CUtilityRunTest, RunsInTheWorkingDirectory) {
    const fs::path before = fs::current_path();
    EXPECT_EQ(RunUtility("pwd -P", DIR), unsigned{EXEC_OK});
    EXPECT_EQ(ReadFile(OUT), DIR + "\n");
    EXPECT_EQ(fs::current_path(), before);
}

TEST_F(CUtilityRunTest, WithoutWorkingDirectoryStaysWhereTheHostIs) {
    EXPECT_EQ(RunUtility("pwd -P"), unsigned{EXEC_OK});
    EXPECT_EQ(ReadFile(OUT), fs::canonical(fs::current_path()).string() + "\n");
}

TEST_F(CUtilityRunTest, RelativeOutputIsBelowTheWorkingDirectory) {
    fs::create_directories(DIR + "/work");
    EXPECT_EQ(ExecForeignModule("echo here", std::string("rel.txt"), DIR + "/work", &m_ExitCode,
                                EXEC_NO_TIMEOUT),
              unsigned{EXEC_OK});
    EXPECT_EQ(ReadFile(DIR + "/work/rel.txt"), "here\n");
}

TEST_F(CUtilityRunTest, EmptyOutputNameDropsTheOutput) {
    EXPECT_EQ(ExecForeignModule("exec 3>&1; readlink /proc/$$/fd/3 > seen; echo out", std::string(),
                                DIR, &m_ExitCode, EXEC_NO_TIMEOUT),
              unsigned{EXEC_OK});
    EXPECT_EQ(m_ExitCode, 0U);
    EXPECT_EQ(ReadFile(DIR + "/seen"), "/dev/null\n");
}

TEST_F(CUtilityRunTest, WorkingDirectoryThatCannotBeOpenedIsAFailure) {
    EXPECT_EQ(RunUtility("echo ran", DIR + "/missing"), unsigned{EXEC_FAILED});
    EXPECT_EQ(m_ExitCode, 255U);
    EXPECT_FALSE(fs::exists(OUT));
}

TEST_F(CUtilityRunTest, WorkingDirectoryThatIsAFileCountsAsExitStatusOne) {
    WriteFile(DIR + "/file", "no directory");
    EXPECT_EQ(RunUtility("echo ran", DIR + "/file"), unsigned{EXEC_OK});
    EXPECT_EQ(m_ExitCode, 1U);
    EXPECT_FALSE(fs::exists(OUT));
}

TEST_F(CUtilityRunTest, OutputThatCannotBeOpenedCountsAsExitStatusOne) {
    for (const std::string& path : {DIR + "/missing/out.txt", DIR}) {
        m_ExitCode = UNTOUCHED;
        EXPECT_EQ(
            ExecForeignModule("touch " + DIR + "/ran", path, "", &m_ExitCode, EXEC_NO_TIMEOUT),
            unsigned{EXEC_OK});
        EXPECT_EQ(m_ExitCode, 1U);
        EXPECT_FALSE(fs::exists(DIR + "/ran"));
    }
}

TEST_F(CUtilityRunTest, MissingShellCountsAsExitStatusOne) {
    fs::create_directories(DIR + "/empty");
    const CVariable path("PATH", (DIR + "/empty").c_str());
    EXPECT_EQ(RunUtility("true"), unsigned{EXEC_OK});
    EXPECT_EQ(m_ExitCode, 1U);
}

TEST_F(CUtilityRunTest, MissingNullDeviceIsNotMade) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  unshare(CLONE_NEWNS);
                  mount("test", "/dev", "tmpfs", 0, "");
                  const bool failed = ExecForeignModule("true", std::string(), "", &m_ExitCode,
                                                        EXEC_NO_TIMEOUT) == unsigned{EXEC_OK} &&
                                      m_ExitCode == 1;
                  return failed && !fs::exists("/dev/null") ? 0 : 1;
              }),
              0);
}

TEST_F(CUtilityRunTest, OutputThatNobodyReadsCannotBeOpened) {
    ASSERT_EQ(mkfifo(OUT.c_str(), 0600), 0);
    EXPECT_EQ(RunUtility("touch " + DIR + "/ran"), unsigned{EXEC_OK});
    EXPECT_EQ(m_ExitCode, 1U);
    EXPECT_FALSE(fs::exists(DIR + "/ran"));
}

TEST_F(CUtilityRunTest, WorkingDirectoryThatIsAPipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo((DIR + "/pipe").c_str(), 0600), 0);
    EXPECT_EQ(RunUtility("echo ran", DIR + "/pipe"), unsigned{EXEC_OK});
    EXPECT_EQ(m_ExitCode, 1U);
}

TEST_F(CUtilityRunTest, ProcessThatCannotBeMadeLeavesNoFile) {
    fs::permissions(DIR, fs::perms::all);
    EXPECT_EQ(RunAsAnotherHost([&] {
                  AllowNoMoreProcesses();
                  return RunUtility("true") == unsigned{EXEC_FAILED} ? 0 : 1;
              }),
              0);
    EXPECT_FALSE(fs::exists(OUT));
}

TEST_F(CUtilityRunTest, LibraryPathIsPassedOnAsItIs) {
    const CVariable variable("LD_LIBRARY_PATH", "/a");
    EXPECT_EQ(RunUtility("echo \"$LD_LIBRARY_PATH\""), unsigned{EXEC_OK});
    EXPECT_EQ(ReadFile(OUT), "/a\n");
}

TEST_F(CUtilityRunTest, HostWithoutAnEnvironmentIsServed) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  clearenv();
                  return RunUtility("tr '\\0' '\\n' < /proc/$$/environ") == unsigned{EXEC_OK} &&
                                 m_ExitCode == 0
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "");
}

TEST_F(CUtilityRunTest, HostWithoutStandardDescriptorsIsServed) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  close(STDIN_FILENO);
                  close(STDOUT_FILENO);
                  close(STDERR_FILENO);
                  return RunUtility("echo out; echo err >&2; exec ls /proc/self/fd") ==
                                     unsigned{EXEC_OK} &&
                                 m_ExitCode == 0
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(ReadFile(OUT), "out\n0\n1\n2\n3\n");
}

TEST_F(CUtilityRunTest, ChildKilledBySignalIsAFailure) {
    for (const unsigned long timeout : {EXEC_NO_TIMEOUT, NEARLY_ENDLESS}) {
        EXPECT_EQ(ExecForeignModule("kill -KILL $$", OUT, "", &m_ExitCode, timeout),
                  unsigned{EXEC_FAILED});
        EXPECT_EQ(m_ExitCode, 255U);
    }
}

TEST_F(CUtilityRunTest, ChildThatStopsItselfIsEnded) {
    for (const unsigned long timeout : {EXEC_NO_TIMEOUT, NEARLY_ENDLESS}) {
        EXPECT_EQ(ExecForeignModule("kill -STOP $$", OUT, "", &m_ExitCode, timeout),
                  unsigned{EXEC_FAILED});
        EXPECT_EQ(m_ExitCode, 255U);
        EXPECT_EQ(OwnChildren(), "");
    }
}

TEST_F(CUtilityRunTest, EndTakenBySomebodyElseIsAFailure) {
    const CSignalAction ignored(SIGCHLD, SIG_IGN);
    for (const unsigned long timeout : {EXEC_NO_TIMEOUT, NEARLY_ENDLESS}) {
        EXPECT_EQ(ExecForeignModule("true", OUT, "", &m_ExitCode, timeout), unsigned{EXEC_FAILED});
        EXPECT_EQ(m_ExitCode, 255U);
    }
}

TEST_F(CUtilityRunTest, ProcessThatCannotBeMadeIsAFailure) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  AllowNoMoreProcesses();
                  return RunUtility("true") == unsigned{EXEC_FAILED} && m_ExitCode == 255 ? 0 : 1;
              }),
              0);
}

TEST_F(CUtilityRunTest, LimitedWaitLooksOnceASecond) {
    EXPECT_EQ(ExecForeignModule("echo out; exit 3", OUT, "", &m_ExitCode, NEARLY_ENDLESS),
              unsigned{EXEC_OK});
    EXPECT_EQ(m_ExitCode, 3U);
    EXPECT_EQ(ReadFile(OUT), "out\n");
    EXPECT_THAT(FakeComLib().sleeps, Each(1000UL));
}

TEST_F(CUtilityRunTest, ChildBeyondTheLimitRunsOn) {
    struct {
        unsigned long timeout;
        std::vector<unsigned long> sleeps;
    } const rows[] = {
        {0, {0}},
        {999, {999}},
        {1000, {1000, 0}},
        {2500, {1000, 1000, 500}},
    };
    for (const auto& row : rows) {
        ResetFakeComLib();
        EXPECT_EQ(ExecForeignModule("exec sleep 600", OUT, "", &m_ExitCode, row.timeout),
                  EXEC_LSI_TIMEOUT);
        EXPECT_EQ(m_ExitCode, 255U);
        EXPECT_EQ(FakeComLib().sleeps, row.sleeps) << row.timeout;
        const pid_t child = std::stoi(OwnChildren());
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, WNOHANG), 0) << "still runs";
        kill(child, SIGKILL);
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, SIGKILL);
    }
}

TEST_F(CUtilityRunTest, UnlimitedWaitNeedsNoPolling) {
    EXPECT_EQ(RunUtility("sleep 0.2; echo done"), unsigned{EXEC_OK});
    EXPECT_EQ(ReadFile(OUT), "done\n");
    EXPECT_THAT(FakeComLib().sleeps, IsEmpty());
}

TEST_F(CUtilityRunTest, NothingIsTraced) {
    RunUtility("");
    RunUtility("exit 1");
    RunUtility("kill -KILL $$");
    RunUtility("true", DIR + "/missing");
    ExecForeignModule("true", DIR, "", &m_ExitCode, EXEC_NO_TIMEOUT);
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

TEST_F(CUtilityRunTest, SignalsGroupAndDescriptorsAreAsForTheTool) {
    const CSignalAction ignored(SIGPIPE, SIG_IGN);
    const CBlockedSignal blocked(SIGTERM);
    const int leaky = open("/etc/passwd", O_RDONLY);
    EXPECT_EQ(RunUtility("read -r pid name state parent group rest < /proc/$$/stat; "
                         "echo $((pid == group)); exec ls /proc/self/fd"),
              unsigned{EXEC_OK});
    close(leaky);
    EXPECT_EQ(ReadFile(OUT), "1\n0\n1\n2\n3\n");
    EXPECT_EQ(RunUtility("exec cat /proc/self/status"), unsigned{EXEC_OK});
    EXPECT_EQ(SignalsInStatus("SigBlk"), 0U);
    EXPECT_EQ(SignalsInStatus("SigIgn"), 0U);
}

}  // namespace
