// The file that receives what an external program printed.
#ifndef QOR_CLI_RESULTFILE_H
#define QOR_CLI_RESULTFILE_H

#include <string>

// Owner of one result file: removes it on every way out of the scope. A file that cannot be removed
// is traced, and life goes on.
class CResultFile {
public:
    explicit CResultFile(const std::string& path) : m_Path(path) {}
    ~CResultFile();
    CResultFile(const CResultFile&) = delete;  // one file, one owner
    CResultFile& operator=(const CResultFile&) = delete;

    const std::string& Path() const { return m_Path; }
    // Leaves the file where it is.
    void Keep() { m_Kept = true; }

private:
    std::string m_Path;
    bool m_Kept = false;
};

// False also if the file cannot be opened, cannot be read at a place or has no line.
bool FirstLineBeginsWith(const std::string& path, const std::string& head);

#endif  // QOR_CLI_RESULTFILE_H
