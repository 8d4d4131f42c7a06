#include "StateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "OutputFile.h"

namespace qorctl {
namespace {

constexpr size_t BLOCK = 65536;

// The rest of the file; an errno on failure.
int ReadAll(int fd, std::string& text) {
    std::array<char, BLOCK> block;
    while (text.size() <= CStateFile::MAX_SIZE) {
        const ssize_t count = read(fd, block.data(), block.size());
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        if (count == 0) {
            return 0;
        }
        text.append(block.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    return EFBIG;
}

int ReadRegular(int fd, std::string& text) {
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return errno;
    }
    return S_ISREG(status.st_mode) ? ReadAll(fd, text) : EINVAL;
}

}  // namespace

CStateFile::~CStateFile() {
    if (m_Lock >= 0) {
        close(m_Lock);
    }
}

void CStateFile::Fail(const std::string& path, const std::string& what) {
    m_Problem = path + ": " + what;
}

CStateFile::ELock CStateFile::Lock() {
    const std::string path = m_Path + ".lock";
    m_Lock = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (m_Lock < 0) {
        Fail(path, std::strerror(errno));
        return ELock::FAILED;
    }
    if (flock(m_Lock, LOCK_EX | LOCK_NB) == 0) {
        return ELock::TAKEN;
    }
    if (errno == EWOULDBLOCK) {
        Fail(m_Path, "another process is using it");
        return ELock::BUSY;
    }
    Fail(path, std::strerror(errno));
    return ELock::FAILED;
}

CStateFile::ERead CStateFile::Read(std::string& text) {
    // A FIFO in its place must not keep the program waiting.
    const int fd = open(m_Path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        const bool missing = errno == ENOENT;
        Fail(m_Path, std::strerror(errno));
        return missing ? ERead::MISSING : ERead::FAILED;
    }
    text.clear();
    const int error = ReadRegular(fd, text);
    close(fd);
    if (error == 0) {
        return ERead::DONE;
    }
    Fail(m_Path, error == EINVAL ? "not a regular file" : std::strerror(error));
    return ERead::FAILED;
}

bool CStateFile::Write(const std::string& text) {
    return WriteOutputFile(m_Path, text, EFileMode::PRIVATE, m_Problem);
}

}  // namespace qorctl
