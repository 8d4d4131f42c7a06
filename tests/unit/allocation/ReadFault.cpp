#include "ReadFault.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>

namespace {

constexpr long DISARMED = -1;

long remainingSuccesses = DISARMED;

}  // namespace

namespace qortest {

void FailReadAfter(long successes) {
    remainingSuccesses = successes;
}

void DisarmReadFault() {
    remainingSuccesses = DISARMED;
}

}  // namespace qortest

extern "C" ssize_t read(int fd, void* buffer, size_t size) {
    static const auto real =
        reinterpret_cast<ssize_t (*)(int, void*, size_t)>(dlsym(RTLD_NEXT, "read"));
    if (remainingSuccesses == 0) {
        errno = EIO;
        return -1;
    }
    if (remainingSuccesses != DISARMED) {
        --remainingSuccesses;
    }
    return real(fd, buffer, size);
}
