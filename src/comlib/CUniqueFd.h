// The owner of one file descriptor: closes it on any way out. Any thread, one owner at a time.
#ifndef QOR_COMLIB_CUNIQUEFD_H
#define QOR_COMLIB_CUNIQUEFD_H

#include <unistd.h>

#include <utility>

namespace comlib {

class CUniqueFd {
public:
    // Takes the ownership of `fd`; a negative one owns nothing.
    explicit CUniqueFd(int fd) : m_Fd(fd) {}
    CUniqueFd(CUniqueFd&& other) noexcept : m_Fd(std::exchange(other.m_Fd, -1)) {}
    CUniqueFd& operator=(CUniqueFd&&) = delete;
    CUniqueFd(const CUniqueFd&) = delete;  // a descriptor has one owner
    CUniqueFd& operator=(const CUniqueFd&) = delete;
    ~CUniqueFd() {
        if (IsOpen()) {
            close(m_Fd);
        }
    }

    bool IsOpen() const { return m_Fd >= 0; }
    int Get() const { return m_Fd; }

private:
    int m_Fd;
};

}  // namespace comlib

#endif  // QOR_COMLIB_CUNIQUEFD_H
