// Lets a program that was linked on a new system start on one with glibc 2.28: what it and the C++
// library inside it ask of newer ones is here, or is asked for as it was called then. Compiled into
// the programs of the archive alone; tests/abi/check-floor finds what is missing.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>

// The version of all that glibc had when it came to the processor. The linker finds none of this
// name on another one.
#if defined(__aarch64__)
#define FIRST_VERSION "GLIBC_2.17"
#else
#define FIRST_VERSION "GLIBC_2.2.5"
#endif

// The linker lets calls of NAME run __wrap_NAME, which calls the first version. Until glibc 2.34
// most of these functions were in libraries of their own, which are linked, too.
#define FIRST(result, name, parameters) \
    result first_##name parameters;     \
    asm(".symver first_" #name "," #name "@" FIRST_VERSION)
#define AS_AT_FIRST(result, name, parameters, arguments) \
    FIRST(result, name, parameters);                     \
    result __wrap_##name parameters {                    \
        return first_##name arguments;                   \
    }

using CInit = void (*)(int, char**, char**);
using CMain = int (*)(int, char**, char**);

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker's and the C
// library's names.
extern "C" {

FIRST(int, __libc_start_main,
      (CMain main, int argc, char** argv, CInit init, void (*fini)(), void (*loaderEnd)(),
       void* stackEnd));
AS_AT_FIRST(void*, dlopen, (const char* path, int flags), (path, flags))
AS_AT_FIRST(void*, dlsym, (void* library, const char* name), (library, name))
AS_AT_FIRST(int, dlclose, (void* library), (library))
AS_AT_FIRST(char*, dlerror, (), ())
AS_AT_FIRST(int, dladdr, (const void* address, Dl_info* info), (address, info))
AS_AT_FIRST(int, pthread_once, (pthread_once_t * once, void (*run)()), (once, run))
AS_AT_FIRST(int, pthread_key_create, (pthread_key_t * key, void (*end)(void*)), (key, end))
AS_AT_FIRST(int, pthread_key_delete, (pthread_key_t key), (key))
AS_AT_FIRST(void*, pthread_getspecific, (pthread_key_t key), (key))
AS_AT_FIRST(int, pthread_setspecific, (pthread_key_t key, const void* value), (key, value))
AS_AT_FIRST(int, pthread_rwlock_rdlock, (pthread_rwlock_t * lock), (lock))
AS_AT_FIRST(int, pthread_rwlock_wrlock, (pthread_rwlock_t * lock), (lock))
AS_AT_FIRST(int, pthread_rwlock_unlock, (pthread_rwlock_t * lock), (lock))

void _init();
extern const CInit __init_array_start[] __attribute__((visibility("hidden")));
extern const CInit __init_array_end[] __attribute__((visibility("hidden")));

// Until 2.34 a program brought the code that runs its constructors along.
static void RunConstructors(int argc, char** argv, char** environment) {
    _init();
    for (const CInit* init = __init_array_start; init != __init_array_end; ++init) {
        (*init)(argc, argv, environment);
    }
}

int __wrap___libc_start_main(CMain main, int argc, char** argv, CInit, void (*)(),
                             void (*loaderEnd)(), void* stackEnd) {
    return first___libc_start_main(main, argc, argv, RunConstructors, nullptr, loaderEnd, stackEnd);
}

// In the shared C library since 2.32; sigprocmask() is about the calling thread, too.
int __wrap_pthread_sigmask(int how, const sigset_t* set, sigset_t* before) {
    return sigprocmask(how, set, before) == 0 ? 0 : errno;
}

// In the shared C library since 2.33.
int __wrap_fstatat(int folder, const char* path, struct stat* status, int flags) {
    return static_cast<int>(syscall(SYS_newfstatat, folder, path, status, flags));
}

int __wrap_stat(const char* path, struct stat* status) {
    return __wrap_fstatat(AT_FDCWD, path, status, 0);
}

int __wrap_lstat(const char* path, struct stat* status) {
    return __wrap_fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

int __wrap_fstat(int fd, struct stat* status) {
    return static_cast<int>(syscall(SYS_fstat, fd, status));
}

// The same, where files are as large as they can be.
int __wrap_fstat64(int fd, struct stat* status) {
    return __wrap_fstat(fd, status);
}

// Four random bytes, for std::random_device; glibc has it since 2.36. A kernel without random bytes
// lets nobody guess: the program ends.
std::uint32_t __wrap_arc4random() {
    std::uint32_t bytes = 0;
    // As few as these come whole, and no signal interrupts it once the kernel is up.
    if (getrandom(&bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        std::abort();
    }
    return bytes;
}

// Tells reference counts to do without locks where it is not 0. glibc 2.32 gave it the reserved
// name, and sets its own.
__attribute__((visibility("hidden"))) char __libc_single_threaded = 0;

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
