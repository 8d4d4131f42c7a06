#include "util/FilePlace.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace util {
namespace {

constexpr int OBJECT_FLAGS = O_PATH | O_NOFOLLOW | O_CLOEXEC;
constexpr int DIRECTORY_FLAGS = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr int MAX_LINKS = 40;  // as the kernel has it

enum class EStep { ON, FOUND, FAILED };

bool MayOthersWrite(const struct stat& directory) {
    return (directory.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// One walk along a path.
class CPathWalk {
public:
    CPathWalk(std::string path, ELastLink lastLink)
        : m_Rest(std::move(path)), m_LastLink(lastLink) {}

    bool Walk();

    CUniqueFd m_Directory;
    std::string m_Name;
    std::string m_Problem;

private:
    bool Begin();
    EStep Step();
    EStep Enter(CUniqueFd object);
    bool IsTrustedLink(uid_t owner) const;
    bool Follow(const CUniqueFd& link, uid_t owner);
    bool Fail(std::string problem);
    bool FailBySystem(int error) { return Fail(std::strerror(error)); }

    std::string m_Rest;
    const ELastLink m_LastLink;
    int m_Links = 0;
};

bool CPathWalk::Fail(std::string problem) {
    m_Problem = std::move(problem);
    return false;
}

// Where the rest begins: at the root, or in the directory so far.
bool CPathWalk::Begin() {
    if (m_Rest.starts_with('/')) {
        m_Directory = CUniqueFd(open("/", DIRECTORY_FLAGS));
    } else if (!m_Directory.IsOpen()) {
        m_Directory = CUniqueFd(open(".", DIRECTORY_FLAGS));
    }
    return m_Directory.IsOpen() || FailBySystem(errno);
}

bool CPathWalk::Walk() {
    if (m_Rest.empty()) {
        return FailBySystem(ENOENT);
    }
    if (!Begin()) {
        return false;
    }
    EStep step = EStep::ON;
    while (step == EStep::ON) {
        step = Step();
    }
    return step == EStep::FOUND;
}

bool IsDots(std::string_view name) {
    return name == "." || name == "..";
}

EStep CPathWalk::Step() {
    m_Rest.erase(0, std::min(m_Rest.find_first_not_of('/'), m_Rest.size()));
    if (m_Rest.empty()) {
        FailBySystem(EISDIR);
        return EStep::FAILED;
    }
    m_Name = m_Rest.substr(0, m_Rest.find('/'));
    m_Rest.erase(0, m_Name.size());
    CUniqueFd object(openat(m_Directory.Get(), m_Name.c_str(), OBJECT_FLAGS));
    if (object.IsOpen()) {
        return Enter(std::move(object));
    }
    if (errno == ENOENT && m_Rest.empty()) {
        return EStep::FOUND;
    }
    FailBySystem(errno);
    return EStep::FAILED;
}

EStep CPathWalk::Enter(CUniqueFd object) {
    struct stat status = {};
    if (fstat(object.Get(), &status) != 0) {
        FailBySystem(errno);
        return EStep::FAILED;
    }
    const bool isLast = m_Rest.empty() && !IsDots(m_Name);
    if (S_ISLNK(status.st_mode) && !(isLast && m_LastLink == ELastLink::KEPT)) {
        return Follow(object, status.st_uid) ? EStep::ON : EStep::FAILED;
    }
    if (isLast) {
        return EStep::FOUND;
    }
    if (S_ISDIR(status.st_mode)) {
        m_Directory = std::move(object);
        return EStep::ON;
    }
    FailBySystem(ENOTDIR);
    return EStep::FAILED;
}

// The owner of "/" is root, whatever its number in this user namespace is. Without a number of its
// own it shares one with everybody else.
bool CPathWalk::IsTrustedLink(uid_t owner) const {
    struct stat root = {};
    struct stat directory = {};
    return IsTrustedOwner(owner) ||
           (stat("/", &root) == 0 && owner == root.st_uid &&
            fstat(m_Directory.Get(), &directory) == 0 && !MayOthersWrite(directory));
}

bool CPathWalk::Follow(const CUniqueFd& link, uid_t owner) {
    if (!IsTrustedLink(owner)) {
        return Fail(m_Name + " is a symbolic link of another user");
    }
    if (++m_Links > MAX_LINKS) {
        return FailBySystem(ELOOP);
    }
    std::array<char, PATH_MAX> target = {};
    const ssize_t size = readlinkat(link.Get(), "", target.data(), target.size());
    if (size <= 0) {
        return FailBySystem(size == 0 ? ENOENT : errno);
    }
    m_Rest.insert(0, std::string_view(target.data(), static_cast<size_t>(size)));
    return Begin();
}

}  // namespace

bool IsTrustedOwner(uid_t owner) {
    return owner == 0 || owner == geteuid();
}

std::optional<CFilePlace> CFilePlace::Find(const std::string& path, ELastLink lastLink,
                                           std::string& problem) {
    CPathWalk walk(path, lastLink);
    if (!walk.Walk()) {
        problem = walk.m_Problem;
        return std::nullopt;
    }
    return CFilePlace(std::move(walk.m_Directory), std::move(walk.m_Name));
}

std::string CFilePlace::Danger() const {
    struct stat status = {};
    if (fstat(Directory(), &status) != 0) {
        return std::strerror(errno);
    }
    if (!IsTrustedOwner(status.st_uid)) {
        return "its directory is not safe: it belongs to another user";
    }
    return MayOthersWrite(status) ? "its directory is not safe: other users may write in it" : "";
}

}  // namespace util
