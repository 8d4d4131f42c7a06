// Files, with failures that say what, where and why.
#ifndef QORSIM_FILES_H
#define QORSIM_FILES_H

#include <fcntl.h>

#include <cstddef>
#include <optional>
#include <string>

namespace qorsim {

// What is read at most where nothing else is said: six times the profile of the largest host that
// there can be.
inline constexpr size_t MAX_READ = size_t{16} << 20;

// Opening for reading waits for nothing and makes no terminal this process's own.
inline constexpr int READ_FLAGS = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// The whole of a regular file, not larger than `limit`. On failure returns nothing and `error` says
// why.
std::optional<std::string> ReadFile(const std::string& path, std::string& error,
                                    size_t limit = MAX_READ);
// The same of an open file, which is closed; `path` is its name in a message.
std::optional<std::string> ReadOpened(int fd, const std::string& path, std::string& error,
                                      size_t limit);

// These make the directories that lead to the path, and return false with `error` set on failure.
bool MakeDirectory(const std::string& path, std::string& error);
// Writes to a new file, or over one of this user's with no second name. What somebody else may have
// prepared, a symbolic link included, is a failure, and nothing is waited for.
bool WriteFile(const std::string& path, const std::string& text, std::string& error);
// Copies this program to `path`.
bool CopySelf(const std::string& path, std::string& error);

// Gives a file a second name; the directory must exist.
bool LinkFile(const std::string& target, const std::string& path, std::string& error);

// The directory of this program's file, "" when the kernel does not tell.
const std::string& OwnDirectory();

}  // namespace qorsim

#endif  // QORSIM_FILES_H
