#include "util/FileIo.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace util {
namespace {

constexpr int READER_PATIENCE = 10'000;  // milliseconds

bool WaitToWrite(int fd) {
    pollfd wait = {fd, POLLOUT, 0};
    const int ready = poll(&wait, 1, READER_PATIENCE);
    if (ready == 0) {
        errno = ETIMEDOUT;
    }
    return ready > 0 || (ready < 0 && errno == EINTR);
}

}  // namespace

bool WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(fd, text.data(), text.size());
        if (count < 0 && errno != EINTR && (errno != EAGAIN || !WaitToWrite(fd))) {
            return false;
        }
        text.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return true;
}

bool ReadAll(int fd, size_t limit, std::string& text) {
    std::array<char, 4096> block;  // a host's thread may have a small stack
    for (;;) {
        const ssize_t count = read(fd, block.data(), block.size());
        if (count == 0) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.append(block.data(), count > 0 ? static_cast<size_t>(count) : 0);
        if (text.size() > limit) {
            errno = EFBIG;
            return false;
        }
    }
}

}  // namespace util
