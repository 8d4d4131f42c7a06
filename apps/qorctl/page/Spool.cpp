#include "page/Spool.h"

#include <unistd.h>

#include <cerrno>

#include "terminal/NamelessFile.h"
#include "util/FileIo.h"

namespace qorctl {
namespace {

constexpr size_t MAX_TAIL = size_t{1} << 20;
constexpr size_t PIECE = size_t{1} << 16;

}  // namespace

void CSpool::Append(std::string_view text) {
    if (m_Error != 0) {
        return;
    }
    m_Tail += text;
    if (m_Tail.size() > MAX_TAIL) {
        Flush();
    }
}

void CSpool::Flush() {
    if (!m_File.IsOpen()) {
        m_File = OpenNamelessFile();
    }
    if (!m_File.IsOpen() || !util::WriteAll(m_File.Get(), m_Tail)) {
        m_Error = errno;
    }
    m_Tail.clear();
}

bool CSpool::Give(const CTakePiece& take) {
    std::string piece(PIECE, '\0');
    for (off_t at = 0; m_Error == 0 && m_File.IsOpen();) {
        const ssize_t count = pread(m_File.Get(), piece.data(), piece.size(), at);
        if (count == 0) {
            break;
        }
        if (count < 0) {
            m_Error = errno;
        } else if (!take(std::string_view(piece).substr(0, static_cast<size_t>(count)))) {
            return false;
        } else {
            at += count;
        }
    }
    errno = m_Error;
    return m_Error == 0 && take(m_Tail);
}

}  // namespace qorctl
