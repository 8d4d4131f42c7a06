#include <time.h>

#include <cerrno>

#include "plugin/ComLib.h"
#include "util/Kernel.h"

unsigned long GetCurrentThreadId() {
    return static_cast<unsigned long>(util::ThreadId());
}

unsigned long GetLastError() {
    return static_cast<unsigned long>(errno);
}

void Sleep(unsigned long milliseconds) {
    constexpr long NANOSECONDS_PER_SECOND = 1'000'000'000;
    timespec deadline = {};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(milliseconds / 1000);
    deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (deadline.tv_nsec >= NANOSECONDS_PER_SECOND) {
        deadline.tv_nsec -= NANOSECONDS_PER_SECOND;
        ++deadline.tv_sec;
    }
    // A point in time instead of a duration: many signals cannot add up to a longer sleep.
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
}
