// Files, with failures that say what, where and why.
#ifndef QORSIM_FILES_H
#define QORSIM_FILES_H

#include <optional>
#include <string>

namespace qorsim {

// The whole of a file. On failure returns nothing and `error` says why.
std::optional<std::string> ReadFile(const std::string& path, std::string& error);

// These make the directories that lead to the path, and return false with `error` set on failure.
bool MakeDirectory(const std::string& path, std::string& error);
bool WriteFile(const std::string& path, const std::string& text, std::string& error);
// Copies this program to `path`.
bool CopySelf(const std::string& path, std::string& error);

// Gives a file a second name; the directory must exist.
bool LinkFile(const std::string& target, const std::string& path, std::string& error);

// The directory of this program's file, "" when the kernel does not tell.
const std::string& OwnDirectory();

}  // namespace qorsim

#endif  // QORSIM_FILES_H
