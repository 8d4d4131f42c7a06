#include "Files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "util/FileIo.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr int WRITE_FLAGS = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t NEW_FILE_MODE = 0666;
constexpr const char* SELF = "/proc/self/exe";

// Where there is no /proc, the kernel still tells the path that was executed.
std::string ReadOwnDirectory() {
    std::error_code failure;
    fs::path self = fs::read_symlink(SELF, failure);
    if (failure) {
        // Addresses are numbers there. NOLINTNEXTLINE(performance-no-int-to-ptr)
        self = fs::canonical(reinterpret_cast<const char*>(getauxval(AT_EXECFN)), failure);
    }
    return self.parent_path();
}

// Read at the start: in mounts of its own, in a chroot, the kernel tells another path.
const std::string s_OwnDirectory = ReadOwnDirectory();

std::string TooLarge(size_t limit) {
    return fmt::format("it is larger than {} MiB", limit >> 20U);
}

// Why a file cannot be read as a whole, "" when it can.
std::string ProblemOf(int fd, size_t limit) {
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return std::strerror(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return "it is a directory";
    }
    if (!S_ISREG(status.st_mode)) {
        return "it is no regular file";
    }
    return static_cast<size_t>(status.st_size) > limit ? TooLarge(limit) : "";
}

// Returns the problem. The size that the system tells is not believed: a file may grow, and those
// of /proc have none.
std::string ReadRegular(int fd, size_t limit, std::string& text) {
    if (std::string problem = ProblemOf(fd, limit); !problem.empty()) {
        return problem;
    }
    if (util::ReadAll(fd, limit, text)) {
        return "";
    }
    return errno == EFBIG ? TooLarge(limit) : std::strerror(errno);
}

std::string OpeningProblem() {
    return errno == ELOOP ? "it is a symbolic link" : std::strerror(errno);
}

// Why a file that may have been there is not written to, "" when it can be: somebody else could
// have prepared it.
std::string ProblemOfOld(int fd) {
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return std::strerror(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return "it is no regular file";
    }
    if (status.st_uid != geteuid()) {
        return "it belongs to another user";
    }
    return status.st_nlink > 1 ? "it has a second name" : "";
}

}  // namespace

std::optional<std::string> ReadFile(const std::string& path, std::string& error, size_t limit) {
    const int fd = open(path.c_str(), READ_FLAGS);
    if (fd < 0) {
        error = fmt::format("cannot read {}: {}", path, std::strerror(errno));
        return std::nullopt;
    }
    return ReadOpened(fd, path, error, limit);
}

std::optional<std::string> ReadOpened(int fd, const std::string& path, std::string& error,
                                      size_t limit) {
    std::string text;
    const std::string problem = ReadRegular(fd, limit, text);
    close(fd);
    if (!problem.empty()) {
        error = fmt::format("cannot read {}: {}", path, problem);
        return std::nullopt;
    }
    return text;
}

bool MakeDirectory(const std::string& path, std::string& error) {
    std::error_code failure;
    if (!path.empty()) {
        fs::create_directories(path, failure);
    }
    if (failure) {
        error = fmt::format("cannot create {}: {}", path, failure.message());
    }
    return !failure;
}

bool WriteFile(const std::string& path, const std::string& text, std::string& error) {
    if (!MakeDirectory(fs::path(path).parent_path(), error)) {
        return false;
    }
    const int fd = open(path.c_str(), WRITE_FLAGS, NEW_FILE_MODE);
    std::string problem = fd < 0 ? OpeningProblem() : ProblemOfOld(fd);
    if (problem.empty() && (ftruncate(fd, 0) != 0 || !util::WriteAll(fd, text))) {
        problem = std::strerror(errno);
    }
    if (fd >= 0 && close(fd) != 0 && problem.empty()) {
        problem = std::strerror(errno);
    }
    if (!problem.empty()) {
        error = fmt::format("cannot write {}: {}", path, problem);
    }
    return problem.empty();
}

bool CopySelf(const std::string& path, std::string& error) {
    if (!MakeDirectory(fs::path(path).parent_path(), error)) {
        return false;
    }
    std::error_code failure;
    fs::copy_file(SELF, path, failure);
    if (failure) {
        error = fmt::format("cannot copy this program to {}: {}", path, failure.message());
    }
    return !failure;
}

bool LinkFile(const std::string& target, const std::string& path, std::string& error) {
    std::error_code failure;
    fs::create_hard_link(target, path, failure);
    if (failure) {
        error = fmt::format("cannot link {} to {}: {}", path, target, failure.message());
    }
    return !failure;
}

const std::string& OwnDirectory() {
    return s_OwnDirectory;
}

}  // namespace qorsim
