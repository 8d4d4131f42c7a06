#include "cli/ResultFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/Trace.h"
#include "util/Kernel.h"
#include "util/UniqueFd.h"

namespace {

bool IsRootsOrOurs(const struct stat& status) {
    return status.st_uid == 0 || status.st_uid == geteuid();
}

}  // namespace

CResultFile::~CResultFile() {
    if (!m_Kept && DeleteFileA(m_Path.c_str()) == 0) {
        QOR_TRACE(FAILURE, "Failed to delete file(%s).", m_Path.c_str());
    }
}

bool IsOutOfOthersReach(const std::string& path) {
    const std::string directory = path.substr(0, path.rfind('/'));
    struct stat link = {};
    struct stat status = {};
    if (!util::GetLinkStatus(directory.c_str(), link) ||
        !util::GetStatus(directory.c_str(), status)) {
        return true;
    }
    return IsRootsOrOurs(link) && IsRootsOrOurs(status) &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool IsTooLarge(const std::string& path) {
    struct stat status = {};
    return util::GetStatus(path.c_str(), status) && status.st_size > FILE_SIZE_LIMIT;
}

bool CResultStream::Open(const std::string& path) {
    if (m_Buffer.open(path, std::ios::in) == nullptr) {
        setstate(std::ios::failbit);
    }
    return m_Buffer.is_open();
}

CResultStream::CBuffer::int_type CResultStream::CBuffer::underflow() {
    const off_t place = seekoff(0, std::ios::cur, std::ios::in);
    return place > FILE_SIZE_LIMIT ? traits_type::eof() : std::filebuf::underflow();
}

void TraceTooLarge(const std::string& path) {
    QOR_TRACE(FAILURE, "Result file is too large(%s).", path.c_str());
}

// Neither the open nor the read waits: what cannot be read at a place, as a pipe or a terminal, is
// not read, since what it holds is meant for somebody else.
bool FirstLineBeginsWith(const std::string& path, const std::string& head) {
    const util::CUniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    std::string beginning(head.size(), '\0');
    size_t size = 0;
    while (size < head.size()) {
        const ssize_t part =
            pread(file.Get(), &beginning[size], head.size() - size, static_cast<off_t>(size));
        if (part > 0) {
            size += static_cast<size_t>(part);
        } else if (part == 0 || errno != EINTR) {
            return false;
        }
    }
    return beginning == head;
}
