#include "Injection.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <utility>

namespace {

using qortest::CFailure;
using qortest::EDuration;

// One failure that is to come.
class CStriker {
public:
    CStriker() = default;
    CStriker(const CFailure& failure, long successes, EDuration duration)
        : m_Failure(failure), m_Successes(successes), m_Duration(duration) {}

    bool IsFor(const char* function) const {
        return m_Failure.function != nullptr && std::strcmp(m_Failure.function, function) == 0;
    }
    bool IsFor(const char* function, int error) const {
        return IsFor(function) && m_Failure.error == error;
    }
    int Error() const { return m_Failure.error; }
    long Strikes() const { return m_Strikes; }

    // Counts the call of its function; true if it is to fail.
    bool Strikes(const char* function) {
        if (!IsFor(function)) {
            return false;
        }
        if (m_Successes > 0) {
            --m_Successes;
            return false;
        }
        if (m_Strikes > 0 && m_Duration == EDuration::ONCE) {
            return false;
        }
        ++m_Strikes;
        return true;
    }

private:
    CFailure m_Failure;
    long m_Successes = 0;
    EDuration m_Duration = EDuration::ONCE;
    long m_Strikes = 0;
};

CStriker effect;
CStriker cause;
std::vector<qortest::CCall> calls;
bool isRecording = false;
long liveBlocks = 0;

// What the record allocates is not the request's.
void Record(const char* function, const char* text, int error) {
    if (isRecording) {
        const int callerErrno = errno;
        isRecording = false;
        calls.push_back({function, text, error});
        isRecording = true;
        errno = callerErrno;
    }
}

// Counts the call; true, with errno set, if it is to fail.
bool Strikes(const char* function) {
    if (!isRecording) {
        return false;
    }
    for (CStriker* striker : {&effect, &cause}) {
        if (striker->Strikes(function)) {
            Record(function, "", striker->Error());
            errno = striker->Error();
            return true;
        }
    }
    return false;
}

int Recorded(const char* function, const char* text, int result) {
    Record(function, text, result < 0 ? errno : 0);
    return result;
}

template <class Object>
Object* Recorded(const char* function, const char* text, Object* result) {
    Record(function, text, result == nullptr ? errno : 0);
    return result;
}

// Of an operation on a descriptor, only a failure.
template <class Number>
Number RecordedOf(const char* function, int fd, Number result) {
    if (result < 0 && isRecording) {
        const int error = errno;
        std::array<char, 4096> path = {};
        std::array<char, 32> link = {};
        std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", fd);
        const ssize_t length = readlink(link.data(), path.data(), path.size() - 1);
        path[length > 0 ? static_cast<size_t>(length) : 0] = '\0';
        errno = error;
        Record(function, path.data(), error);
    }
    return result;
}

// The definition behind this program's own; `own` gives the type.
template <class Function>
Function* Real(Function& /*own*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The system call behind stat(), lstat() and fstat(), under their names.
template <class Call>
long Status(const Call& real, int fd, const char* path, int flags) {
    if ((flags & AT_EMPTY_PATH) != 0) {
        return RecordedOf("fstat", fd, Strikes("fstat") ? -1 : real());
    }
    if ((flags & AT_SYMLINK_NOFOLLOW) != 0) {
        return Strikes("lstat") ? -1 : real();
    }
    return Recorded("stat", path, Strikes("stat") ? -1 : static_cast<int>(real()));
}

#if QORTEST_MALLOC_FAILS
bool IsOurs(const void* code) {
    Dl_info object = {};
    return dladdr(code, &object) != 0 && std::strstr(object.dli_fname, "/libqor_") != nullptr;
}
#endif

}  // namespace

namespace qortest {

const std::vector<CFailingFunction>& FailingFunctions() {
    constexpr const char* STORAGE = "GetStorageInfo";
    constexpr const char* EXEC = "KRZExecCli";
    constexpr const char* LIST = "GetRAIDInfoWithoutToolAndDeviceList";
    static const std::vector<CFailingFunction> functions = {
        {"open", {EACCES, EMFILE, ENOENT, ENOSPC, EIO, EINTR, ENOMEM}, STORAGE},
        {"fopen", {EACCES, EMFILE, ENOENT, EIO, EINTR, ENOMEM}, STORAGE},
        {"read", {EIO, EINTR, EISDIR, ONE_BYTE}, STORAGE},
        {"pread", {EIO, EINTR, ONE_BYTE}, STORAGE},
        {"write", {ENOSPC, EIO, EINTR, EPIPE, EFBIG, ONE_BYTE}, STORAGE},
        {"lseek", {EINVAL, EOVERFLOW}, "GetPDInfo"},
        {"fsync", {EIO, ENOSPC}, LIST},
        {"close", {EIO, EINTR}, STORAGE},
        {"fclose", {EIO}, STORAGE},
        {"fcntl", {EMFILE, EINVAL}, STORAGE},
        {"stat", {EACCES, EIO, ENOENT, ENOMEM}, STORAGE},
        {"lstat", {EACCES, EIO, ENOENT, ENOMEM}, STORAGE},
        {"fstat", {EIO, ENOMEM}, STORAGE},
        {"mkdir", {EACCES, ENOSPC, EIO, EROFS, ENOENT}, STORAGE},
        {"getrandom", {EAGAIN, ENOSYS, EINTR}, LIST},
        {"openat", {EACCES, EEXIST, EMFILE, ENOSPC, EIO}, LIST},
        {"renameat", {EACCES, ENOSPC, EIO}, LIST},
        {"unlink", {EACCES, EIO, EROFS, EBUSY}, STORAGE},
        {"unlinkat", {EACCES, EIO, EROFS, EBUSY}, LIST, {"renameat", EIO}},
        {"opendir", {EACCES, EMFILE, ENOENT, ENOMEM}, LIST},
        {"readdir", {EIO, ENOENT}, LIST},
        {"mmap", {ENOMEM}, STORAGE},  // the child's stack
        {"__clone", {EAGAIN, ENOMEM}, STORAGE},
        {"chdir", {ENOENT, EACCES}, LIST},
        {"dup2", {EMFILE, EBADF}, STORAGE},
        {"execvpe", {ENOENT, EACCES, E2BIG, ENOMEM, EAGAIN}, STORAGE},
        {"syscall", {ENOSYS, EMFILE, ENOMEM, EPERM}, STORAGE},  // descriptors, and one of a process
        {"waitpid", {EINTR, ECHILD, STOPPED}, STORAGE},
        {"poll", {EINTR, ENOMEM}, STORAGE},
        {"kill", {EPERM, ESRCH}, EXEC, {"waitpid", STOPPED}},
        {"nanosleep", {EINTR}, EXEC, {"waitpid", STOPPED}},
        {"clock_nanosleep", {EINTR}, EXEC, {"__clone", EAGAIN}},
        {"sigtimedwait", {EINTR, EAGAIN}, EXEC, {"write", EPIPE}},
#if QORTEST_MALLOC_FAILS
        {"malloc", {ENOMEM}, EXEC},  // for a trace line of more than 1 KiB
#endif
    };
    return functions;
}

void Arm(const CInjection& injection) {
    effect =
        CStriker({injection.function, injection.error}, injection.successes, injection.duration);
    cause = CStriker(injection.cause, 0, injection.duration);
    isRecording = true;
}

void Arm() {
    Arm({nullptr, 0});
}

CRecord Disarm() {
    isRecording = false;
    return {effect.Strikes(), std::exchange(calls, {})};
}

long LiveBlocks() {
    return liveBlocks;
}

}  // namespace qortest

void* operator new(std::size_t size) {
    void* block = Strikes(qortest::ALLOCATION) ? nullptr : std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++liveBlocks;
    return block;
}

void operator delete(void* block) noexcept {
    liveBlocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    operator delete(block);
}

extern "C" {

int open(const char* path, int flags, ...) {
    static const auto real = Real(open, "open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Recorded("open", path, Strikes("open") ? -1 : real(path, flags, mode));
}

// The C++ library calls one of the two, and one of lseek() and lseek64(), as it was built: with an
// offset of 64 bits they are the same.
FILE* fopen(const char* path, const char* mode) {
    static const auto real = Real(fopen, "fopen");
    return Recorded("fopen", path, Strikes("fopen") ? nullptr : real(path, mode));
}

FILE* fopen64(const char* path, const char* mode) {
    return fopen(path, mode);
}

ssize_t read(int fd, void* buffer, size_t size) {
    static const auto real = Real(read, "read");
    if (!Strikes("read")) {
        return RecordedOf("read", fd, real(fd, buffer, size));
    }
    const bool isShort = errno == qortest::ONE_BYTE;
    return RecordedOf("read", fd, isShort ? real(fd, buffer, std::min<size_t>(size, 1)) : -1);
}

ssize_t pread(int fd, void* buffer, size_t size, off_t offset) {
    static const auto real = Real(pread, "pread");
    if (!Strikes("pread")) {
        return RecordedOf("pread", fd, real(fd, buffer, size, offset));
    }
    const bool isShort = errno == qortest::ONE_BYTE;
    const size_t part = std::min<size_t>(size, 1);
    return RecordedOf("pread", fd, isShort ? real(fd, buffer, part, offset) : -1);
}

ssize_t write(int fd, const void* buffer, size_t size) {
    static const auto real = Real(write, "write");
    if (!Strikes("write")) {
        return real(fd, buffer, size);
    }
    return errno == qortest::ONE_BYTE ? real(fd, buffer, std::min<size_t>(size, 1)) : -1;
}

off_t lseek(int fd, off_t offset, int whence) noexcept {
    static const auto real = Real(lseek, "lseek");
    return Strikes("lseek") ? -1 : real(fd, offset, whence);
}

off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
    return lseek(fd, offset, whence);
}

int fsync(int fd) {
    static const auto real = Real(fsync, "fsync");
    return Strikes("fsync") ? -1 : real(fd);
}

// As the kernel does: the descriptor is gone, whatever close() says.
int close(int fd) {
    static const auto real = Real(close, "close");
    const int result = real(fd);
    return Strikes("close") ? -1 : result;
}

int fclose(FILE* file) {
    static const auto real = Real(fclose, "fclose");
    const int result = real(file);
    return Strikes("fclose") ? EOF : result;
}

// Passes on what the caller may not have given, as the kernel does.
__attribute__((no_sanitize("address"))) int fcntl(int fd, int command, ...) {
    static const auto real = Real(fcntl, "fcntl");
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return Strikes("fcntl") ? -1 : real(fd, command, argument);
}

int mkdir(const char* path, mode_t mode) noexcept {
    static const auto real = Real(mkdir, "mkdir");
    return Recorded("mkdir", path, Strikes("mkdir") ? -1 : real(path, mode));
}

ssize_t getrandom(void* bytes, size_t size, unsigned int flags) {
    static const auto real = Real(getrandom, "getrandom");
    return Strikes("getrandom") ? -1 : real(bytes, size, flags);
}

int openat(int directory, const char* path, int flags, ...) {
    static const auto real = Real(openat, "openat");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Strikes("openat") ? -1 : real(directory, path, flags, mode);
}

int renameat(int from, const char* old, int to, const char* name) noexcept {
    static const auto real = Real(renameat, "renameat");
    return Strikes("renameat") ? -1 : real(from, old, to, name);
}

int unlinkat(int directory, const char* path, int flags) noexcept {
    static const auto real = Real(unlinkat, "unlinkat");
    return Strikes("unlinkat") ? -1 : real(directory, path, flags);
}

int unlink(const char* path) noexcept {
    static const auto real = Real(unlink, "unlink");
    return Strikes("unlink") ? -1 : real(path);
}

DIR* opendir(const char* path) {
    static const auto real = Real(opendir, "opendir");
    return Strikes("opendir") ? nullptr : real(path);
}

dirent* readdir(DIR* directory) {
    static const auto real = Real(readdir, "readdir");
    return Strikes("readdir") ? nullptr : real(directory);
}

void* mmap(void* address, size_t size, int protection, int flags, int fd, off_t offset) noexcept {
    static const auto real = Real(mmap, "mmap");
    return Strikes("mmap") ? MAP_FAILED : real(address, size, protection, flags, fd, offset);
}

int __clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept {
    static const auto real =
        reinterpret_cast<int (*)(int (*)(void*), void*, int, void*)>(dlsym(RTLD_NEXT, "__clone"));
    return Strikes("__clone") ? -1 : real(function, stack, flags, argument);
}

// The child shares the memory of this program, the record included, until it is the command.

int chdir(const char* path) noexcept {
    static const auto real = Real(chdir, "chdir");
    return Strikes("chdir") ? -1 : real(path);
}

int dup2(int from, int to) noexcept {
    static const auto real = Real(dup2, "dup2");
    return Strikes("dup2") ? -1 : real(from, to);
}

// Does not return when it succeeds, so it is recorded before.
int execvpe(const char* file, char* const* arguments, char* const* environment) noexcept {
    static const auto real = Real(execvpe, "execvpe");
    const int error = Strikes("execvpe") ? errno : 0;
    Record("execvpe", arguments[2], error);
    errno = error;
    return error != 0 ? -1 : real(file, arguments, environment);
}

// Likewise.
__attribute__((no_sanitize("address"))) long syscall(long number, ...) noexcept {
    static const auto real = Real(syscall, "syscall");
    va_list arguments;
    va_start(arguments, number);
    long values[6];
    for (long& value : values) {
        value = va_arg(arguments, long);
    }
    va_end(arguments);
    const auto call = [&] {
        return real(number, values[0], values[1], values[2], values[3], values[4], values[5]);
    };
    if (number == SYS_gettid) {
        return call();
    }
    if (number == SYS_newfstatat) {
        return Status(call, static_cast<int>(values[0]), reinterpret_cast<const char*>(values[1]),
                      static_cast<int>(values[3]));
    }
    if (!Strikes("syscall")) {
        return call();
    }
    if (number == SYS_getdents64) {
        Record("getdents64", "", errno);
    }
    return -1;
}

// "No such child" is what the host's own waiting leads to: it has taken the child's end.
pid_t waitpid(pid_t child, int* status, int options) {
    static const auto real = Real(waitpid, "waitpid");
    static bool isKilledOneRunning = false;
    const bool asksForStops = (options & WUNTRACED) != 0;
    if (isKilledOneRunning && !asksForStops) {
        isKilledOneRunning = false;
        return 0;
    }
    const bool tellsStops =
        effect.IsFor("waitpid", qortest::STOPPED) || cause.IsFor("waitpid", qortest::STOPPED);
    if ((tellsStops && !asksForStops) || !Strikes("waitpid")) {
        return real(child, status, options);
    }
    const int error = errno;
    if (error == qortest::STOPPED) {
        isKilledOneRunning = true;
        *status = W_STOPCODE(SIGSTOP);
        return child;
    }
    if (error == ECHILD) {
        real(child, nullptr, 0);
    }
    errno = error;
    return -1;
}

int kill(pid_t process, int number) noexcept {
    static const auto real = Real(kill, "kill");
    return Strikes("kill") ? -1 : real(process, number);
}

int nanosleep(const timespec* duration, timespec* rest) {
    static const auto real = Real(nanosleep, "nanosleep");
    return Strikes("nanosleep") ? -1 : real(duration, rest);
}

int poll(pollfd* entries, nfds_t count, int timeout) {
    static const auto real = Real(poll, "poll");
    return Strikes("poll") ? -1 : real(entries, count, timeout);
}

int sigtimedwait(const sigset_t* signals, siginfo_t* information, const timespec* timeout) {
    static const auto real = Real(sigtimedwait, "sigtimedwait");
    return Strikes("sigtimedwait") ? -1 : real(signals, information, timeout);
}

int clock_nanosleep(clockid_t, int, const timespec*, timespec*) {
    return Strikes("clock_nanosleep") ? errno : 0;
}

#if QORTEST_MALLOC_FAILS
// The C library's own, which dlsym() may need itself; glibc gave it the reserved name.
void* __libc_malloc(size_t size);  // NOLINT(bugprone-reserved-identifier)

// Fails for the code of the two libraries only: others ask for memory with operator new, or are the
// C library inside a function that fails as a whole.
void* malloc(size_t size) noexcept {
    const bool mayFail = effect.IsFor("malloc") && IsOurs(__builtin_return_address(0));
    return mayFail && Strikes("malloc") ? nullptr : __libc_malloc(size);
}
#endif

void syslog(int, const char*, ...) {}

// The same for code that was compiled with run-time checks; glibc gave it the reserved name.
void __syslog_chk(int, int, const char*, ...) {}  // NOLINT(bugprone-reserved-identifier)

}  // extern "C"
