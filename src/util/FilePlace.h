// Where a file stands or is to stand: an open directory and a name in it.
//
// What a program of root writes goes where its user said, not where somebody else leads it. So a
// path is walked component by component, and a symbolic link is followed only if it belongs to
// root or to the caller. What is done by directory and name afterwards happens in that directory,
// whatever happens to the path meanwhile.
//
// In a user namespace without the system's root, root and all other users look like one. There,
// what may be root's counts as another user's, except a link in a directory that others may not
// write into: those of the system ("/var/run") are such.
//
// Owner: the object holds the directory. Thread rule: one thread at a time.
#ifndef QOR_UTIL_FILEPLACE_H
#define QOR_UTIL_FILEPLACE_H

#include <sys/types.h>

#include <optional>
#include <string>

#include "util/UniqueFd.h"

namespace util {

// Whether what belongs to `owner` was put there by root or the caller.
bool IsTrustedOwner(uid_t owner);

// What a path that ends at a symbolic link means.
enum class ELastLink { FOLLOWED, KEPT };

class CFilePlace {
public:
    // The place of what `path` names, symbolic links followed; it need not be there. Nothing, and
    // the reason in `problem`, when a directory is missing or may not be searched, a link is
    // another user's, or the path ends in "/", "." or "..".
    static std::optional<CFilePlace> Find(const std::string& path, ELastLink lastLink,
                                          std::string& problem);

    // For openat() and the like only: it cannot be read.
    int Directory() const { return m_Directory.Get(); }
    // Use it with O_NOFOLLOW: somebody may have made it a symbolic link meanwhile.
    const std::string& Name() const { return m_Name; }

    // Why somebody else than root and the caller could put a file of the name there, in words;
    // empty when nobody could.
    std::string Danger() const;

private:
    CFilePlace(CUniqueFd directory, std::string name)
        : m_Directory(std::move(directory)), m_Name(std::move(name)) {}

    CUniqueFd m_Directory;
    std::string m_Name;
};

}  // namespace util

#endif  // QOR_UTIL_FILEPLACE_H
