#include "Folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "util/FileIo.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr mode_t FILE_MODE = 0644;
constexpr mode_t FOLDER_MODE = 0755;

std::string Reason() {
    return errno == ELOOP ? "it is a symbolic link, or behind one" : std::strerror(errno);
}

// The parts of a path, without those that stay where they are.
std::vector<std::string> PartsOf(const std::string& name) {
    std::vector<std::string> parts;
    for (const fs::path& part : fs::path(name)) {
        if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
    }
    return parts;
}

bool IsLink(int fd) {
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISLNK(status.st_mode);
}

// One step into a folder, -1 with errno when it is none or a link.
int StepInto(int folder, const std::string& part) {
    const int fd = openat(folder, part.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (fd >= 0 && IsLink(fd)) {
        close(fd);
        errno = ELOOP;
        return -1;
    }
    return fd;
}

// What the kernel's own call does, step by step.
int WalkBeneath(int folder, const std::string& name, int flags, mode_t mode) {
    const std::vector<std::string> parts = PartsOf(name);
    int place = dup(folder);
    for (size_t i = 0; place >= 0 && i < parts.size(); ++i) {
        const bool last = i + 1 == parts.size();
        int next = -1;
        if (parts[i] == ".." || parts[i] == "/") {
            errno = EXDEV;
        } else {
            next = last ? openat(place, parts[i].c_str(), flags | O_NOFOLLOW, mode)
                        : StepInto(place, parts[i]);
        }
        const int error = errno;
        close(place);
        errno = error;
        place = next;
    }
    return place;
}

// Older kernels do not know the call, some filters of containers forbid it.
int OpenBeneath(int folder, const std::string& name, int flags, mode_t mode) {
    open_how how = {};
    how.flags = static_cast<unsigned int>(flags);
    how.mode = mode;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
    const long fd = syscall(SYS_openat2, folder, name.c_str(), &how, sizeof(how));
    return fd < 0 && (errno == ENOSYS || errno == EPERM) ? WalkBeneath(folder, name, flags, mode)
                                                         : static_cast<int>(fd);
}

bool IsEmpty(int folder) {
    const int fd = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fd < 0 ? nullptr : fdopendir(fd), closedir);
    size_t count = 0;
    while (entries && readdir(entries.get()) != nullptr) {
        ++count;
    }
    return count == 2;  // itself and the one above
}

// Why no files are made in this folder, "" when they can be.
std::string ProblemOf(int folder, const std::string& path) {
    struct stat status = {};
    if (fstat(folder, &status) != 0) {
        return fmt::format("cannot examine {}: {}", path, std::strerror(errno));
    }
    if (status.st_uid != geteuid()) {
        return fmt::format("{} belongs to another user: name a new directory", path);
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return fmt::format("others may write into {}: name a new directory", path);
    }
    return IsEmpty(folder) ? "" : fmt::format("{} is not empty: name a new directory", path);
}

// A recording's files stand in it, or one folder deeper.
bool MakeFolderOf(int folder, const std::string& name) {
    const std::string above = fs::path(name).parent_path();
    return above.empty() || mkdirat(folder, above.c_str(), FOLDER_MODE) == 0 || errno == EEXIST;
}

}  // namespace

bool IsPathBelow(const std::string& text) {
    const auto isPlain = [](const std::string& name) {
        return !name.empty() && name != "." && name != ".." && name.find('\0') == std::string::npos;
    };
    size_t start = 0;
    for (size_t end = text.find('/'); end != std::string::npos; end = text.find('/', start)) {
        if (!isPlain(text.substr(start, end - start))) {
            return false;
        }
        start = end + 1;
    }
    return isPlain(text.substr(start));
}

std::optional<std::string> ReadBeneath(const std::string& folder, const std::string& name,
                                       std::string& error, size_t limit) {
    const std::string path = (fs::path(folder) / name).string();
    const util::CUniqueFd place(
        open(folder.empty() ? "." : folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const int fd = place.IsOpen() ? OpenBeneath(place.Get(), name, READ_FLAGS, 0) : -1;
    if (fd < 0) {
        error = fmt::format("cannot read {}: {}", path, Reason());
        return std::nullopt;
    }
    return ReadOpened(fd, path, error, limit);
}

std::optional<CNewFolder> CNewFolder::Make(const std::string& path, std::string& error) {
    if (mkdir(path.c_str(), FOLDER_MODE) != 0 && errno != EEXIST) {
        error = fmt::format("cannot create {}: {}", path, std::strerror(errno));
        return std::nullopt;
    }
    util::CUniqueFd fd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.IsOpen()) {
        error = fmt::format("cannot open {}: {}", path, Reason());
        return std::nullopt;
    }
    error = ProblemOf(fd.Get(), path);
    return error.empty() ? std::optional(CNewFolder(path, std::move(fd))) : std::nullopt;
}

bool CNewFolder::Enter(std::string& error) const {
    const bool entered = fchdir(m_Fd.Get()) == 0;
    if (!entered) {
        error = fmt::format("cannot enter {}: {}", m_Path, std::strerror(errno));
    }
    return entered;
}

bool CNewFolder::Write(const std::string& name, const std::string& text, std::string& error) const {
    const int fd =
        MakeFolderOf(m_Fd.Get(), name)
            ? OpenBeneath(m_Fd.Get(), name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                          FILE_MODE)
            : -1;
    const bool written = fd >= 0 && util::WriteAll(fd, text);
    std::string reason = written ? "" : Reason();
    if (fd >= 0 && close(fd) != 0 && written) {
        reason = Reason();
    }
    if (!reason.empty()) {
        error = fmt::format("cannot write {}/{}: {}", m_Path, name, reason);
    }
    return reason.empty();
}

}  // namespace qorsim
