#include "cli/ResultFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "cli/UniqueFd.h"
#include "plugin/Trace.h"

CResultFile::~CResultFile() {
    if (!m_Kept && DeleteFileA(m_Path.c_str()) == 0) {
        QOR_TRACE(FAILURE, "Failed to delete file(%s).", m_Path.c_str());
    }
}

// Neither the open nor the read waits: what cannot be read at a place, as a pipe or a terminal, is
// not read, since what it holds is meant for somebody else.
bool FirstLineBeginsWith(const std::string& path, const std::string& head) {
    const CUniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
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
