#include "terminal/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "terminal/TerminalText.h"
#include "util/FileIo.h"
#include "util/FilePlace.h"
#include "util/ReplaceFile.h"
#include "util/UniqueFd.h"

namespace qorctl {
namespace {

constexpr mode_t ANY_MODE = 0666;
constexpr mode_t PRIVATE_MODE = 0600;
constexpr mode_t READABLE_MODE = 0644;
constexpr mode_t KEPT_MODE = 0755;
constexpr mode_t KEPT_FOR_OTHERS = 0705;  // all but the group's
constexpr const char* ACCESS_LIST = "system.posix_acl_access";
constexpr int IN_PLACE_FLAGS = O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
constexpr const char* TEMPORARY_HEAD = ".qorctl-";

// Of programs that are told a file's name where they should write to a descriptor.
constexpr std::string_view STANDARD_OUTPUT = "/dev/stdout";
constexpr std::string_view STANDARD_ERROR = "/dev/stderr";
constexpr std::string_view DESCRIPTOR_FOLDERS[] = {"/dev/fd/", "/proc/self/fd/"};

// While there is an object, signals wait: one that ends the program would leave a temporary file.
class CSignalDelay {
public:
    CSignalDelay() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_Before);
    }
    ~CSignalDelay() { pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }
    CSignalDelay(const CSignalDelay&) = delete;  // stands for the state of one thread
    CSignalDelay& operator=(const CSignalDelay&) = delete;

private:
    sigset_t m_Before = {};
};

std::string ErrorText() {
    return std::strerror(errno);
}

// The number of the descriptor that `path` is a name of.
std::optional<int> DescriptorNumber(std::string_view path) {
    if (path == STANDARD_OUTPUT || path == STANDARD_ERROR) {
        return path == STANDARD_OUTPUT ? STDOUT_FILENO : STDERR_FILENO;
    }
    for (const std::string_view folder : DESCRIPTOR_FOLDERS) {
        const std::string_view name = path.substr(path.starts_with(folder) ? folder.size() : 0);
        int number = -1;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
        if (error == std::errc() && end == name.data() + name.size() && number >= 0 &&
            name.size() < path.size()) {
            return number;
        }
    }
    return std::nullopt;
}

// For a terminal the pieces are put together first: what is hidden could be cut in two.
bool GiveVisible(int fd, const CGivePieces& give) {
    std::string text;
    const bool isWhole = give([&text](std::string_view piece) {
        text += piece;
        return true;
    });
    return isWhole && util::WriteAll(fd, MakeLinesVisible(text, DetectTextStyle(fd)));
}

bool WriteAsItStands(int fd, const CGivePieces& give, std::string& problem) {
    const auto take = [fd](std::string_view piece) { return util::WriteAll(fd, piece); };
    if (isatty(fd) == 1 ? GiveVisible(fd, give) : give(take)) {
        return true;
    }
    problem = ErrorText();
    return false;
}

// What is at the place; nothing when there is nothing.
std::optional<struct stat> StatusOf(const util::CFilePlace& place) {
    struct stat status = {};
    return fstatat(place.Directory(), place.Name().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
               ? std::make_optional(status)
               : std::nullopt;
}

// The file that is about to be replaced. Another user's lends no rights: that user could have
// prepared it.
std::optional<struct stat> OldFile(const util::CFilePlace& place) {
    const std::optional<struct stat> old = StatusOf(place);
    return old && S_ISREG(old->st_mode) && old->st_uid == geteuid() ? old : std::nullopt;
}

// Where users are listed, the group's bits are the most that the list gives, not the group's
// rights. A file that cannot be read to see that counts as one with a list.
bool ListsUsers(const util::CFilePlace& place) {
    const util::CUniqueFd fd(openat(place.Directory(), place.Name().c_str(),
                                    O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return !fd.IsOpen() || fgetxattr(fd.Get(), ACCESS_LIST, nullptr, 0) >= 0;
}

mode_t KeptMode(const util::CFilePlace& place, const struct stat& old, int newFile) {
    struct stat created = {};
    const bool sameGroup = fstat(newFile, &created) == 0 && created.st_gid == old.st_gid;
    return old.st_mode & (sameGroup && !ListsUsers(place) ? KEPT_MODE : KEPT_FOR_OTHERS);
}

bool WriteInPlace(const util::CFilePlace& place, const CGivePieces& give, std::string& problem) {
    util::CUniqueFd fd(openat(place.Directory(), place.Name().c_str(), IN_PLACE_FLAGS));
    struct stat status = {};
    if (!fd.IsOpen() || fstat(fd.Get(), &status) != 0) {
        problem = ErrorText();
        return false;
    }
    if (S_ISFIFO(status.st_mode) && !util::IsTrustedOwner(status.st_uid)) {
        problem = "a pipe of another user";
        return false;
    }
    if (S_ISREG(status.st_mode)) {
        problem = "it has become another file";
        return false;
    }
    if (!WriteAsItStands(fd.Get(), give, problem)) {
        return false;
    }
    problem = fd.Close() ? "" : ErrorText();
    return problem.empty();
}

// The name is on disk once its directory is. Not every file system can say so; the file's own
// content is safe already.
void SyncDirectory(const util::CFilePlace& place) {
    const util::CUniqueFd fd(openat(place.Directory(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.IsOpen()) {
        fsync(fd.Get());
    }
}

// A file that replaces none of the caller's gets the rights that the system gives a new one, by the
// umask or by what the directory says about new files.
bool Fill(const util::CFilePlace& place, const CGivePieces& give, EFileMode mode) {
    const std::optional<struct stat> old = OldFile(place);
    const bool isNew = mode == EFileMode::KEPT && !old;
    util::CReplacement file(place.Directory(), TEMPORARY_HEAD, isNew ? ANY_MODE : PRIVATE_MODE);
    if (!file.IsOpen()) {
        return false;
    }
    if (!isNew) {
        const mode_t wanted = mode == EFileMode::PRIVATE    ? PRIVATE_MODE
                              : mode == EFileMode::READABLE ? READABLE_MODE
                                                            : KeptMode(place, *old, file.Get());
        if (fchmod(file.Get(), wanted) != 0) {
            return false;
        }
    }
    return give([&file](std::string_view piece) { return file.Append(piece); }) && file.Finish() &&
           file.TakePlace(place.Name());
}

bool Replace(const util::CFilePlace& place, const CGivePieces& give, EFileMode mode,
             std::string& problem) {
    const CSignalDelay delay;
    if (!Fill(place, give, mode)) {
        problem = ErrorText();
        return false;
    }
    SyncDirectory(place);
    return true;
}

bool WriteToPlace(const std::string& path, const CGivePieces& give, EFileMode mode,
                  std::string& problem) {
    const std::optional<util::CFilePlace> place =
        util::CFilePlace::Find(path, util::ELastLink::FOLLOWED, problem);
    if (!place) {
        return false;
    }
    const std::optional<struct stat> status = StatusOf(*place);
    const bool isInPlace = status && !S_ISREG(status->st_mode);
    if (mode == EFileMode::PRIVATE) {
        problem = isInPlace && !S_ISDIR(status->st_mode) ? "not a regular file" : place->Danger();
        return problem.empty() && Replace(*place, give, mode, problem);
    }
    return isInPlace ? WriteInPlace(*place, give, problem) : Replace(*place, give, mode, problem);
}

}  // namespace

bool WriteOutputFile(const std::string& path, const std::string& text, EFileMode mode,
                     std::string& problem) {
    const auto give = [&text](const CTakePiece& take) { return take(text); };
    return WriteOutputFile(path, CGivePieces(give), mode, problem);
}

bool WriteOutputFile(const std::string& path, const CGivePieces& give, EFileMode mode,
                     std::string& problem) {
    const std::optional<int> descriptor =
        mode == EFileMode::PRIVATE ? std::nullopt : DescriptorNumber(path);
    std::string reason;
    const bool written = descriptor ? WriteAsItStands(*descriptor, give, reason)
                                    : WriteToPlace(path, give, mode, reason);
    if (!written) {
        problem = fmt::format("{} could not be written: {}", path, reason);
    }
    return written;
}

}  // namespace qorctl
