#include "Files.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

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

}  // namespace

std::optional<std::string> ReadFile(const std::string& path, std::string& error) {
    std::error_code failure;
    if (fs::is_directory(path, failure)) {
        error = fmt::format("cannot read {}: it is a directory", path);
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();  // an empty file sets failbit
    if (!file.is_open() || text.bad()) {
        error = fmt::format("cannot read {}: {}", path, std::strerror(errno));
        return std::nullopt;
    }
    return text.str();
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
