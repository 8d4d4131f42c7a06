#include "cli/ChildStart.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string_view>

// clone() and sigaction() by the C library's second names. What a sanitizer of the host's puts in
// the place of the first ones is made for a child with a memory of its own: it would end the host,
// or forget the host's handlers.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
int __clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept;
int __sigaction(int signal, const struct sigaction* action, struct sigaction* old) noexcept;
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

constexpr mode_t OUTPUT_MODE = 0666;
constexpr const char* NULL_DEVICE = "/dev/null";
constexpr const char* OWN_DESCRIPTORS = "/proc/self/fd";
constexpr int FIRST_OTHER_DESCRIPTOR = STDERR_FILENO + 1;
// The deepest the child goes is the search for `sh`, which needs room for two paths.
constexpr size_t STACK_SIZE = size_t{64} * 1024;

// ---- in the child: no memory is asked for, no lock taken, nothing of the host's changed ----

struct CChild {
    const CChildSetup& setup;
    char* const* arguments;
    EChildStep failed = EChildStep::NONE;
    int error = 0;
};

// A handler of the host's must not run here, where it would work on the host's memory. Signals that
// cannot be changed stay as they are.
void TakeDefaultSignals() {
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal) {
        __sigaction(signal, &action, nullptr);
    }
}

// What was sent to the host's group before the child left it. A stop (Ctrl-Z) would keep the child
// for ever where nobody sends it on, and the host waits until it is the command.
void DropPendingSignals() {
    sigset_t all;
    sigfillset(&all);
    constexpr timespec AT_ONCE = {};
    while (sigtimedwait(&all, nullptr, &AT_ONCE) > 0) {
    }
}

bool Move(int from, int to) {
    if (from == to) {
        return true;
    }
    if (dup2(from, to) < 0) {
        return false;
    }
    close(from);
    return true;
}

// Never waits; what is written to the file waits as usual.
int OpenOutput(const char* path, EFileOpening opening) {
    int how = O_TRUNC;
    if (opening == EFileOpening::ANEW) {
        unlink(path);
        how = O_EXCL | O_NOFOLLOW;
    }
    const int file = open(path, O_WRONLY | O_CREAT | O_NONBLOCK | how, OUTPUT_MODE);
    if (file >= 0) {
        fcntl(file, F_SETFL, 0);
    }
    return file;
}

// Never made: a regular file of that name would fill up.
int OpenNullDevice(int flags) {
    return open(NULL_DEVICE, flags);
}

// A pipe that nobody can write to has the end of file at once, too.
int OpenEmptyInput() {
    const int device = OpenNullDevice(O_RDONLY);
    if (device >= 0) {
        return device;
    }
    std::array<int, 2> ends = {};
    if (pipe(ends.data()) != 0) {
        return -1;
    }
    close(ends[1]);
    return ends[0];
}

// 0 for the two entries that are no numbers.
int DescriptorOf(std::string_view name) {
    int number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    return number;
}

// `size` bytes of entries as the kernel lists them. True if there was anything to close.
bool CloseEntries(const char* entries, size_t size, int listing) {
    bool closed = false;
    for (size_t place = 0; place < size;) {
        const auto* entry = reinterpret_cast<const dirent64*>(entries + place);
        const int descriptor = DescriptorOf(entry->d_name);
        if (descriptor >= FIRST_OTHER_DESCRIPTOR && descriptor != listing) {
            close(descriptor);
            closed = true;
        }
        place += entry->d_reclen;
    }
    return closed;
}

// What the list holds; closing shifts it, so that some may be left. Nothing if it cannot be read.
std::optional<bool> CloseListedOnce() {
    const int listing = open(OWN_DESCRIPTORS, O_RDONLY | O_DIRECTORY);
    if (listing < 0) {
        return std::nullopt;
    }
    alignas(dirent64) std::array<char, 1024> entries = {};
    bool closed = false;
    long size = 0;
    while ((size = syscall(SYS_getdents64, listing, entries.data(), entries.size())) > 0) {
        closed |= CloseEntries(entries.data(), static_cast<size_t>(size), listing);
    }
    close(listing);
    return size == 0 ? std::optional(closed) : std::nullopt;
}

// Kernels before 5.9 close one descriptor at a time.
bool CloseListedDescriptors() {
    std::optional<bool> closed = true;
    while (closed == true) {
        closed = CloseListedOnce();
    }
    return closed.has_value();
}

bool CloseOtherDescriptors() {
    return syscall(SYS_close_range, FIRST_OTHER_DESCRIPTOR, ~0U, 0U) == 0 ||
           CloseListedDescriptors();
}

bool ArrangeErrors(EErrorOutput errors) {
    if (errors == EErrorOutput::WITH_OUTPUT) {
        return dup2(STDOUT_FILENO, STDERR_FILENO) >= 0;
    }
    const int device = OpenNullDevice(O_WRONLY);
    return device >= 0 && Move(device, STDERR_FILENO);
}

bool Seclude() {
    if (!CloseOtherDescriptors()) {
        return false;
    }
    const int input = OpenEmptyInput();
    return input >= 0 && Move(input, STDIN_FILENO);
}

void UnblockSignals() {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The first step that fails; none once the child is the command.
EChildStep DoSteps(const CChild& child) {
    const CChildSetup& setup = child.setup;
    setpgid(0, 0);
    TakeDefaultSignals();
    DropPendingSignals();
    if (setup.directory != nullptr && chdir(setup.directory) != 0) {
        return EChildStep::DIRECTORY;
    }
    const int output = setup.output != nullptr ? OpenOutput(setup.output, setup.opening)
                                               : OpenNullDevice(O_WRONLY);
    if (output < 0) {
        return EChildStep::OUTPUT;
    }
    if (!Move(output, STDOUT_FILENO) || !ArrangeErrors(setup.errors)) {
        return EChildStep::STREAMS;
    }
    if (!Seclude()) {
        return EChildStep::SECLUSION;
    }
    UnblockSignals();
    execvpe(child.arguments[0], child.arguments, setup.environment);
    return EChildStep::COMMAND;
}

int RunChild(void* argument) {
    CChild& child = *static_cast<CChild*>(argument);
    child.failed = DoSteps(child);
    child.error = errno;
    return EXIT_FAILURE;
}

// ---- in the host ----

class CStack {
public:
    CStack()
        : m_Memory(mmap(nullptr, STACK_SIZE, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0)) {}
    ~CStack() {
        if (IsValid()) {
            munmap(m_Memory, STACK_SIZE);
        }
    }
    CStack(const CStack&) = delete;  // one piece of memory, one owner
    CStack& operator=(const CStack&) = delete;

    bool IsValid() const { return m_Memory != MAP_FAILED; }
    // A stack grows downwards.
    void* Begin() const { return static_cast<char*>(m_Memory) + STACK_SIZE; }

private:
    void* m_Memory;
};

// Neither a signal handler nor a cancellation of the host's reaches this thread while it lives,
// since both would reach the child, too. errno stays as it is.
class CUndisturbed {
public:
    CUndisturbed() {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_SETMASK, &all, &m_Mask);
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_CancelState);
    }
    ~CUndisturbed() {
        const int error = errno;
        pthread_setcancelstate(m_CancelState, nullptr);
        sigprocmask(SIG_SETMASK, &m_Mask, nullptr);
        errno = error;
    }
    CUndisturbed(const CUndisturbed&) = delete;  // put back once
    CUndisturbed& operator=(const CUndisturbed&) = delete;

private:
    sigset_t m_Mask = {};
    int m_CancelState = 0;
};

// The child's process id; -1 with errno if there can be none.
pid_t Clone(CChild& child) {
    const CStack stack;
    if (!stack.IsValid()) {
        return -1;
    }
    const CUndisturbed undisturbed;
    return __clone(RunChild, stack.Begin(), CLONE_VM | CLONE_VFORK | SIGCHLD, &child);
}

void Reap(pid_t child) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

CChildStart StartChild(const std::string& command, const CChildSetup& setup) {
    std::string shell = "sh";
    std::string option = "-c";
    std::string text = command;
    const std::array<char*, 4> arguments = {shell.data(), option.data(), text.data(), nullptr};
    CChild child = {setup, arguments.data()};
    const pid_t process = Clone(child);
    if (process < 0) {
        return {-1, EChildStep::PROCESS, errno};
    }
    if (child.failed != EChildStep::NONE) {
        Reap(process);
        return {-1, child.failed, child.error};
    }
    return {process};
}
