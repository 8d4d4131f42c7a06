#ifndef QOR_CLI_UNIQUEFD_H
#define QOR_CLI_UNIQUEFD_H

#include <unistd.h>

// Owner of one file descriptor; closes it. -1 stands for none.
class CUniqueFd {
public:
    explicit CUniqueFd(int fd) : m_Fd(fd) {}
    ~CUniqueFd() {
        if (m_Fd >= 0) {
            close(m_Fd);
        }
    }
    CUniqueFd(const CUniqueFd&) = delete;  // one descriptor, one owner
    CUniqueFd& operator=(const CUniqueFd&) = delete;

    int Get() const { return m_Fd; }
    bool IsValid() const { return m_Fd >= 0; }

private:
    int m_Fd;
};

#endif  // QOR_CLI_UNIQUEFD_H
