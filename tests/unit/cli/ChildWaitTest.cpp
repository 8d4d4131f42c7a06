#include <sys/syscall.h>

#include <chrono>
#include <stdexcept>

#include "Host.h"
#include "PrivateServerFixture.h"
#include "cli/ChildStart.h"
#include "cli/ChildWait.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;
using std::chrono::milliseconds;

const std::string DIR = "/opt/tarmica/run";

class CChildWaitTest : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        fs::create_directories(DIR);
    }

    // Throws if there is no child: to kill the process -1 would be to kill them all.
    static pid_t Start(const std::string& command) {
        const CChildStart start = StartChild(command, {.environment = environ});
        return ExistingChild(start.child);
    }
    static pid_t ExistingChild(pid_t child) {
        if (child <= 0) {
            throw std::runtime_error("no child");
        }
        return child;
    }
};

TEST_F(CChildWaitTest, StopIsSeen) {
    const pid_t child = Start("kill -STOP $$");
    int status = 0;
    EXPECT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::CHANGED);
    EXPECT_TRUE(WIFSTOPPED(status));
    KillChild(child);
}

TEST_F(CChildWaitTest, ContinuationIsSeenWhereTheStopWasMissed) {
    const pid_t child = Start("kill -STOP $$; exec sleep 600");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WSTOPPED | WNOWAIT), 0);
    kill(child, SIGCONT);
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WCONTINUED | WNOWAIT), 0);
    int status = 0;
    EXPECT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::CHANGED);
    EXPECT_TRUE(WIFCONTINUED(status));
    KillChild(child);
}

TEST_F(CChildWaitTest, ChildBeyondTheLimitRunsOn) {
    const pid_t child = Start("exec sleep 600");
    int status = 0;
    EXPECT_EQ(WaitForChild(child, milliseconds(20), status), EChildWait::TIMED_OUT);
    EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);
    KillChild(child);
    EXPECT_EQ(waitpid(child, &status, WNOHANG), -1);
}

TEST_F(CChildWaitTest, LimitOfZeroStillTakesAnEndThatHappened) {
    const pid_t child = Start("exit 5");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    int status = 0;
    EXPECT_EQ(WaitForChild(child, milliseconds(0), status), EChildWait::CHANGED);
    EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(CChildWaitTest, WaitForSomebodyElsesProcessFails) {
    int status = 0;
    EXPECT_EQ(WaitForChild(getppid(), NO_TIME_LIMIT, status), EChildWait::FAILED);
}

TEST_F(CChildWaitTest, KillReachesTheWholeGroup) {
    const CWitness witness(DIR + "/witness");
    const pid_t child =
        Start("exec 9>" + DIR + "/witness; (trap '' TERM; sleep 600; true) & kill -STOP $$");
    int status = 0;
    ASSERT_EQ(WaitForChild(child, NO_TIME_LIMIT, status), EChildWait::CHANGED);
    KillChild(child);
    EXPECT_EQ(witness.TextWhenAllAreGone(), "");
}

TEST_F(CChildWaitTest, KillReachesAChildThatLeftItsGroup) {
    const pid_t child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    KillChild(ExistingChild(child));
    EXPECT_EQ(OwnChildren(), "");
}

TEST_F(CChildWaitTest, KillOfAnEndedChildTakesItsEnd) {
    const pid_t child = Start("exit 5");
    siginfo_t info = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    KillChild(child);
    EXPECT_EQ(OwnChildren(), "");
}

// Linux before 5.3, or a host that may not have a process descriptor.
TEST_F(CChildWaitTest, EndIsSeenWithoutAProcessDescriptor) {
    for (const int error : {ENOSYS, EPERM}) {
        EXPECT_EQ(RunAsAnotherHost([error] {
                      if (!RefuseSystemCall(SYS_pidfd_open, error)) {
                          return 2;
                      }
                      int status = 0;
                      const pid_t child = Start("sleep 0.01; exit 5");
                      return WaitForChild(child, NO_TIME_LIMIT, status) == EChildWait::CHANGED &&
                                     WEXITSTATUS(status) == 5
                                 ? 0
                                 : 1;
                  }),
                  0)
            << error;
    }
}

TEST_F(CChildWaitTest, LimitHoldsWithoutAProcessDescriptor) {
    EXPECT_EQ(RunAsAnotherHost([] {
                  if (!RefuseSystemCall(SYS_pidfd_open, ENOSYS)) {
                      return 2;
                  }
                  const pid_t child = Start("exec sleep 600");
                  int status = 0;
                  const EChildWait wait = WaitForChild(child, milliseconds(30), status);
                  KillChild(child);
                  return wait == EChildWait::TIMED_OUT ? 0 : 1;
              }),
              0);
}

}  // namespace
