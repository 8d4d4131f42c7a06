// The time that `qorctl watch` runs by, and what may wake it up before its time.
#ifndef QORCTL_WATCH_WATCHCLOCK_H
#define QORCTL_WATCH_WATCHCLOCK_H

#include <poll.h>

#include <cstdint>
#include <string>

namespace qorctl {

constexpr int64_t MILLISECONDS = 1000;  // of a second

enum class EWake {
    TIME,      // the time has come
    INPUT,     // there is something to read
    TERMINAL,  // likewise on the terminal, or it is gone
    REDRAW,    // the terminal has another size, or showed something else meanwhile
    PAUSE,     // somebody wants the terminal for something else
    STOP,      // somebody wants an end
};

// Thread rule: one thread at a time.
class IWatchClock {
public:
    virtual ~IWatchClock() = default;

    // Milliseconds of a clock that nobody sets.
    virtual int64_t Now() = 0;
    // Seconds since 1970.
    virtual int64_t WallTime() = 0;
    // Returns at once when `time`, in milliseconds of Now(), is over. -1 is no `input` to wait for.
    virtual EWake WaitUntil(int64_t time, int input, const pollfd& terminal) = 0;
    // Stops the process until somebody has it go on.
    virtual void Pause() = 0;
};

// "2026-11-20T10:00:00Z"
std::string FormatTime(int64_t wallTime);

// The first of the times `start`, `start` + `interval`, ... that comes after `now`. All in
// milliseconds; `interval` is above 0, `now` not before `start`.
int64_t NextTime(int64_t start, int64_t interval, int64_t now);

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHCLOCK_H
