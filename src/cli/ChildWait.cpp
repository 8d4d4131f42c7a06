#include "cli/ChildWait.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

#include "util/UniqueFd.h"

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// A process descriptor does not tell of a stop, so a stop is looked for now and then.
constexpr milliseconds STOP_CHECK_INTERVAL(500);
// Kernels before 5.3 have no process descriptors.
constexpr milliseconds POLLING_INTERVAL(10);
constexpr milliseconds REAP_LIMIT(5000);
constexpr milliseconds REAP_INTERVAL(1);

int OpenProcessDescriptor(pid_t child) {
    return static_cast<int>(syscall(SYS_pidfd_open, child, 0));
}

// Returns when the process has ended, or earlier.
void Pause(const util::CUniqueFd& process, milliseconds duration) {
    if (!process.IsOpen()) {
        duration = std::min(duration, POLLING_INTERVAL);
    }
    pollfd entry = {process.Get(), POLLIN, 0};
    poll(&entry, 1, static_cast<int>(duration.count()));
}

}  // namespace

pid_t LookAtChild(pid_t child, int& status) {
    pid_t changed = 0;
    do {
        changed = waitpid(child, &status, WNOHANG | WUNTRACED | WCONTINUED);
    } while (changed < 0 && errno == EINTR);
    return changed;
}

EChildWait WaitForChild(pid_t child, milliseconds limit, int& status) {
    const util::CUniqueFd process(OpenProcessDescriptor(child));
    const steady_clock::time_point deadline = steady_clock::now() + limit;
    for (;;) {
        const pid_t changed = LookAtChild(child, status);
        if (changed != 0) {
            return changed == child ? EChildWait::CHANGED : EChildWait::FAILED;
        }
        const auto remaining = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
        if (remaining <= milliseconds::zero()) {
            return EChildWait::TIMED_OUT;
        }
        Pause(process, std::min(remaining, STOP_CHECK_INTERVAL));
    }
}

void KillChild(pid_t child) {
    // By itself first: it may have left its group. Both before its end is taken, while its number
    // can be nobody else's.
    kill(child, SIGKILL);
    kill(-child, SIGKILL);
    const steady_clock::time_point deadline = steady_clock::now() + REAP_LIMIT;
    const timespec interval = {0, std::chrono::nanoseconds(REAP_INTERVAL).count()};
    while (waitpid(child, nullptr, WNOHANG) == 0 && steady_clock::now() < deadline) {
        nanosleep(&interval, nullptr);
    }
}
