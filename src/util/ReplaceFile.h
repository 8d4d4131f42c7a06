// A file that takes the place of another one as a whole: a reader sees the old one or the new one.
//
// Thread rule: one thread at a time for an object.
#ifndef QOR_UTIL_REPLACEFILE_H
#define QOR_UTIL_REPLACEFILE_H

#include <sys/types.h>

#include <string>
#include <string_view>

#include "util/UniqueFd.h"

namespace util {

class CReplacement {
public:
    // Makes an empty file of a random name that begins with `head`. Names are looked up in the open
    // directory `directory` (AT_FDCWD: the working directory; paths are names, too); the kernel
    // takes the umask off `mode`. IsOpen() tells of the failure, errno why.
    CReplacement(int directory, const std::string& head, mode_t mode);
    // Removes a file that did not take its place; errno stays.
    ~CReplacement();
    CReplacement(const CReplacement&) = delete;  // one file has one owner
    CReplacement& operator=(const CReplacement&) = delete;

    bool IsOpen() const { return m_Fd.IsOpen(); }
    int Get() const { return m_Fd.Get(); }
    // Of the new file, as long as it has no place.
    const std::string& Name() const { return m_Name; }

    // Writes the next part of the content. False, with errno set, on failure.
    bool Append(std::string_view text);
    // Puts what was written on disk: a power failure must not leave an empty file under the name.
    // False, with errno set, on failure.
    bool Finish();
    // The whole content at once.
    bool Write(std::string_view text) { return Append(text) && Finish(); }
    // Gives the file its name, in the same directory. False, with errno set, on failure.
    bool TakePlace(const std::string& name);

private:
    const int m_Directory;
    std::string m_Name;
    CUniqueFd m_Fd;
    bool m_Exists = false;
};

}  // namespace util

#endif  // QOR_UTIL_REPLACEFILE_H
