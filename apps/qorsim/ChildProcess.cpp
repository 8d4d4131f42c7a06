#include "ChildProcess.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>

#include "Files.h"

namespace qorsim {
namespace {

constexpr int NOT_FOUND = 127;
constexpr int NOT_RUNNABLE = 126;
constexpr int SIGNAL_BASE = 128;

int ReportFailure(const char* what, const std::string& name) {
    const int error = errno;
    std::fprintf(stderr, "qorsim: cannot %s %s: %s\n", what, name.c_str(), std::strerror(error));
    return error == ENOENT ? NOT_FOUND : NOT_RUNNABLE;
}

[[noreturn]] void Execute(const std::vector<std::string>& command, const sigset_t& mask) {
    // A simulated server without its keeper would stay mounted until the command ends by itself.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    _exit(ReportFailure("run", command.front()));
}

// A signal that the terminal sends reaches the command by itself, so that only one that a process
// sent is handed on.
void HandOn(const siginfo_t& signal, pid_t child) {
    if (signal.si_code <= 0) {
        kill(child, signal.si_signo);
    }
}

int ExitStatus(int status) {
    return WIFSIGNALED(status) ? SIGNAL_BASE + WTERMSIG(status) : WEXITSTATUS(status);
}

int Wait(pid_t child, const sigset_t& awaited) {
    for (;;) {
        siginfo_t signal = {};
        const int number = sigwaitinfo(&awaited, &signal);
        if (number == SIGCHLD) {
            int status = 0;
            for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
                if (ended == child) {
                    return ExitStatus(status);
                }
            }
        } else if (number > 0) {
            HandOn(signal, child);
        }
    }
}

// The parent by "/proc/PID/stat": behind the name, which is in brackets and may hold anything,
// stand the state and the parent. 0 when the process has gone.
pid_t ParentOf(const std::string& pid) {
    std::string error;
    const std::string stat = ReadFile("/proc/" + pid + "/stat", error).value_or("");
    const size_t bracket = stat.rfind(')');
    constexpr size_t STATE_LENGTH = 4;
    return bracket == std::string::npos || bracket + STATE_LENGTH > stat.size()
               ? 0
               : static_cast<pid_t>(
                     std::strtol(stat.c_str() + bracket + STATE_LENGTH, nullptr, 10));
}

// Returns whether there is a child that dies of it.
bool KillChildren() {
    bool killed = false;
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", failure)) {
        const std::string name = entry.path().filename();
        const auto pid = static_cast<pid_t>(std::strtol(name.c_str(), nullptr, 10));
        if (pid > 0 && ParentOf(name) == getpid()) {
            killed = kill(pid, SIGKILL) == 0 || killed;
        }
    }
    return killed;
}

// Ends what the command has left behind. Those whose parents end become children of this process.
void EndDescendants() {
    while (KillChildren() && waitpid(-1, nullptr, 0) > 0) {
    }
}

}  // namespace

int RunAndWait(const std::vector<std::string>& command) {
    std::signal(SIGCHLD, SIG_DFL);  // an inherited "ignore" would throw the exit status away
    sigset_t awaited;
    sigset_t mask;
    sigemptyset(&awaited);
    for (const int signal : {SIGCHLD, SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        sigaddset(&awaited, signal);
    }
    sigprocmask(SIG_BLOCK, &awaited, &mask);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        return ReportFailure("start", command.front());
    }
    if (child == 0) {
        Execute(command, mask);
    }
    const int status = Wait(child, awaited);
    EndDescendants();
    return status;
}

}  // namespace qorsim
