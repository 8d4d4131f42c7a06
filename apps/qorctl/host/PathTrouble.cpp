#include "host/PathTrouble.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace qorctl {
namespace {

constexpr const char* OTHER_USER = "run it as root, or as the user of the server";

// The folders above the path, from the root down, until `isIt` is true of one.
template <typename TEST>
std::optional<std::string> FirstAbove(const std::string& path, TEST isIt) {
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        std::string level = path.substr(0, end);
        if (isIt(level)) {
            return level;
        }
    }
    return std::nullopt;
}

bool IsClosed(const std::string& directory) {
    return access(directory.c_str(), X_OK) != 0 && errno == EACCES;
}

bool IsNoDirectory(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

CPathTrouble Unreachable(const std::string& path) {
    const std::optional<std::string> closed = FirstAbove(path, IsClosed);
    return {ETrouble::UNREACHABLE,
            closed ? fmt::format("{} is out of reach: this user may not search {}", path, *closed)
                   : fmt::format("{} leads to where this user may not look", path),
            OTHER_USER};
}

CPathTrouble Missing(const std::string& path) {
    struct stat status = {};
    return {ETrouble::MISSING,
            lstat(path.c_str(), &status) == 0
                ? fmt::format("{} is a symbolic link to what is missing", path)
                : fmt::format("{} is missing", path),
            ""};
}

CPathTrouble NoFolderAbove(const std::string& path) {
    const std::string above = FirstAbove(path, IsNoDirectory).value_or("a path above it");
    return {ETrouble::WRONG_KIND, fmt::format("{} cannot be: {} is no directory", path, above),
            fmt::format("find out what put {} there, and remove it", above)};
}

CPathTrouble NotThere(const std::string& path, int error) {
    switch (error) {
        case ENOENT:
            return Missing(path);
        case EACCES:
            return Unreachable(path);
        case ENOTDIR:
            return NoFolderAbove(path);
        default:
            return {ETrouble::WRONG_KIND, fmt::format("{}: {}", path, std::strerror(error)),
                    "look at the path and its file system"};
    }
}

const char* ForbiddenUse(EPathKind kind, int rights) {
    if (kind == EPathKind::DIRECTORY) {
        return (rights & W_OK) != 0 ? "written into" : "searched";
    }
    return (rights & X_OK) != 0 ? "executed" : (rights & W_OK) != 0 ? "written" : "read";
}

}  // namespace

CPathTrouble ExaminePath(const std::string& path, EPathKind kind, int rights) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return NotThere(path, errno);
    }
    const bool isFile = kind == EPathKind::FILE;
    if (isFile ? !S_ISREG(status.st_mode) : !S_ISDIR(status.st_mode)) {
        return {ETrouble::WRONG_KIND,
                fmt::format("{} is no {}", path, isFile ? "regular file" : "directory"),
                fmt::format("find out what put {} there, and remove it", path)};
    }
    if (access(path.c_str(), rights) != 0) {
        const bool isDenied = errno == EACCES;
        return {ETrouble::FORBIDDEN,
                isDenied
                    ? fmt::format("{} may not be {} by this user", path, ForbiddenUse(kind, rights))
                    : fmt::format("{}: {}", path, std::strerror(errno)),
                isDenied ? OTHER_USER : "look at the file system that it is on"};
    }
    return {};
}

std::string RemedySentence(const CPathTrouble& trouble) {
    std::string text = trouble.remedy;
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z') {
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    }
    return text + '.';
}

}  // namespace qorctl
