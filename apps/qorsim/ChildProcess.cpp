#include "ChildProcess.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <initializer_list>

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
            if (waitpid(child, &status, WNOHANG) == child) {
                return ExitStatus(status);
            }
        } else if (number > 0) {
            HandOn(signal, child);
        }
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
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        return ReportFailure("start", command.front());
    }
    if (child == 0) {
        Execute(command, mask);
    }
    return Wait(child, awaited);
}

}  // namespace qorsim
