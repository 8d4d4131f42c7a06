// The owner of one file descriptor. One thread, one owner at a time.
#ifndef QORCTL_TERMINAL_DESCRIPTOR_H
#define QORCTL_TERMINAL_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace qorctl {

class CDescriptor {
public:
    // Takes the ownership of `fd`; a negative one owns nothing.
    explicit CDescriptor(int fd = -1) : m_Fd(fd) {}
    ~CDescriptor() { Close(); }
    CDescriptor(CDescriptor&& other) noexcept : m_Fd(std::exchange(other.m_Fd, -1)) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        std::swap(m_Fd, other.m_Fd);
        return *this;
    }
    CDescriptor(const CDescriptor&) = delete;  // one owner of the descriptor
    CDescriptor& operator=(const CDescriptor&) = delete;

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

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_DESCRIPTOR_H
