#include "QorctlProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "PrivateServerFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr int OUTPUT_FLAGS = O_WRONLY | O_CREAT | O_TRUNC;

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::string ReadTerminal(int fd, const CQorctlRun& run) {
    std::string text;
    std::array<char, 4096> buffer = {};
    ssize_t count = 0;
    // The end of a terminal is the error EIO, once the other side is closed everywhere.
    while ((count = read(fd, buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<size_t>(count));
        if (run.onTerminal) {
            run.onTerminal(text);
        }
    }
    EXPECT_EQ(errno, EIO);
    return text;
}

// Both ends are closed in programs that are started, but for what the actions hand them.
struct CTerminalPair {
    int ours = -1;
    int theirs = -1;
};

CTerminalPair OpenTerminal(unsigned short width) {
    ProvideTerminals();
    CTerminalPair pair;
    const winsize size = {.ws_row = 24, .ws_col = width, .ws_xpixel = 0, .ws_ypixel = 0};
    EXPECT_EQ(openpty(&pair.ours, &pair.theirs, nullptr, nullptr, &size), 0);
    termios settings = {};
    EXPECT_EQ(tcgetattr(pair.theirs, &settings), 0);
    settings.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
    EXPECT_EQ(tcsetattr(pair.theirs, TCSANOW, &settings), 0);
    fcntl(pair.ours, F_SETFD, FD_CLOEXEC);
    fcntl(pair.theirs, F_SETFD, FD_CLOEXEC);
    return pair;
}

int WaitFor(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

pid_t Spawn(const CQorctlRun& run, const posix_spawn_file_actions_t& actions) {
    const std::string program = run.program.empty() ? QORCTL_PROGRAM : run.program.string();
    std::vector<std::string> arguments = {program};
    arguments.insert(arguments.end(), run.arguments.begin(), run.arguments.end());
    std::vector<std::string> environment;
    for (const auto& [name, value] : run.environment) {
        environment.push_back(name + "=" + value);
    }
    pid_t child = -1;
    EXPECT_EQ(posix_spawn(&child, program.c_str(), &actions, nullptr, Pointers(arguments).data(),
                          Pointers(environment).data()),
              0);
    return child;
}

}  // namespace

void ProvideTerminals() {
    if (access("/dev/pts/ptmx", F_OK) != 0) {
        EXPECT_EQ(mount("devpts", "/dev/pts", "devpts", 0, "newinstance,ptmxmode=0666"), 0);
    }
}

CQorctlOutcome RunQorctl(const fs::path& folder, const CQorctlRun& run) {
    const std::string out = run.outputPath.empty() ? (folder / "out").string() : run.outputPath;
    const std::string err = (folder / "err").string();
    const bool hasTerminal = run.terminal || run.errorTerminal;
    const CTerminalPair terminal = hasTerminal ? OpenTerminal(run.terminalWidth) : CTerminalPair{};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, run.inputPath.c_str(), O_RDONLY, 0);
    if (run.terminal) {
        posix_spawn_file_actions_adddup2(&actions, terminal.theirs, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), OUTPUT_FLAGS, 0600);
    }
    if (run.errorTerminal) {
        posix_spawn_file_actions_adddup2(&actions, terminal.theirs, STDERR_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), OUTPUT_FLAGS, 0600);
    }
    const pid_t child = Spawn(run, actions);
    posix_spawn_file_actions_destroy(&actions);

    CQorctlOutcome outcome;
    if (hasTerminal) {
        close(terminal.theirs);
        (run.terminal ? outcome.out : outcome.terminal) = ReadTerminal(terminal.ours, run);
        close(terminal.ours);
    }
    outcome.status = WaitFor(child);
    if (!run.terminal && run.outputPath.empty()) {
        outcome.out = ReadFile(out);
    }
    if (!run.errorTerminal) {
        outcome.err = ReadFile(err);
    }
    return outcome;
}

}  // namespace qortest
