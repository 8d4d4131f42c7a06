#include "host/Interrupt.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string_view>

#include "host/Progress.h"

// Everything down to CInterruptGuard runs in a signal handler: system calls, and no memory.

namespace qorctl {
namespace {

constexpr const char* CHILDREN = "/proc/thread-self/children";
constexpr std::string_view RESULT_FILE_END = "MngSrvRaid.txt";
constexpr int SIGNAL_STATUS = 128;
// The plug-in runs one tool at a time.
constexpr size_t MAX_CHILDREN = 8;
constexpr int PAUSE = 10;        // milliseconds
constexpr int MAX_PAUSES = 500;  // five seconds

struct CChild {
    pid_t pid = -1;
    std::array<char, PATH_MAX> output = {};  // the file that its standard output is; may be empty
};

constinit std::array<CChild, MAX_CHILDREN> s_Children = {};
using CLast = void (*)();
constinit CLast s_Last = nullptr;

// The numbers, separated by blanks, that the kernel lists.
size_t ListChildren() {
    std::array<char, 256> text = {};
    const int fd = open(CHILDREN, O_RDONLY | O_CLOEXEC);
    const ssize_t size = fd < 0 ? 0 : read(fd, text.data(), text.size());
    close(fd);
    const char* at = text.data();
    const char* end = at + (size > 0 ? size : 0);
    size_t count = 0;
    while (at < end && count < MAX_CHILDREN) {
        const std::from_chars_result result = std::from_chars(at, end, s_Children[count].pid);
        if (result.ec != std::errc()) {
            break;
        }
        ++count;
        at = result.ptr + 1;
    }
    return count;
}

void NoteOutput(CChild& child) {
    constexpr std::string_view HEAD = "/proc/";
    constexpr std::string_view TAIL = "/fd/1";
    std::array<char, 64> link = {};
    char* at = HEAD.copy(link.data(), HEAD.size()) + link.data();
    at = std::to_chars(at, link.data() + link.size() - TAIL.size() - 1, child.pid).ptr;
    TAIL.copy(at, TAIL.size());
    const ssize_t size = readlink(link.data(), child.output.data(), child.output.size() - 1);
    child.output[size > 0 ? static_cast<size_t>(size) : 0] = '\0';
}

void KillChild(CChild& child) {
    NoteOutput(child);
    kill(getpgid(child.pid) == child.pid ? -child.pid : child.pid, SIGKILL);
}

// A child that the kernel cannot end, it hangs in a driver, is given up, as the plug-in does.
void ReapChildren() {
    for (int pauses = 0; pauses < MAX_PAUSES;) {
        const pid_t child = waitpid(-1, nullptr, WNOHANG);
        if (child < 0 && errno != EINTR) {
            return;
        }
        if (child == 0) {
            poll(nullptr, 0, PAUSE);
            ++pauses;
        }
    }
}

void RemoveOutput(const CChild& child) {
    if (std::string_view(child.output.data()).ends_with(RESULT_FILE_END)) {
        unlink(child.output.data());
    }
}

void OnSignal(int number) {
    const size_t count = ListChildren();
    for (size_t i = 0; i < count; ++i) {
        KillChild(s_Children[i]);
    }
    ReapChildren();
    for (size_t i = 0; i < count; ++i) {
        RemoveOutput(s_Children[i]);
    }
    CProgress::ClearLineInSignalHandler();
    if (s_Last != nullptr) {
        s_Last();
    }
    _exit(SIGNAL_STATUS + number);
}

}  // namespace

CInterruptGuard::CInterruptGuard(void (*last)()) {
    s_Last = last;
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    for (const int number : INTERRUPT_SIGNALS) {
        sigaddset(&action.sa_mask, number);
    }
    for (size_t i = 0; i < INTERRUPT_SIGNALS.size(); ++i) {
        sigaction(INTERRUPT_SIGNALS[i], nullptr, &m_Before[i]);
        if (m_Before[i].sa_handler != SIG_IGN) {
            sigaction(INTERRUPT_SIGNALS[i], &action, nullptr);
        }
    }
}

CInterruptGuard::~CInterruptGuard() {
    for (size_t i = 0; i < INTERRUPT_SIGNALS.size(); ++i) {
        sigaction(INTERRUPT_SIGNALS[i], &m_Before[i], nullptr);
    }
}

}  // namespace qorctl
