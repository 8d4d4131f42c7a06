#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <array>
#include <chrono>
#include <fstream>

#include "Host.h"
#include "PrivateServerFixture.h"
#include "cli/ChildStart.h"

namespace {
int g_CallsOfReplacedFunctions = 0;
}

// As in a host whose sanitizer puts functions of its own in the place of the C library's.
extern "C" {

int clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept {
    static const auto real =
        reinterpret_cast<int (*)(int (*)(void*), void*, int, void*)>(dlsym(RTLD_NEXT, "clone"));
    ++g_CallsOfReplacedFunctions;
    return real(function, stack, flags, argument);
}

int sigaction(int signal, const struct sigaction* action, struct sigaction* old) noexcept {
    static const auto real = reinterpret_cast<decltype(&sigaction)>(dlsym(RTLD_NEXT, "sigaction"));
    ++g_CallsOfReplacedFunctions;
    return real(signal, action, old);
}

}  // extern "C"

namespace {

namespace fs = std::filesystem;
using namespace qortest;

const std::string DIR = "/opt/tarmica/run";
const std::string OUT = DIR + "/out.txt";

class CChildStartTest : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        fs::create_directories(DIR);
    }

    // Status of the ended child.
    static int Run(const std::string& command, const CChildSetup& setup) {
        const CChildStart start = StartChild(command, setup);
        EXPECT_EQ(start.failed, EChildStep::NONE);
        int status = -1;
        while (waitpid(start.child, &status, 0) < 0 && errno == EINTR) {
        }
        return status;
    }
};

TEST_F(CChildStartTest, DirectoryComesBeforeTheOutput) {
    EXPECT_EQ(Run("echo out; echo err >&2; pwd",
                  {.directory = DIR.c_str(), .output = "out.txt", .environment = environ}),
              0);
    EXPECT_EQ(ReadFile(OUT), "out\n" + DIR + "\n");
}

// A mount point cannot be removed.
TEST_F(CChildStartTest, OutputThatCannotBeMadeAnewIsNotWrittenTo) {
    const std::string victim = DIR + "/victim.txt";
    WriteFile(victim, "text");
    WriteFile(OUT, "");
    ASSERT_EQ(mount(victim.c_str(), OUT.c_str(), nullptr, MS_BIND, nullptr), 0);
    const CChildStart start = StartChild(
        "echo out", {.output = OUT.c_str(), .opening = EFileOpening::ANEW, .environment = environ});
    EXPECT_EQ(start.failed, EChildStep::OUTPUT);
    EXPECT_EQ(start.error, EEXIST);
    ASSERT_EQ(umount(OUT.c_str()), 0);
    EXPECT_EQ(ReadFile(victim), "text");
}

TEST_F(CChildStartTest, ErrorsFollowTheOutputWhereTheyAreToldTo) {
    EXPECT_EQ(
        Run("echo out; echo err >&2",
            {.output = OUT.c_str(), .errors = EErrorOutput::WITH_OUTPUT, .environment = environ}),
        0);
    EXPECT_EQ(ReadFile(OUT), "out\nerr\n");
}

TEST_F(CChildStartTest, EnvironmentIsTheGivenOne) {
    std::string entry = "ONLY=this";
    const std::array<char*, 2> environment = {entry.data(), nullptr};
    EXPECT_EQ(
        Run("echo \"$ONLY $HOME\"", {.output = OUT.c_str(), .environment = environment.data()}), 0);
    EXPECT_EQ(ReadFile(OUT), "this \n");
}

TEST_F(CChildStartTest, FailedStepIsToldAndLeavesNoChild) {
    const std::string missing = DIR + "/missing";
    const std::string below = missing + "/out.txt";
    fs::create_directories(DIR + "/empty");
    struct {
        CChildSetup setup;
        const char* path;
        EChildStep step;
        int error;
    } const rows[] = {
        {{.directory = missing.c_str()}, nullptr, EChildStep::DIRECTORY, ENOENT},
        {{.output = below.c_str()}, nullptr, EChildStep::OUTPUT, ENOENT},
        {{.output = DIR.c_str()}, nullptr, EChildStep::OUTPUT, EISDIR},
        {{}, "/opt/tarmica/run/empty", EChildStep::COMMAND, ENOENT},
    };
    for (const auto& row : rows) {
        const CVariable path("PATH", row.path != nullptr ? row.path : getenv("PATH"));
        CChildSetup setup = row.setup;
        setup.environment = environ;
        const CChildStart start = StartChild("true", setup);
        EXPECT_EQ(start.failed, row.step);
        EXPECT_EQ(start.error, row.error);
        EXPECT_EQ(OwnChildren(), "");
    }
}

TEST_F(CChildStartTest, MissingNullDeviceIsAFailedStepWhereItIsTheOutput) {
    EXPECT_EQ(RunAsAnotherHost([&] {
                  unshare(CLONE_NEWNS);
                  mount("test", "/dev", "tmpfs", 0, "");
                  const CChildStart dropped = StartChild("true", {.environment = environ});
                  const CChildStart errors =
                      StartChild("true", {.output = OUT.c_str(), .environment = environ});
                  return dropped.failed == EChildStep::OUTPUT &&
                                 errors.failed == EChildStep::STREAMS && errors.error == ENOENT
                             ? 0
                             : 1;
              }),
              0);
}

// The child has the host's memory while it starts: none of the host's handlers may run there.
TEST_F(CChildStartTest, MaskAndHandlersAreTheHostsAgain) {
    static int calls = 0;
    const CSignalAction handled(SIGUSR1, [](int) { ++calls; });
    sigset_t before;
    sigset_t after;
    sigprocmask(SIG_BLOCK, nullptr, &before);
    EXPECT_EQ(Run("kill -USR1 $PPID", {.environment = environ}), 0);
    sigprocmask(SIG_BLOCK, nullptr, &after);
    for (int signal = 1; signal < NSIG; ++signal) {
        EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
    }
    EXPECT_EQ(calls, 1);
}

// The thread sanitizer's functions take a child for one with a memory of its own: its clone() ends
// the host, its sigaction() forgets the host's handlers.
TEST_F(CChildStartTest, WhatAHostsSanitizerReplacesIsNotCalled) {
    g_CallsOfReplacedFunctions = 0;
    const CChildStart start = StartChild("true", {.environment = environ});
    EXPECT_EQ(g_CallsOfReplacedFunctions, 0);
    EXPECT_EQ(waitpid(start.child, nullptr, 0), start.child);
}

// Sends the stop of a terminal (Ctrl-Z) to the group of `host` all the time. A host that hangs is
// killed.
void StormOfStops(pid_t host) {
    constexpr std::chrono::seconds LIMIT(20);
    signal(SIGTSTP, SIG_IGN);
    const auto deadline = std::chrono::steady_clock::now() + LIMIT;
    while (std::chrono::steady_clock::now() < deadline) {
        kill(-host, SIGTSTP);
    }
    kill(host, SIGKILL);
    _exit(1);
}

pid_t g_Host = 0;
bool g_RanInTheChild = false;

TEST_F(CChildStartTest, StopOfTheHostsGroupDoesNotReachTheChild) {
    constexpr int STARTS = 200;
    EXPECT_EQ(RunAsAnotherHost([] {
                  setpgid(0, 0);
                  const CSignalAction handled(SIGTSTP,
                                              [](int) { g_RanInTheChild |= getpid() != g_Host; });
                  g_Host = getpid();
                  const pid_t storm = fork();
                  if (storm < 0) {
                      return 2;
                  }
                  if (storm == 0) {
                      StormOfStops(g_Host);
                  }
                  int failed = 0;
                  for (int i = 0; i < STARTS; ++i) {
                      failed += Run("true", {.environment = environ});
                  }
                  kill(storm, SIGKILL);
                  waitpid(storm, nullptr, 0);
                  return failed == 0 && !g_RanInTheChild ? 0 : 1;
              }),
              0)
        << "200: the host waited for ever";
}

// A request for the end of the host's thread waits until the child is the command: in the child it
// would unwind the memory of both.
TEST_F(CChildStartTest, CancellationOfTheHostsThreadWaits) {
    CChildStart start;
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(
                  &thread, nullptr,
                  [](void* result) -> void* {
                      pthread_cancel(pthread_self());
                      *static_cast<CChildStart*>(result) =
                          StartChild("echo ran", {.output = OUT.c_str(), .environment = environ});
                      pthread_testcancel();
                      return nullptr;
                  },
                  &start),
              0);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(result, PTHREAD_CANCELED) << "afterwards";
    EXPECT_EQ(start.failed, EChildStep::NONE);
    EXPECT_EQ(waitpid(start.child, nullptr, 0), start.child);
    EXPECT_EQ(ReadFile(OUT), "ran\n");
}

// In pages.
size_t MappedMemory() {
    size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages;
}

TEST_F(CChildStartTest, StartLeavesNoMemoryBehind) {
    const auto start = [] { EXPECT_EQ(Run("true", {.environment = environ}), 0); };
    start();
    const size_t before = MappedMemory();
    for (int i = 0; i < 50; ++i) {
        start();
    }
    EXPECT_LT(MappedMemory(), before + 50) << "a child's stack is 16 pages";
}

TEST_F(CChildStartTest, HostWithoutMemoryForTheStackGetsNoChild) {
    EXPECT_EQ(RunAsAnotherHost([] {
                  const rlimit none = {0, 0};
                  setrlimit(RLIMIT_AS, &none);
                  const CChildStart start = StartChild("true", {.environment = environ});
                  return start.failed == EChildStep::PROCESS && start.error == ENOMEM &&
                                 start.child == -1
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(CChildStartTest, ProcessThatCannotBeMadeIsTold) {
    EXPECT_EQ(RunAsAnotherHost([] {
                  if (!RefuseSystemCall(SYS_clone, EPERM)) {
                      return 2;
                  }
                  const CChildStart start = StartChild("true", {.environment = environ});
                  return start.failed == EChildStep::PROCESS && start.error == EPERM ? 0 : 1;
              }),
              0);
}

TEST_F(CChildStartTest, DescriptorsThatCannotBeListedToTheEndKeepTheCommandFromBeingRun) {
    EXPECT_EQ(RunAsAnotherHost([] {
                  if (!RefuseSystemCall(SYS_close_range, ENOSYS) ||
                      !RefuseSystemCall(SYS_getdents64, EIO)) {
                      return 2;
                  }
                  const CChildStart start = StartChild("true", {.environment = environ});
                  return start.failed == EChildStep::SECLUSION ? 0 : 1;
              }),
              0);
}

TEST_F(CChildStartTest, ShellIsFoundAsTheHostsPathSays) {
    WriteFile(DIR + "/first/sh", "no program");
    fs::create_directories(DIR + "/second/sh");
    WriteFile(DIR + "/script/sh", "echo \"script $*\"\n");
    fs::permissions(DIR + "/script/sh", fs::perms::owner_all);
    const std::string tooLong = "/" + std::string(5000, 'x');
    const std::string first = DIR + "/first:" + DIR + "/second:" + tooLong + ":/bin";
    const std::string script = DIR + "/script:/bin";
    struct {
        const char* path;
        const char* output;
    } const rows[] = {
        {nullptr, "ran\n"},
        {first.c_str(), "ran\n"},
        {script.c_str(), "script -c echo ran\n"},
    };
    for (const auto& row : rows) {
        const CVariable path("PATH", row.path);
        EXPECT_EQ(Run("echo ran", {.output = OUT.c_str(), .environment = environ}), 0);
        EXPECT_EQ(ReadFile(OUT), row.output);
    }
}

}  // namespace
