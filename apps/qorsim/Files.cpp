#include "Files.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr const char* SELF = "/proc/self/exe";

std::string ReadOwnDirectory() {
    std::error_code failure;
    return fs::read_symlink(SELF, failure).parent_path();
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
    if (const std::string problem = ProblemOf(fd, limit); !problem.empty()) {
        return problem;
    }
    std::array<char, 65536> buffer = {};
    for (;;) {
        const ssize_t count = read(fd, buffer.data(), buffer.size());
        if (count == 0) {
            return "";
        }
        if (count < 0 && errno != EINTR) {
            return std::strerror(errno);
        }
        text.append(buffer.data(), count > 0 ? static_cast<size_t>(count) : 0);
        if (text.size() > limit) {
            return TooLarge(limit);
        }
    }
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
    fs::create_directories(path, failure);
    if (failure) {
        error = fmt::format("cannot create {}: {}", path, failure.message());
    }
    return !failure;
}

bool WriteFile(const std::string& path, const std::string& text, std::string& error) {
    if (!MakeDirectory(fs::absolute(path).parent_path(), error)) {
        return false;
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) {
        error = fmt::format("cannot write {}: {}", path, std::strerror(errno));
        return false;
    }
    return true;
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
