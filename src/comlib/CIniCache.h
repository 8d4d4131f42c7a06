// The ini files that were asked for last, so that a file that is asked key by key is read once.
//
// A file that changed on disk is read again at the next question: every question examines the file
// (one stat). Thread rule: any thread at any time. The memory is released when the library is
// unloaded.
#ifndef QOR_COMLIB_CINICACHE_H
#define QOR_COMLIB_CINICACHE_H

#include <cstddef>
#include <optional>
#include <string>

namespace comlib {

class CIniCache {
public:
    static constexpr size_t CAPACITY = 4;  // files; the least recently used one makes room

    // The text at `key` of `section` in the ini file `path`; nothing if the file, the section or
    // the key is missing or the file cannot be read.
    static std::optional<std::string> Find(const char* section, const char* key, const char* path);

    // Forgets every file.
    static void Clear();
};

}  // namespace comlib

#endif  // QOR_COMLIB_CINICACHE_H
