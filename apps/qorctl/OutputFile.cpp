#include "OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace qorctl {
namespace {

constexpr mode_t ANY_MODE = 0666;
constexpr mode_t PERMISSIONS = 07777;
constexpr mode_t PRIVATE_MODE = 0600;

class CDescriptor {
public:
    explicit CDescriptor(int fd) : m_Fd(fd) {}
    ~CDescriptor() { Close(); }
    CDescriptor(const CDescriptor&) = delete;  // one owner of the descriptor
    CDescriptor& operator=(const CDescriptor&) = delete;

    int Get() const { return m_Fd; }
    bool Close();

private:
    int m_Fd;
};

bool CDescriptor::Close() {
    const int fd = m_Fd;
    m_Fd = -1;
    return fd < 0 || close(fd) == 0;
}

std::string Reason(const std::string& path) {
    return fmt::format("{} could not be written: {}", path, std::strerror(errno));
}

bool WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(fd, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return true;
}

// The umask can only be read by setting it.
mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return ANY_MODE & ~mask;
}

mode_t ModeFor(const std::string& path, EFileMode mode) {
    if (mode == EFileMode::PRIVATE) {
        return PRIVATE_MODE;
    }
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & PERMISSIONS : NewFileMode();
}

bool IsThereButNoRegularFile(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

bool WriteInPlace(const std::string& path, const std::string& text) {
    CDescriptor fd(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    return fd.Get() >= 0 && WriteAll(fd.Get(), text) && fd.Close();
}

// What a chain of symbolic links ends at; the name itself when that is not there yet.
std::string Target(const std::string& path) {
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    return error ? path : target.string();
}

// The name is on disk once its directory is. Not every file system can say so; the file's own
// content is safe already.
void SyncDirectory(const fs::path& directory) {
    const CDescriptor fd(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.Get() >= 0) {
        fsync(fd.Get());
    }
}

bool Replace(const std::string& target, const std::string& text, EFileMode mode) {
    const fs::path directory = fs::path(target).parent_path();
    std::string temporary = (directory / ".qorctl-XXXXXX").string();
    CDescriptor fd(mkostemp(temporary.data(), O_CLOEXEC));
    if (fd.Get() < 0) {
        return false;
    }
    if (WriteAll(fd.Get(), text) && fchmod(fd.Get(), ModeFor(target, mode)) == 0 &&
        fsync(fd.Get()) == 0 && fd.Close() && rename(temporary.c_str(), target.c_str()) == 0) {
        SyncDirectory(directory.empty() ? "." : directory);
        return true;
    }
    const int reason = errno;
    unlink(temporary.c_str());
    errno = reason;
    return false;
}

}  // namespace

bool WriteOutputFile(const std::string& path, const std::string& text, EFileMode mode,
                     std::string& problem) {
    const bool written = IsThereButNoRegularFile(path) ? WriteInPlace(path, text)
                                                       : Replace(Target(path), text, mode);
    if (!written) {
        problem = Reason(path);
    }
    return written;
}

}  // namespace qorctl
