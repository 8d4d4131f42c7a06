// Starting a shell command as a child process, and waiting for it.
//
// posix_spawn is used because its cost does not grow with the host's memory and because it is safe
// in a process with many threads. The child gets default signal dispositions, an empty signal mask,
// a process group of its own, standard input from /dev/null and no descriptor but 0, 1 and 2. The
// host's signal handlers, mask, environment and working directory are not touched.
#ifndef QOR_CLI_CHILDPROCESS_H
#define QOR_CLI_CHILDPROCESS_H

#include <spawn.h>
#include <sys/types.h>

#include <chrono>
#include <string>

// How one child is to be set up. Steps happen in the child in the order in which they were added.
// The first step that cannot be recorded makes Start() fail with its error number.
class CChildSetup {
public:
    CChildSetup();
    ~CChildSetup();
    CChildSetup(const CChildSetup&) = delete;  // owns the C library's records
    CChildSetup& operator=(const CChildSetup&) = delete;

    void ChangeDirectory(const std::string& directory);
    void OpenForWriting(int target, const std::string& path);  // created or emptied
    void Discard(int target);                                  // to the null device
    void Duplicate(int source, int target);

    // Runs `sh -c command` with `environment`. 0 and the child's process id, or the error number of
    // the first step that failed, here or in the child; there is no child then.
    int Start(const std::string& command, char* const* environment, pid_t& child);

private:
    void Note(int error);

    posix_spawn_file_actions_t m_Actions;
    posix_spawnattr_t m_Attributes;
    int m_Error = 0;
};

enum class EChildWait {
    Changed,   // the child ended, was stopped or went on; `status` is as waitpid gives it
    TimedOut,  // the limit passed; the child runs on
    Failed     // there is no such child: somebody else took its end
};

// Long enough to be no limit.
inline constexpr std::chrono::milliseconds NO_TIME_LIMIT = std::chrono::hours(24L * 365 * 100);

// One look at the child, without waiting: its process id if it ended, was stopped or went on, with
// `status` as waitpid gives it; 0 if nothing happened; -1 if there is no such child.
pid_t LookAtChild(pid_t child, int& status);

// Waits for the child's end, stop or continuation for at most `limit`. The end is seen at once; a
// stop within half a second. Interrupted waits go on.
EChildWait WaitForChild(pid_t child, std::chrono::milliseconds limit, int& status);

// Kills the child's process group and takes the child's end. A child that the kernel cannot end
// (it hangs in a driver) is given up after a few seconds, so that the host goes on.
void KillChildGroup(pid_t child);

#endif  // QOR_CLI_CHILDPROCESS_H
