#include <fcntl.h>

#include "Host.h"
#include "PrivateServerTest.h"
#include "cli/ChildProcess.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;
using std::chrono::milliseconds;

const std::string DIR = "/opt/tarmica/run";

class CChildProcessTest : public CPrivateServerTest {
protected:
    void SetUp() override {
        CPrivateServerTest::SetUp();
        fs::create_directories(DIR);
    }

    static pid_t Start(const std::string& command) {
        CChildSetup setup;
        pid_t child = 0;
        EXPECT_EQ(setup.Start(command, environ, child), 0);
        return child;
    }
};

TEST_F(CChildProcessTest, StepsHappenInTheOrderInWhichTheyWereAdded) {
    CChildSetup setup;
    setup.ChangeDirectory(DIR);
    setup.OpenForWriting(STDOUT_FILENO, "out.txt");
    setup.Duplicate(STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    ASSERT_EQ(setup.Start("echo out; echo err >&2", environ, child), 0);
    int status = 0;
    EXPECT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::Changed);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadFile(DIR + "/out.txt"), "out\nerr\n");
}

TEST_F(CChildProcessTest, StepThatFailsInTheChildLeavesNoChild) {
    CChildSetup setup;
    setup.ChangeDirectory(DIR + "/missing");
    pid_t child = 0;
    EXPECT_EQ(setup.Start("true", environ, child), ENOENT);
}

TEST_F(CChildProcessTest, StepThatCannotBeRecordedFailsTheStart) {
    CChildSetup setup;
    setup.Duplicate(-1, STDOUT_FILENO);
    setup.OpenForWriting(STDOUT_FILENO, DIR + "/out.txt");
    pid_t child = 0;
    EXPECT_EQ(setup.Start("true", environ, child), EBADF);
    EXPECT_FALSE(fs::exists(DIR + "/out.txt"));
}

TEST_F(CChildProcessTest, EnvironmentIsTheGivenOne) {
    std::string entry = "ONLY=this";
    char* const environment[] = {entry.data(), nullptr};
    CChildSetup setup;
    setup.OpenForWriting(STDOUT_FILENO, DIR + "/out.txt");
    pid_t child = 0;
    ASSERT_EQ(setup.Start("echo \"$ONLY $HOME\"", environment, child), 0);
    int status = 0;
    EXPECT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::Changed);
    EXPECT_EQ(ReadFile(DIR + "/out.txt"), "this \n");
}

TEST_F(CChildProcessTest, StopIsSeen) {
    const pid_t child = Start("kill -STOP $$");
    int status = 0;
    EXPECT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::Changed);
    EXPECT_TRUE(WIFSTOPPED(status));
    KillChildGroup(child);
}

TEST_F(CChildProcessTest, ChildBeyondTheLimitRunsOn) {
    const pid_t child = Start("exec sleep 600");
    int status = 0;
    EXPECT_EQ(WaitForChild(child, milliseconds(20), status), EChildWait::TimedOut);
    EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);
    KillChildGroup(child);
    EXPECT_EQ(waitpid(child, &status, WNOHANG), -1);
}

TEST_F(CChildProcessTest, LimitOfZeroStillTakesAnEndThatHappened) {
    const pid_t child = Start("exit 5");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    int status = 0;
    EXPECT_EQ(WaitForChild(child, milliseconds(0), status), EChildWait::Changed);
    EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(CChildProcessTest, WaitForSomebodyElsesProcessFails) {
    int status = 0;
    EXPECT_EQ(WaitForChild(getppid(), NO_TIME_LIMIT, status), EChildWait::Failed);
}

TEST_F(CChildProcessTest, KillReachesTheWholeGroup) {
    const CWitness witness(DIR + "/witness");
    const pid_t child =
        Start("exec 9>" + DIR + "/witness; (trap '' TERM; sleep 600; true) & kill -STOP $$");
    int status = 0;
    ASSERT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::Changed);
    KillChildGroup(child);
    EXPECT_EQ(witness.TextWhenAllAreGone(), "");
}

TEST_F(CChildProcessTest, KillOfAnEndedChildTakesItsEnd) {
    const pid_t child = Start("exit 5");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    KillChildGroup(child);
    EXPECT_EQ(OwnChildren(), "");
}

}  // namespace
