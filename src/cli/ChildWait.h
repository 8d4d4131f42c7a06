// Waiting for a child process, and ending it.
//
// The host's signal handlers and timers are not touched.
#ifndef QOR_CLI_CHILDWAIT_H
#define QOR_CLI_CHILDWAIT_H

#include <sys/types.h>

#include <chrono>

enum class EChildWait {
    CHANGED,    // the child ended, was stopped or went on; `status` is as waitpid gives it
    TIMED_OUT,  // the limit passed; the child runs on
    FAILED      // there is no such child: somebody else took its end
};

// Long enough to be no limit.
inline constexpr std::chrono::milliseconds NO_TIME_LIMIT = std::chrono::hours(24L * 365 * 100);

// One look at the child, without waiting: its process id if it ended, was stopped or went on, with
// `status` as waitpid gives it; 0 if nothing happened; -1 if there is no such child.
pid_t LookAtChild(pid_t child, int& status);

// Waits for the child's end, stop or continuation for at most `limit`. The end is seen at once; a
// stop within half a second. Interrupted waits go on.
EChildWait WaitForChild(pid_t child, std::chrono::milliseconds limit, int& status);

// Kills the child and its process group and takes the child's end. A child that the kernel cannot
// end (it hangs in a driver) is given up after a few seconds, so that the host goes on.
void KillChild(pid_t child);

#endif  // QOR_CLI_CHILDWAIT_H
