// The whole of what is written or read, whatever a single call takes.
//
// Thread rule: any thread at any time.
#ifndef QOR_UTIL_FILEIO_H
#define QOR_UTIL_FILEIO_H

#include <cstddef>
#include <string>
#include <string_view>

namespace util {

// A reader of a pipe that takes nothing for ten seconds is given up. False, with errno set, when
// not all of `text` was taken.
bool WriteAll(int fd, std::string_view text);

// Appends the rest of a file to `text`. False, with errno set, when it cannot be read; with EFBIG
// when `text` would hold more than `limit` bytes, which the file's size is not believed about: it
// may grow.
bool ReadAll(int fd, size_t limit, std::string& text);

}  // namespace util

#endif  // QOR_UTIL_FILEIO_H
