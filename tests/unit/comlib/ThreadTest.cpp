#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <thread>

#include "plugin/ComLib.h"

namespace {

using namespace std::chrono_literals;

TEST(Thread, EveryThreadHasTheKernelsId) {
    EXPECT_EQ(GetCurrentThreadId(), static_cast<unsigned long>(getpid()));
    unsigned long other = 0;
    std::thread([&other] { other = GetCurrentThreadId(); }).join();
    EXPECT_NE(other, 0U);
    EXPECT_NE(other, GetCurrentThreadId());
}

TEST(Thread, LastErrorIsErrnoOfTheThread) {
    errno = 0;
    EXPECT_EQ(access("/nonexistent", F_OK), -1);
    EXPECT_EQ(GetLastError(), static_cast<unsigned long>(ENOENT));
    std::thread([] {
        errno = EDOM;
        EXPECT_EQ(GetLastError(), static_cast<unsigned long>(EDOM));
    }).join();
    EXPECT_EQ(GetLastError(), static_cast<unsigned long>(ENOENT));
}

std::chrono::steady_clock::duration TimeOfSleep(unsigned long milliseconds) {
    const auto start = std::chrono::steady_clock::now();
    Sleep(milliseconds);
    return std::chrono::steady_clock::now() - start;
}

TEST(Thread, SleepLastsAtLeastItsTime) {
    EXPECT_GE(TimeOfSleep(0), 0ms);
    EXPECT_GE(TimeOfSleep(1), 1ms);
    EXPECT_GE(TimeOfSleep(50), 50ms);
    EXPECT_GE(TimeOfSleep(1000), 1000ms);
    EXPECT_GE(TimeOfSleep(999), 999ms);  // carries into the next second almost always
}

volatile sig_atomic_t s_Alarms = 0;

// Sends this process a signal every two milliseconds.
void StartAlarms(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;  // without SA_RESTART: system calls are interrupted
    sigaction(SIGALRM, &action, nullptr);
    const itimerval everyTwoMs = {{0, 2000}, {0, 2000}};
    setitimer(ITIMER_REAL, &everyTwoMs, nullptr);
}

TEST(Thread, SleepSurvivesSignals) {
    s_Alarms = 0;
    StartAlarms([](int) { s_Alarms = s_Alarms + 1; });
    EXPECT_GE(TimeOfSleep(100), 100ms);
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    signal(SIGALRM, SIG_DFL);
    EXPECT_GE(s_Alarms, 5);
}

TEST(Thread, LongestSleepDoesNotOverflow) {
    constexpr int STILL_ASLEEP = 7;
    s_Alarms = 0;
    const pid_t child = fork();
    if (child == 0) {
        StartAlarms([](int) {
            s_Alarms = s_Alarms + 1;
            if (s_Alarms >= 10) {
                _exit(STILL_ASLEEP);
            }
        });
        Sleep(ULONG_MAX);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), STILL_ASLEEP);
}

}  // namespace
