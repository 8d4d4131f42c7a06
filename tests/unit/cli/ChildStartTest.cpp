#include <array>

#include "Host.h"
#include "PrivateServerTest.h"
#include "cli/ChildStart.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;

const std::string DIR = "/opt/tarmica/run";
const std::string OUT = DIR + "/out.txt";

class CChildStartTest : public CPrivateServerTest {
protected:
    void SetUp() override {
        CPrivateServerTest::SetUp();
        fs::create_directories(DIR);
    }

    // Status of the ended child.
    static int Run(const std::string& command, const CChildSetup& setup) {
        const CChildStart start = StartChild(command, setup);
        EXPECT_EQ(start.failed, EChildStep::None);
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

TEST_F(CChildStartTest, ErrorsFollowTheOutputWhereTheyAreToldTo) {
    EXPECT_EQ(
        Run("echo out; echo err >&2",
            {.output = OUT.c_str(), .errors = EErrorOutput::WithOutput, .environment = environ}),
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
        {{.directory = missing.c_str()}, nullptr, EChildStep::Directory, ENOENT},
        {{.output = below.c_str()}, nullptr, EChildStep::Output, ENOENT},
        {{.output = DIR.c_str()}, nullptr, EChildStep::Output, EISDIR},
        {{}, "/opt/tarmica/run/empty", EChildStep::Command, ENOENT},
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
                  return dropped.failed == EChildStep::Output &&
                                 errors.failed == EChildStep::Streams && errors.error == ENOENT
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

}  // namespace
