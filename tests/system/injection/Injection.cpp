#include "Injection.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

namespace {

qortest::CInjection armed = {nullptr, 0};
long strikes = 0;
long liveBlocks = 0;

// Counts the call; true, with errno set, if it is to fail.
bool Strikes(const char* function) {
    if (armed.function == nullptr || std::strcmp(armed.function, function) != 0) {
        return false;
    }
    if (armed.successes > 0) {
        --armed.successes;
        return false;
    }
    if (strikes > 0 && armed.duration == qortest::EDuration::Once) {
        return false;
    }
    ++strikes;
    errno = armed.error;
    return true;
}

// The definition behind this program's own; `own` gives the type.
template <class Function>
Function* Real(Function& /*own*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace qortest {

const std::vector<CFailingFunction>& FailingFunctions() {
    static const std::vector<CFailingFunction> functions = {
        {"open", {EACCES, EMFILE, ENOENT, ENOSPC, EIO, EINTR, ENOMEM}},
        {"fopen64", {EACCES, EMFILE, ENOENT, EIO, EINTR, ENOMEM}},
        {"read", {EIO, EINTR, EISDIR, ONE_BYTE}},
        {"write", {ENOSPC, EIO, EINTR, EPIPE, EFBIG, ONE_BYTE}},
        {"lseek64", {EINVAL, EOVERFLOW}},
        {"fsync", {EIO, ENOSPC}},
        {"close", {EIO, EINTR}},
        {"fclose", {EIO}},
        {"fcntl", {EMFILE, EINVAL}},
        {"stat", {EACCES, EIO, ENOENT, ENOMEM}},
        {"fstat", {EIO, ENOMEM}},
        {"mkdir", {EACCES, ENOSPC, EIO, EROFS, ENOENT}},
        {"mkostemp", {EACCES, EMFILE, ENOSPC, EIO}},
        {"rename", {EACCES, ENOSPC, EIO}},
        {"unlink", {EACCES, EIO, EROFS, EBUSY}},
        {"opendir", {EACCES, EMFILE, ENOENT, ENOMEM}},
        {"readdir", {EIO, ENOENT}},
        {"posix_spawnp", {EAGAIN, ENOMEM, EMFILE, EACCES, ENOENT, EIO}},
        {"posix_spawn_file_actions_init", {ENOMEM}},
        {"posix_spawn_file_actions_addopen", {ENOMEM}},
        {"posix_spawn_file_actions_adddup2", {ENOMEM, EBADF}},
        {"posix_spawn_file_actions_addclosefrom_np", {ENOMEM}},
        {"posix_spawn_file_actions_addchdir_np", {ENOMEM}},
        {"posix_spawnattr_init", {ENOMEM}},
        {"syscall", {ENOSYS, EMFILE, ENOMEM, EPERM}},  // a process descriptor
        {"waitpid", {EINTR, ECHILD}},
        {"poll", {EINTR, ENOMEM}},
        {"sigtimedwait", {EINTR, EAGAIN}},
    };
    return functions;
}

void Arm(const CInjection& injection) {
    strikes = 0;
    armed = injection;
}

long Disarm() {
    armed = {nullptr, 0};
    return strikes;
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
    return Strikes("open") ? -1 : real(path, flags, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    static const auto real = Real(fopen64, "fopen64");
    return Strikes("fopen64") ? nullptr : real(path, mode);
}

ssize_t read(int fd, void* buffer, size_t size) {
    static const auto real = Real(read, "read");
    if (!Strikes("read")) {
        return real(fd, buffer, size);
    }
    return errno == qortest::ONE_BYTE ? real(fd, buffer, std::min<size_t>(size, 1)) : -1;
}

ssize_t write(int fd, const void* buffer, size_t size) {
    static const auto real = Real(write, "write");
    if (!Strikes("write")) {
        return real(fd, buffer, size);
    }
    return errno == qortest::ONE_BYTE ? real(fd, buffer, std::min<size_t>(size, 1)) : -1;
}

off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
    static const auto real = Real(lseek64, "lseek64");
    return Strikes("lseek64") ? -1 : real(fd, offset, whence);
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

int stat(const char* path, struct stat* status) noexcept {
    static const auto real =
        reinterpret_cast<int (*)(const char*, struct stat*)>(dlsym(RTLD_NEXT, "stat"));
    return Strikes("stat") ? -1 : real(path, status);
}

int fstat(int fd, struct stat* status) noexcept {
    static const auto real = Real(fstat, "fstat");
    return Strikes("fstat") ? -1 : real(fd, status);
}

int mkdir(const char* path, mode_t mode) noexcept {
    static const auto real = Real(mkdir, "mkdir");
    return Strikes("mkdir") ? -1 : real(path, mode);
}

int mkostemp(char* path, int flags) {
    static const auto real = Real(mkostemp, "mkostemp");
    return Strikes("mkostemp") ? -1 : real(path, flags);
}

int rename(const char* from, const char* to) noexcept {
    static const auto real = Real(rename, "rename");
    return Strikes("rename") ? -1 : real(from, to);
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

int posix_spawnp(pid_t* child, const char* file, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const* arguments,
                 char* const* environment) {
    static const auto real = Real(posix_spawnp, "posix_spawnp");
    return Strikes("posix_spawnp") ? errno
                                   : real(child, file, actions, attributes, arguments, environment);
}

int posix_spawn_file_actions_init(posix_spawn_file_actions_t* actions) noexcept {
    static const auto real = Real(posix_spawn_file_actions_init, "posix_spawn_file_actions_init");
    return Strikes("posix_spawn_file_actions_init") ? errno : real(actions);
}

int posix_spawn_file_actions_addopen(posix_spawn_file_actions_t* actions, int fd, const char* path,
                                     int flags, mode_t mode) noexcept {
    static const auto real =
        Real(posix_spawn_file_actions_addopen, "posix_spawn_file_actions_addopen");
    return Strikes("posix_spawn_file_actions_addopen") ? errno
                                                       : real(actions, fd, path, flags, mode);
}

int posix_spawn_file_actions_adddup2(posix_spawn_file_actions_t* actions, int from,
                                     int to) noexcept {
    static const auto real =
        Real(posix_spawn_file_actions_adddup2, "posix_spawn_file_actions_adddup2");
    return Strikes("posix_spawn_file_actions_adddup2") ? errno : real(actions, from, to);
}

int posix_spawn_file_actions_addclosefrom_np(posix_spawn_file_actions_t* actions,
                                             int from) noexcept {
    static const auto real =
        Real(posix_spawn_file_actions_addclosefrom_np, "posix_spawn_file_actions_addclosefrom_np");
    return Strikes("posix_spawn_file_actions_addclosefrom_np") ? errno : real(actions, from);
}

int posix_spawn_file_actions_addchdir_np(posix_spawn_file_actions_t* actions,
                                         const char* path) noexcept {
    static const auto real =
        Real(posix_spawn_file_actions_addchdir_np, "posix_spawn_file_actions_addchdir_np");
    return Strikes("posix_spawn_file_actions_addchdir_np") ? errno : real(actions, path);
}

int posix_spawnattr_init(posix_spawnattr_t* attributes) noexcept {
    static const auto real = Real(posix_spawnattr_init, "posix_spawnattr_init");
    return Strikes("posix_spawnattr_init") ? errno : real(attributes);
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
    return Strikes("syscall")
               ? -1
               : real(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}

// "No such child" is what the host's own waiting leads to: it has taken the child's end.
pid_t waitpid(pid_t child, int* status, int options) {
    static const auto real = Real(waitpid, "waitpid");
    if (!Strikes("waitpid")) {
        return real(child, status, options);
    }
    const int error = errno;
    if (error == ECHILD) {
        real(child, nullptr, 0);
    }
    errno = error;
    return -1;
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
    return 0;
}

void syslog(int, const char*, ...) {}

// The same for code that was compiled with run-time checks; glibc gave it the reserved name.
void __syslog_chk(int, int, const char*, ...) {}  // NOLINT(bugprone-reserved-identifier)

}  // extern "C"
