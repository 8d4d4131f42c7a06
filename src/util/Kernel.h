// What the kernel is asked in its own words. The C library has functions for it, but too new ones
// for the oldest that the libraries are loaded with, glibc 2.28: gettid() came with 2.30, and
// stat(), lstat() and fstat() are inside the shared C library only since 2.33.
//
// Thread rule: any thread at any time.
#ifndef QOR_UTIL_KERNEL_H
#define QOR_UTIL_KERNEL_H

#include <sys/stat.h>
#include <sys/types.h>

namespace util {

// As gettid() does.
pid_t ThreadId();

// The following do as stat(), lstat() and fstat() do. False, with errno set, on a failure.

bool GetStatus(const char* path, struct stat& status);
bool GetLinkStatus(const char* path, struct stat& status);
bool GetStatus(int fd, struct stat& status);

}  // namespace util

#endif  // QOR_UTIL_KERNEL_H
