#include "cli/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

#include "cli/UniqueFd.h"

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr mode_t OUTPUT_MODE = 0666;
constexpr const char* NULL_DEVICE = "/dev/null";
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
void Pause(const CUniqueFd& process, milliseconds duration) {
    if (!process.IsValid()) {
        duration = std::min(duration, POLLING_INTERVAL);
    }
    pollfd entry = {process.Get(), POLLIN, 0};
    poll(&entry, 1, static_cast<int>(duration.count()));
}

}  // namespace

CChildSetup::CChildSetup() : m_Actions{}, m_Attributes{} {
    Note(posix_spawn_file_actions_init(&m_Actions));
    Note(posix_spawnattr_init(&m_Attributes));
    sigset_t all;
    sigset_t none;
    sigfillset(&all);
    sigemptyset(&none);
    Note(posix_spawnattr_setsigdefault(&m_Attributes, &all));
    Note(posix_spawnattr_setsigmask(&m_Attributes, &none));
    Note(posix_spawnattr_setpgroup(&m_Attributes, 0));
    Note(posix_spawnattr_setflags(
        &m_Attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP));
}

CChildSetup::~CChildSetup() {
    posix_spawnattr_destroy(&m_Attributes);
    posix_spawn_file_actions_destroy(&m_Actions);
}

void CChildSetup::Note(int error) {
    if (m_Error == 0) {
        m_Error = error;
    }
}

void CChildSetup::ChangeDirectory(const std::string& directory) {
    Note(posix_spawn_file_actions_addchdir_np(&m_Actions, directory.c_str()));
}

void CChildSetup::OpenForWriting(int target, const std::string& path) {
    Note(posix_spawn_file_actions_addopen(&m_Actions, target, path.c_str(),
                                          O_WRONLY | O_CREAT | O_TRUNC, OUTPUT_MODE));
}

// Never created: where the device is missing, the command is not run.
void CChildSetup::Discard(int target) {
    Note(posix_spawn_file_actions_addopen(&m_Actions, target, NULL_DEVICE, O_WRONLY, 0));
}

void CChildSetup::Duplicate(int source, int target) {
    Note(posix_spawn_file_actions_adddup2(&m_Actions, source, target));
}

int CChildSetup::Start(const std::string& command, char* const* environment, pid_t& child) {
    Note(posix_spawn_file_actions_addopen(&m_Actions, STDIN_FILENO, NULL_DEVICE, O_RDONLY, 0));
    Note(posix_spawn_file_actions_addclosefrom_np(&m_Actions, STDERR_FILENO + 1));
    if (m_Error != 0) {
        return m_Error;
    }
    std::string shell = "sh";
    std::string option = "-c";
    std::string text = command;
    char* const arguments[] = {shell.data(), option.data(), text.data(), nullptr};
    return posix_spawnp(&child, shell.c_str(), &m_Actions, &m_Attributes, arguments, environment);
}

pid_t LookAtChild(pid_t child, int& status) {
    pid_t changed = 0;
    do {
        changed = waitpid(child, &status, WNOHANG | WUNTRACED | WCONTINUED);
    } while (changed < 0 && errno == EINTR);
    return changed;
}

EChildWait WaitForChild(pid_t child, milliseconds limit, int& status) {
    const CUniqueFd process(OpenProcessDescriptor(child));
    const steady_clock::time_point deadline = steady_clock::now() + limit;
    for (;;) {
        const pid_t changed = LookAtChild(child, status);
        if (changed != 0) {
            return changed == child ? EChildWait::Changed : EChildWait::Failed;
        }
        const auto remaining = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
        if (remaining <= milliseconds::zero()) {
            return EChildWait::TimedOut;
        }
        Pause(process, std::min(remaining, STOP_CHECK_INTERVAL));
    }
}

void KillChildGroup(pid_t child) {
    kill(-child, SIGKILL);
    const steady_clock::time_point deadline = steady_clock::now() + REAP_LIMIT;
    const timespec interval = {0, std::chrono::nanoseconds(REAP_INTERVAL).count()};
    while (waitpid(child, nullptr, WNOHANG) == 0 && steady_clock::now() < deadline) {
        nanosleep(&interval, nullptr);
    }
}
