// One ini file, read once and kept in memory.
//
// Thread rule: a loaded file does not change; Find() may be called from several threads.
#ifndef QOR_COMLIB_CINIFILE_H
#define QOR_COMLIB_CINIFILE_H

#include <memory>
#include <optional>
#include <string>

namespace comlib {

// What is behind a path at one moment. Two equal stamps mean the same content, unless the file was
// written within the resolution of the file system's clock after the stamp was taken.
struct CFileStamp {
    unsigned long m_Device = 0;
    unsigned long m_Inode = 0;
    long m_Size = 0;
    long long m_ModifiedNs = 0;  // since the epoch
    long long m_ChangedNs = 0;   // likewise; unlike the former, nobody can set it back

    bool operator==(const CFileStamp&) const = default;

    // Nothing if there is no regular file at `path`.
    static std::optional<CFileStamp> Of(const char* path);
};

class CIniFile {
public:
    // Null if `path` is no regular file or cannot be read.
    static std::unique_ptr<CIniFile> Load(const char* path);

    ~CIniFile();
    CIniFile(const CIniFile&) = delete;  // copying 10,000 entries is never meant
    CIniFile& operator=(const CIniFile&) = delete;

    const std::string& Path() const { return m_Path; }

    // The text at `key` of `section`, names compared without regard to the case of a to z; nothing
    // if it is missing. Blanks around it and one pair of quotes are taken off.
    std::optional<std::string> Find(const char* section, const char* key) const;

    // True if the file at `path` that has `stamp` now is known to hold what was read.
    bool IsCurrent(const std::string& path, const CFileStamp& stamp) const;

private:
    struct CParsed;

    explicit CIniFile(const char* path);

    std::string m_Path;
    CFileStamp m_Stamp;
    bool m_Settled = false;
    std::unique_ptr<CParsed> m_Parsed;
};

}  // namespace comlib

#endif  // QOR_COMLIB_CINIFILE_H
