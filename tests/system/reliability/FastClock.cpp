// Preloaded into a program of the tests: the monotonic time runs QOR_FAST_CLOCK times as fast, and
// the waits that the plug-in and the simulated tool use are that much shorter. So a time limit of
// 150 seconds is reached in half a second, by the shipped code with the shipped limit. The time of
// day stays as it is.
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int64_t NANOSECONDS = 1'000'000'000;
constexpr int64_t NANOSECONDS_OF_MILLISECOND = 1'000'000;

int64_t Count(const timespec& time) {
    return static_cast<int64_t>(time.tv_sec) * NANOSECONDS + time.tv_nsec;
}

timespec Time(int64_t count) {
    return {static_cast<time_t>(count / NANOSECONDS), static_cast<long>(count % NANOSECONDS)};
}

int64_t RealTime() {
    timespec time = {};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return Count(time);
}

int64_t Factor() {
    static const char* const text = std::getenv("QOR_FAST_CLOCK");
    static const int64_t factor = text == nullptr ? 1 : std::atoi(text);
    return factor;
}

// When the clock is first asked; it is right then.
int64_t Start() {
    static const int64_t start = RealTime();
    return start;
}

int64_t RealOfFast(int64_t time) {
    return Start() + (time - Start()) / Factor();
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    const int64_t start = Start();
    *time = Time(start + (RealTime() - start) * Factor());
    return 0;
}

EXPORTED int poll(pollfd* entries, nfds_t count, int timeout) {
    const timespec wait = Time(timeout * NANOSECONDS_OF_MILLISECOND / Factor());
    const timespec* const limit = timeout < 0 ? nullptr : &wait;
    return static_cast<int>(syscall(SYS_ppoll, entries, count, limit, nullptr, 0));
}

EXPORTED int nanosleep(const timespec* duration, timespec* remaining) {
    const timespec wait = Time(Count(*duration) / Factor());
    return static_cast<int>(syscall(SYS_nanosleep, &wait, remaining));
}

// Answers the error itself; the system call leaves it in errno.
EXPORTED int clock_nanosleep(clockid_t clock, int flags, const timespec* time,
                             timespec* remaining) {
    timespec wait = *time;
    if (clock == CLOCK_MONOTONIC) {
        const bool untilTime = (flags & TIMER_ABSTIME) != 0;
        wait = Time(untilTime ? RealOfFast(Count(*time)) : Count(*time) / Factor());
    }
    const int before = errno;
    const bool slept = syscall(SYS_clock_nanosleep, clock, flags, &wait, remaining) == 0;
    const int error = slept ? 0 : errno;
    errno = before;
    return error;
}
