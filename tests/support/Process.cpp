#include "Process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "util/UniqueFd.h"

namespace qortest {
namespace {

using std::chrono::milliseconds;
using util::CUniqueFd;
using CClock = std::chrono::steady_clock;

constexpr int OUTPUT_FLAGS = O_WRONLY | O_TRUNC | O_CLOEXEC;

// Texts as exec takes them.
class CPointers {
public:
    explicit CPointers(CStrings texts) : m_Texts(std::move(texts)) {
        for (std::string& text : m_Texts) {
            m_Pointers.push_back(text.data());
        }
        m_Pointers.push_back(nullptr);
    }
    CPointers(const CPointers&) = delete;  // points into itself
    CPointers& operator=(const CPointers&) = delete;

    char* const* Get() const { return m_Pointers.data(); }

private:
    CStrings m_Texts;
    std::vector<char*> m_Pointers;
};

CStrings WordsOf(const CProgramRun& run) {
    CStrings words = {run.program};
    words.insert(words.end(), run.arguments.begin(), run.arguments.end());
    return words;
}

CStrings VariablesOf(const CProgramRun& run) {
    CStrings variables;
    for (const auto& [name, value] : run.environment.value_or(CEnvironment())) {
        variables.push_back(name + "=" + value);
    }
    return variables;
}

// Where one of the program's outputs goes, and where it is read.
struct COutput {
    CUniqueFd theirs;
    CUniqueFd ours;
};

COutput OpenPipe() {
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    return {CUniqueFd(ends[1]), CUniqueFd(ends[0])};
}

COutput OpenTerminal(unsigned short width) {
    ProvideTerminals();
    int ours = -1;
    int theirs = -1;
    const winsize size = {.ws_row = 24, .ws_col = width, .ws_xpixel = 0, .ws_ypixel = 0};
    EXPECT_EQ(openpty(&ours, &theirs, nullptr, nullptr, &size), 0);
    termios settings = {};
    EXPECT_EQ(tcgetattr(theirs, &settings), 0);
    settings.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
    EXPECT_EQ(tcsetattr(theirs, TCSANOW, &settings), 0);
    fcntl(ours, F_SETFD, FD_CLOEXEC);
    fcntl(theirs, F_SETFD, FD_CLOEXEC);
    return {CUniqueFd(theirs), CUniqueFd(ours)};
}

CUniqueFd OpenFile() {
    return CUniqueFd(memfd_create("output", MFD_CLOEXEC));
}

milliseconds TimeLeft(CClock::time_point deadline) {
    return std::max(std::chrono::duration_cast<milliseconds>(deadline - CClock::now()),
                    milliseconds(0));
}

bool IsReady(int fd, CClock::time_point deadline) {
    pollfd ready = {.fd = fd, .events = POLLIN, .revents = 0};
    int count = 0;
    while ((count = poll(&ready, 1, static_cast<int>(TimeLeft(deadline).count()))) < 0 &&
           errno == EINTR) {
    }
    return count == 1;
}

// Reads on to `text` until the end; false if that does not come in time. The end of a terminal is
// the error EIO, once the other side is closed everywhere.
bool ReadToEnd(int fd, const CProgramRun& run, CClock::time_point deadline, std::string& text) {
    std::array<char, 65536> buffer = {};
    while (IsReady(fd, deadline)) {
        const ssize_t count = read(fd, buffer.data(), buffer.size());
        if (count <= 0) {
            EXPECT_TRUE(count == 0 || errno == EIO) << run.program;
            return true;
        }
        text.append(buffer.data(), static_cast<size_t>(count));
        if (run.onTerminal) {
            run.onTerminal(text);
        }
    }
    return false;
}

std::string WholeOf(int file) {
    std::string text;
    std::array<char, 65536> buffer = {};
    ssize_t count = 0;
    while ((count = pread(file, buffer.data(), buffer.size(), static_cast<off_t>(text.size()))) >
           0) {
        text.append(buffer.data(), static_cast<size_t>(count));
    }
    return text;
}

// Nothing but what is safe in the child of a process with threads.
[[noreturn]] void Execute(const CProgramRun& run, char* const* words, char* const* variables,
                          const std::array<int, 3>& streams) {
    for (int stream = 0; stream < 3; ++stream) {
        if (dup2(streams[static_cast<size_t>(stream)], stream) < 0) {
            _exit(126);
        }
    }
    if ((!run.folder.empty() && chdir(run.folder.c_str()) != 0) || !Enter(run.kernel)) {
        _exit(126);
    }
    execvpe(words[0], words, variables);
    _exit(127);
}

pid_t Start(const CProgramRun& run, const std::array<int, 3>& streams) {
    const CPointers words(WordsOf(run));
    const CPointers variables(VariablesOf(run));
    char* const* const environment = run.environment ? variables.Get() : environ;
    const pid_t child = fork();
    if (child == 0) {
        Execute(run, words.Get(), environment, streams);
    }
    EXPECT_GT(child, 0) << "no process for " << run.program;
    return child;
}

// False if the program does not end in time. (An emulator may have no descriptors of processes:
// then the limit of the whole test has to do.)
bool Ends(pid_t child, CClock::time_point deadline) {
    const CUniqueFd process(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
    return !process.IsOpen() || IsReady(process.Get(), deadline);
}

CEnd Reap(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return EndOf(status);
}

}  // namespace

CEnd EndOf(int waitStatus) {
    CEnd end;
    if (WIFSIGNALED(waitStatus)) {
        end.signal = WTERMSIG(waitStatus);
    } else {
        end.status = WEXITSTATUS(waitStatus);
    }
    return end;
}

void ProvideTerminals() {
    if (access("/dev/pts/ptmx", F_OK) != 0) {
        EXPECT_EQ(mount("devpts", "/dev/pts", "devpts", 0, "newinstance,ptmxmode=0666"), 0);
    }
}

CEnd RunCommand(const CProgramRun& run) {
    const bool hasTerminal = run.terminal || run.errorTerminal;
    const CUniqueFd input(open(run.input.c_str(), O_RDONLY | O_CLOEXEC));
    const CUniqueFd outputFile(
        run.output.empty() ? OpenFile() : CUniqueFd(open(run.output.c_str(), OUTPUT_FLAGS)));
    const CUniqueFd errorFile = OpenFile();
    COutput read = hasTerminal ? OpenTerminal(run.terminalWidth) : OpenPipe();
    const auto deadline = CClock::now() + run.limit;
    const bool readsOutput = run.terminal || (!hasTerminal && run.output.empty());
    const pid_t child = Start(run, {input.Get(), (readsOutput ? read.theirs : outputFile).Get(),
                                    (run.errorTerminal ? read.theirs : errorFile).Get()});
    read.theirs.Close();
    std::string text;
    if (!ReadToEnd(read.ours.Get(), run, deadline, text) || !Ends(child, deadline)) {
        ADD_FAILURE() << run.program << " or what it started does not end; it wrote: " << text;
        kill(child, SIGKILL);
    }
    CEnd end = Reap(child);
    end.out = readsOutput ? text : run.output.empty() ? WholeOf(outputFile.Get()) : "";
    end.terminal = run.errorTerminal ? text : "";
    end.err = WholeOf(errorFile.Get());
    return end;
}

CEnd RunProgram(const CStrings& words, EKernel kernel) {
    return RunCommand({.program = words.front(),
                       .arguments = CStrings(words.begin() + 1, words.end()),
                       .kernel = kernel});
}

}  // namespace qortest
