#include "PrivateMounts.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "util/UniqueFd.h"

namespace qorsim {
namespace {

constexpr const char* SIMULATED_NAME = "tarmica";
constexpr const char* TMPFS_OPTIONS = "mode=0755";

[[noreturn]] void Fail(const std::string& what, const std::string& remedy = "") {
    throw std::runtime_error(what + ": " + std::strerror(errno) +
                             (remedy.empty() ? "" : " (" + remedy + ")"));
}

util::CUniqueFd Open(const char* path) {
    util::CUniqueFd fd(open(path, O_RDONLY | O_CLOEXEC));
    if (!fd.IsOpen()) {
        Fail(std::string("cannot open ") + path);
    }
    return fd;
}

void WriteProcFile(const char* path, const std::string& text) {
    const int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        Fail(std::string("cannot open ") + path);
    }
    const ssize_t written = write(fd, text.data(), text.size());
    const int error = errno;
    close(fd);
    if (written != static_cast<ssize_t>(text.size())) {
        errno = error;
        Fail(std::string("cannot write ") + path);
    }
}

// A user who is not root gets a user namespace in which it stays the same user.
void UnshareUserAndMounts() {
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        Fail("cannot make a user namespace",
             "run as root, or let ordinary users have them: sysctl -w "
             "kernel.unprivileged_userns_clone=1 user.max_user_namespaces=1024 (in a chroot only "
             "root can); or lay the server out in a container with 'qorsim install'");
    }
    WriteProcFile("/proc/self/setgroups", "deny");
    WriteProcFile("/proc/self/uid_map", uid + " " + uid + " 1");
    WriteProcFile("/proc/self/gid_map", gid + " " + gid + " 1");
}

bool MakePrivateFromRoot() {
    return mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0;
}

// The root directory of a chroot is no mount point, and only mount points can be made private.
// Entering the namespace that the process is already in takes it to the namespace's own root, which
// is one; afterwards the process goes back into its chroot and its working directory.
void MakePrivateFromOutsideChroot() {
    const util::CUniqueFd root = Open("/");
    const util::CUniqueFd workingDirectory = Open(".");
    const util::CUniqueFd mountNamespace = Open("/proc/self/ns/mnt");
    if (setns(mountNamespace.Get(), CLONE_NEWNS) != 0) {
        Fail("cannot leave the chroot for a moment");
    }
    const bool isPrivate = MakePrivateFromRoot();
    const int error = errno;
    if (fchdir(root.Get()) != 0 || chroot(".") != 0 || fchdir(workingDirectory.Get()) != 0) {
        Fail("cannot go back into the chroot");
    }
    if (!isPrivate) {
        errno = error;
        Fail("cannot make the mounts private");
    }
}

void UnshareMounts() {
    if (unshare(CLONE_NEWNS) != 0) {
        if (errno != EPERM) {
            Fail("cannot make a mount namespace");
        }
        UnshareUserAndMounts();
    }
    if (MakePrivateFromRoot()) {
        return;
    }
    if (errno != EINVAL) {
        Fail("cannot make the mounts private");
    }
    MakePrivateFromOutsideChroot();
}

void MountTmpfs(const std::string& directory) {
    if (mount("qorsim", directory.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, TMPFS_OPTIONS) != 0) {
        Fail("cannot mount a file system in memory on " + directory);
    }
}

void BindMount(const std::string& source, const std::string& target) {
    if (mount(source.c_str(), target.c_str(), "none", MS_BIND | MS_REC, nullptr) != 0) {
        Fail("cannot keep " + target + " visible");
    }
}

void MakeDirectory(const std::string& path) {
    if (mkdir(path.c_str(), 0755) != 0) {
        Fail("cannot create " + path);
    }
}

// Makes one entry of a directory that has been mounted over visible again.
void RestoreEntry(const std::string& source, const std::string& target) {
    struct stat status = {};
    if (lstat(source.c_str(), &status) != 0) {
        Fail("cannot examine " + source);
    }
    if (S_ISLNK(status.st_mode)) {
        std::array<char, PATH_MAX> link = {};
        if (readlink(source.c_str(), link.data(), link.size() - 1) < 0 ||
            symlink(link.data(), target.c_str()) != 0) {
            Fail("cannot copy the symbolic link " + target);
        }
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        MakeDirectory(target);
    } else {
        const int fd = open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) {
            Fail("cannot create " + target);
        }
        close(fd);
    }
    BindMount(source, target);
}

}  // namespace

void EnterMountNamespace() {
    UnshareMounts();
}

// Mounts a file system in memory over the directory and makes its entries visible again.
void CoverWithWritableCopy(const std::string& parent) {
    const int fd = open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        Fail("cannot open " + parent, "create it: mkdir " + parent);
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(fd), closedir);
    if (!entries) {
        Fail("cannot read " + parent);
    }
    MountTmpfs(parent);
    const std::string hidden = "/proc/self/fd/" + std::to_string(fd) + "/";
    while (const dirent* entry = readdir(entries.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            RestoreEntry(hidden + name, parent + "/" + name);
        }
    }
}

namespace {

void MountEmptyDirectory(const std::string& parent) {
    const std::string directory = parent + "/" + SIMULATED_NAME;
    struct stat status = {};
    if (stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        MountTmpfs(directory);
        return;
    }
    CoverWithWritableCopy(parent);
    MakeDirectory(directory);
}

}  // namespace

void EnterPrivateMounts() {
    UnshareMounts();
    MountEmptyDirectory("/opt");
    MountEmptyDirectory("/etc/opt");
}

}  // namespace qorsim
