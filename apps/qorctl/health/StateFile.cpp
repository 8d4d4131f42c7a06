#include "health/StateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "terminal/OutputFile.h"
#include "util/FileIo.h"

namespace qorctl {
namespace {

constexpr const char* LOCK_END = ".lock";
constexpr const char* IN_USE = "another process is using it";
constexpr int LOCK_TRIES = 3;  // others may make it anew at the same time
constexpr int BESIDE_TRIES = 100;
constexpr int LOCK_FLAGS = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
constexpr int READ_FLAGS = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

// Returns the problem.
std::string ReadRegular(int fd, std::string& text) {
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return std::strerror(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return "not a regular file";
    }
    if (!util::IsTrustedOwner(status.st_uid)) {
        return "it belongs to another user";
    }
    return util::ReadAll(fd, CStateFile::MAX_SIZE, text) ? "" : std::strerror(errno);
}

// Whether nobody but the caller and root can hold the lock: whoever may open a file may lock it.
bool IsPrivate(const struct stat& status) {
    return status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Where a symbolic link leads, in words for people.
std::string PathBehindLink(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) {
        return path;
    }
    const std::filesystem::path named = std::filesystem::weakly_canonical(path, error);
    return error ? path : named.string();
}

}  // namespace

void CStateFile::Fail(const std::string& path, const std::string& what) {
    m_Problem = path + ": " + what;
}

// A private file, made anew if need be. False, with m_Problem set, when there can be none.
bool CStateFile::OpenLock(const util::CFilePlace& place, const std::string& name) {
    const std::string path = m_Path + LOCK_END;
    for (int i = 0; i < LOCK_TRIES; ++i) {
        m_Lock =
            util::CUniqueFd(openat(place.Directory(), name.c_str(), LOCK_FLAGS, S_IRUSR | S_IWUSR));
        struct stat status = {};
        if (!m_Lock.IsOpen() || fstat(m_Lock.Get(), &status) != 0) {
            Fail(path, std::strerror(errno));
            return false;
        }
        if (!S_ISREG(status.st_mode)) {
            Fail(path, "not a regular file");
            return false;
        }
        if (IsPrivate(status)) {
            return true;
        }
        if (unlinkat(place.Directory(), name.c_str(), 0) != 0 && errno != ENOENT) {
            break;
        }
    }
    Fail(path, "another user can hold it");
    return false;
}

CStateFile::ELock CStateFile::Lock() {
    const std::string path = m_Path + LOCK_END;
    std::string problem;
    // The file may have several names, symbolic links, and has one lock.
    const auto place = util::CFilePlace::Find(m_Path, util::ELastLink::FOLLOWED, problem);
    if (place) {
        problem = place->Danger();
    }
    if (!problem.empty()) {
        Fail(path, problem);
        return ELock::FAILED;
    }
    const std::string name = place->Name() + LOCK_END;
    if (!OpenLock(*place, name)) {
        return ELock::FAILED;
    }
    if (flock(m_Lock.Get(), LOCK_EX | LOCK_NB) != 0) {
        const bool isBusy = errno == EWOULDBLOCK;
        Fail(isBusy ? m_Path : path, isBusy ? IN_USE : std::strerror(errno));
        return isBusy ? ELock::BUSY : ELock::FAILED;
    }
    // Another process may have made it anew meanwhile, and hold the new one.
    struct stat held = {};
    struct stat named = {};
    if (fstat(m_Lock.Get(), &held) != 0 ||
        fstatat(place->Directory(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0 ||
        !IsSameFile(held, named)) {
        Fail(m_Path, IN_USE);
        return ELock::BUSY;
    }
    return ELock::TAKEN;
}

CStateFile::ERead CStateFile::Read(std::string& text) {
    std::string problem;
    const auto place = util::CFilePlace::Find(m_Path, util::ELastLink::FOLLOWED, problem);
    if (place) {
        problem = place->Danger();
    }
    if (!problem.empty()) {
        Fail(m_Path, problem);
        return ERead::FAILED;
    }
    // A FIFO in its place must not keep the program waiting.
    const util::CUniqueFd fd(openat(place->Directory(), place->Name().c_str(), READ_FLAGS));
    if (!fd.IsOpen()) {
        const bool missing = errno == ENOENT;
        Fail(m_Path, std::strerror(errno));
        return missing ? ERead::MISSING : ERead::FAILED;
    }
    text.clear();
    problem = ReadRegular(fd.Get(), text);
    if (problem.empty()) {
        return ERead::DONE;
    }
    Fail(m_Path, problem);
    return ERead::FAILED;
}

bool CStateFile::KeepBeside(const std::string& end, std::string& path) {
    std::string problem;
    const auto place = util::CFilePlace::Find(m_Path, util::ELastLink::FOLLOWED, problem);
    if (!place) {
        Fail(m_Path, problem);
        return false;
    }
    const std::string named = PathBehindLink(m_Path);
    for (int i = 1; i <= BESIDE_TRIES; ++i) {
        const std::string number = i > 1 ? "-" + std::to_string(i) : "";
        const std::string name = place->Name() + end + number;
        path = named + end + number;
        // A second name takes no room. Where a file has but one, it is given up for the other.
        if (linkat(place->Directory(), place->Name().c_str(), place->Directory(), name.c_str(),
                   0) == 0 ||
            ((errno == EPERM || errno == EOPNOTSUPP) &&
             renameat2(place->Directory(), place->Name().c_str(), place->Directory(), name.c_str(),
                       RENAME_NOREPLACE) == 0)) {
            return true;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    Fail(path, std::strerror(errno));
    return false;
}

bool CStateFile::Write(const std::string& text) {
    if (text.size() > MAX_SIZE) {
        Fail(m_Path, std::strerror(EFBIG));
        return false;
    }
    return WriteOutputFile(m_Path, text, EFileMode::PRIVATE, m_Problem);
}

}  // namespace qorctl
