// The owner of one file descriptor. Any thread, one owner at a time.
#ifndef QOR_UTIL_UNIQUEFD_H
#define QOR_UTIL_UNIQUEFD_H

#include <unistd.h>

#include <utility>

namespace util {

class CUniqueFd {
public:
    // Takes the ownership of `fd`; a negative one owns nothing.
    explicit CUniqueFd(int fd = -1) : m_Fd(fd) {}
    ~CUniqueFd() { Close(); }
    CUniqueFd(CUniqueFd&& other) noexcept : m_Fd(std::exchange(other.m_Fd, -1)) {}
    CUniqueFd& operator=(CUniqueFd&& other) noexcept {
        std::swap(m_Fd, other.m_Fd);
        return *this;
    }
    CUniqueFd(const CUniqueFd&) = delete;  // one owner of the descriptor
    CUniqueFd& operator=(const CUniqueFd&) = delete;

    bool IsOpen() const { return m_Fd >= 0; }
    int Get() const { return m_Fd; }

    // False, with errno set, when what was written could not be kept.
    bool Close() {
        const int fd = std::exchange(m_Fd, -1);
        return fd < 0 || close(fd) == 0;
    }

private:
    int m_Fd;
};

}  // namespace util

#endif  // QOR_UTIL_UNIQUEFD_H
