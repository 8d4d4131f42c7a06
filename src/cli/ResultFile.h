// The file that receives what an external program printed.
#ifndef QOR_CLI_RESULTFILE_H
#define QOR_CLI_RESULTFILE_H

#include <sys/types.h>

#include <fstream>
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

// The file that a program's output goes to: one of the plug-in's own, or one that the host named. A
// view: the path stays where it is.
class COutputFile {
public:
    COutputFile(const std::string& path) : m_Path(path) {}
    COutputFile(const CResultFile& file) : m_Path(file.Path()), m_IsOwn(true) {}

    const std::string& Path() const { return m_Path; }
    bool IsOwn() const { return m_IsOwn; }

private:
    const std::string& m_Path;
    bool m_IsOwn = false;
};

// True if nobody but root and the host's user can put another file in the place of one in the
// directory of `path`, or if there is no such directory. Who can write into the directories above
// it is the administrator's care.
bool IsOutOfOthersReach(const std::string& path);

// More than any tool would print: thirty times the report on 240 drives.
inline constexpr off_t FILE_SIZE_LIMIT = off_t{16} << 20;

// True if the file holds more. To be asked before the file is read, so that the host's memory does
// not depend on a program that went mad.
bool IsTooLarge(const std::string& path);
void TraceTooLarge(const std::string& path);

// The file is read to that size and a buffer beyond it, then it ends: a process that the tool left
// behind may write as fast as it is read. To be asked again when it has been read.
class CResultStream : public std::ifstream {
public:
    CResultStream() { std::ios::rdbuf(&m_Buffer); }
    explicit CResultStream(const std::string& path) : CResultStream() { Open(path); }

    // In place of open() and is_open(), which know the other buffer.
    bool Open(const std::string& path);

private:
    class CBuffer : public std::filebuf {
    protected:
        int_type underflow() override;
    };

    CBuffer m_Buffer;
};

// False also if the file cannot be opened, cannot be read at a place or has no line.
bool FirstLineBeginsWith(const std::string& path, const std::string& head);

#endif  // QOR_CLI_RESULTFILE_H
