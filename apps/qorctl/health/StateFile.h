// A small file of this program's own that several processes may want at the same time.
//
// The file is replaced as a whole (see OutputFile.h). A lock file beside it, which stays, keeps
// writers apart from before reading until after writing; where `path` is a symbolic link, it is
// beside what that names.
//
// Owner: the object holds the lock; its destructor gives it back.
// Thread rule: one thread at a time.
#ifndef QORCTL_HEALTH_STATEFILE_H
#define QORCTL_HEALTH_STATEFILE_H

#include <cstddef>
#include <string>
#include <utility>

#include "util/FilePlace.h"
#include "util/UniqueFd.h"

namespace qorctl {

class CStateFile {
public:
    // What is larger was not written by this program.
    static constexpr size_t MAX_SIZE = 16U << 20U;

    enum class ELock { TAKEN, BUSY, FAILED };
    enum class ERead { DONE, MISSING, FAILED };

    // `path` is not touched before Lock().
    explicit CStateFile(std::string path) : m_Path(std::move(path)) {}
    ~CStateFile() = default;
    CStateFile(const CStateFile&) = delete;  // one owner of the lock
    CStateFile& operator=(const CStateFile&) = delete;

    // Takes the lock, making "PATH.lock" with mode 0600 if it is not there. Does not wait: BUSY
    // when another process holds it. A symbolic link in the lock's place is not followed. A lock
    // that another user could hold, since it is that user's or has another mode, is made anew.
    // Fails where another user may write into the directory.
    ELock Lock();

    // The whole file. Fails for anything but a regular file, for one above MAX_SIZE, and for what
    // another user wrote or may replace.
    ERead Read(std::string& text);

    // Replaces the file by one with mode 0600 that holds `text`. True on success; false, too, for
    // a text above MAX_SIZE, which could not be read again.
    bool Write(const std::string& text);

    // Keeps the file under a second name, its own with `end` behind it, and a number where others
    // have that; sets `path` to it. The file itself stays until Write() replaces it.
    bool KeepBeside(const std::string& end, std::string& path);

    // Why the last operation failed, in words, the path included.
    const std::string& Problem() const { return m_Problem; }

private:
    void Fail(const std::string& path, const std::string& what);
    bool OpenLock(const util::CFilePlace& place, const std::string& name);

    std::string m_Path;
    std::string m_Problem;
    util::CUniqueFd m_Lock;
};

}  // namespace qorctl

#endif  // QORCTL_HEALTH_STATEFILE_H
