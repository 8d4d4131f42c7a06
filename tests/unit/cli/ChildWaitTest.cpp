#include "Host.h"
#include "PrivateServerTest.h"
#include "cli/ChildStart.h"
#include "cli/ChildWait.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;
using std::chrono::milliseconds;

const std::string DIR = "/opt/tarmica/run";

class CChildWaitTest : public CPrivateServerTest {
protected:
    void SetUp() override {
        CPrivateServerTest::SetUp();
        fs::create_directories(DIR);
    }

    static pid_t Start(const std::string& command) {
        const CChildStart start = StartChild(command, {.environment = environ});
        EXPECT_EQ(start.failed, EChildStep::None);
        return start.child;
    }
};

TEST_F(CChildWaitTest, StopIsSeen) {
    const pid_t child = Start("kill -STOP $$");
    int status = 0;
    EXPECT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::Changed);
    EXPECT_TRUE(WIFSTOPPED(status));
    KillChild(child);
}

TEST_F(CChildWaitTest, ChildBeyondTheLimitRunsOn) {
    const pid_t child = Start("exec sleep 600");
    int status = 0;
    EXPECT_EQ(WaitForChild(child, milliseconds(20), status), EChildWait::TimedOut);
    EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);
    KillChild(child);
    EXPECT_EQ(waitpid(child, &status, WNOHANG), -1);
}

TEST_F(CChildWaitTest, LimitOfZeroStillTakesAnEndThatHappened) {
    const pid_t child = Start("exit 5");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    int status = 0;
    EXPECT_EQ(WaitForChild(child, milliseconds(0), status), EChildWait::Changed);
    EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(CChildWaitTest, WaitForSomebodyElsesProcessFails) {
    int status = 0;
    EXPECT_EQ(WaitForChild(getppid(), NO_TIME_LIMIT, status), EChildWait::Failed);
}

TEST_F(CChildWaitTest, KillReachesTheWholeGroup) {
    const CWitness witness(DIR + "/witness");
    const pid_t child =
        Start("exec 9>" + DIR + "/witness; (trap '' TERM; sleep 600; true) & kill -STOP $$");
    int status = 0;
    ASSERT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::Changed);
    KillChild(child);
    EXPECT_EQ(witness.TextWhenAllAreGone(), "");
}

TEST_F(CChildWaitTest, KillReachesAChildThatLeftItsGroup) {
    const pid_t child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    KillChild(child);
    EXPECT_EQ(OwnChildren(), "");
}

TEST_F(CChildWaitTest, KillOfAnEndedChildTakesItsEnd) {
    const pid_t child = Start("exit 5");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    KillChild(child);
    EXPECT_EQ(OwnChildren(), "");
}

}  // namespace
