#include "terminal/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "terminal/FilePlace.h"
#include "terminal/TerminalText.h"
#include "util/UniqueFd.h"

namespace qorctl {
namespace {

constexpr mode_t ANY_MODE = 0666;
constexpr mode_t PRIVATE_MODE = 0600;
constexpr mode_t KEPT_MODE = 0755;
constexpr mode_t KEPT_FOR_OTHERS = 0705;  // all but the group's
constexpr const char* ACCESS_LIST = "system.posix_acl_access";
constexpr int NEW_FILE_FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
constexpr int IN_PLACE_FLAGS = O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
constexpr int MAX_NAMES = 100;           // tries for a name that is not taken
constexpr int READER_PATIENCE = 10'000;  // milliseconds for a reader to take something

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

// Waits for a reader that takes its time.
bool WaitToWrite(int fd) {
    pollfd wait = {.fd = fd, .events = POLLOUT, .revents = 0};
    const int ready = poll(&wait, 1, READER_PATIENCE);
    if (ready == 0) {
        errno = ETIMEDOUT;
    }
    return ready > 0 || (ready < 0 && errno == EINTR);
}

bool WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(fd, text.data(), text.size());
        if (count < 0 && errno != EINTR && (errno != EAGAIN || !WaitToWrite(fd))) {
            return false;
        }
        text.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return true;
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

bool WriteAsItStands(int fd, const std::string& text, std::string& problem) {
    const bool isTerminal = isatty(fd) == 1;
    if (WriteAll(fd, isTerminal ? MakeLinesVisible(text, DetectTextStyle(fd)) : text)) {
        return true;
    }
    problem = ErrorText();
    return false;
}

// What is at the place; nothing when there is nothing.
std::optional<struct stat> StatusOf(const CFilePlace& place) {
    struct stat status = {};
    return fstatat(place.Directory(), place.Name().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
               ? std::make_optional(status)
               : std::nullopt;
}

// The file that is about to be replaced. Another user's lends no rights: that user could have
// prepared it.
std::optional<struct stat> OldFile(const CFilePlace& place) {
    const std::optional<struct stat> old = StatusOf(place);
    return old && S_ISREG(old->st_mode) && old->st_uid == geteuid() ? old : std::nullopt;
}

// Where users are listed, the group's bits are the most that the list gives, not the group's
// rights. A file that cannot be read to see that counts as one with a list.
bool ListsUsers(const CFilePlace& place) {
    const util::CUniqueFd fd(openat(place.Directory(), place.Name().c_str(),
                                    O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return !fd.IsOpen() || fgetxattr(fd.Get(), ACCESS_LIST, nullptr, 0) >= 0;
}

mode_t KeptMode(const CFilePlace& place, const struct stat& old, int newFile) {
    struct stat created = {};
    const bool sameGroup = fstat(newFile, &created) == 0 && created.st_gid == old.st_gid;
    return old.st_mode & (sameGroup && !ListsUsers(place) ? KEPT_MODE : KEPT_FOR_OTHERS);
}

bool WriteInPlace(const CFilePlace& place, const std::string& text, std::string& problem) {
    util::CUniqueFd fd(openat(place.Directory(), place.Name().c_str(), IN_PLACE_FLAGS));
    struct stat status = {};
    if (!fd.IsOpen() || fstat(fd.Get(), &status) != 0) {
        problem = ErrorText();
        return false;
    }
    if (S_ISFIFO(status.st_mode) && !IsTrustedOwner(status.st_uid)) {
        problem = "a pipe of another user";
        return false;
    }
    if (S_ISREG(status.st_mode)) {
        problem = "it has become another file";
        return false;
    }
    if (!WriteAsItStands(fd.Get(), text, problem)) {
        return false;
    }
    problem = fd.Close() ? "" : ErrorText();
    return problem.empty();
}

// A new, empty file beside the place; its name in `name`.
util::CUniqueFd MakeTemporary(const CFilePlace& place, mode_t mode, std::string& name) {
    util::CUniqueFd fd;
    for (int i = 0; i < MAX_NAMES && !fd.IsOpen() && (i == 0 || errno == EEXIST); ++i) {
        uint64_t number = 0;
        if (getrandom(&number, sizeof(number), 0) != static_cast<ssize_t>(sizeof(number))) {
            break;
        }
        name = fmt::format(".qorctl-{:016x}", number);
        fd = util::CUniqueFd(openat(place.Directory(), name.c_str(), NEW_FILE_FLAGS, mode));
    }
    return fd;
}

// The name is on disk once its directory is. Not every file system can say so; the file's own
// content is safe already.
void SyncDirectory(const CFilePlace& place) {
    const util::CUniqueFd fd(openat(place.Directory(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.IsOpen()) {
        fsync(fd.Get());
    }
}

bool Fill(util::CUniqueFd& fd, const std::string& text) {
    return WriteAll(fd.Get(), text) && fsync(fd.Get()) == 0 && fd.Close();
}

// A file that replaces none of the caller's gets the rights that the system gives a new one, by the
// umask or by what the directory says about new files.
util::CUniqueFd MakeWithRights(const CFilePlace& place, EFileMode mode, std::string& name) {
    const std::optional<struct stat> old = OldFile(place);
    if (mode == EFileMode::KEPT && !old) {
        return MakeTemporary(place, ANY_MODE, name);
    }
    util::CUniqueFd fd = MakeTemporary(place, PRIVATE_MODE, name);
    const mode_t kept =
        mode == EFileMode::PRIVATE || !fd.IsOpen() ? PRIVATE_MODE : KeptMode(place, *old, fd.Get());
    if (fd.IsOpen() && fchmod(fd.Get(), kept) != 0) {
        const int error = errno;
        unlinkat(place.Directory(), name.c_str(), 0);
        errno = error;
        return util::CUniqueFd();
    }
    return fd;
}

bool Replace(const CFilePlace& place, const std::string& text, EFileMode mode,
             std::string& problem) {
    const CSignalDelay delay;
    std::string temporary;
    util::CUniqueFd fd = MakeWithRights(place, mode, temporary);
    if (!fd.IsOpen()) {
        problem = ErrorText();
        return false;
    }
    if (Fill(fd, text) && renameat(place.Directory(), temporary.c_str(), place.Directory(),
                                   place.Name().c_str()) == 0) {
        SyncDirectory(place);
        return true;
    }
    problem = ErrorText();
    unlinkat(place.Directory(), temporary.c_str(), 0);
    return false;
}

bool WriteToPlace(const std::string& path, const std::string& text, EFileMode mode,
                  std::string& problem) {
    const std::optional<CFilePlace> place = CFilePlace::Find(path, ELastLink::FOLLOWED, problem);
    if (!place) {
        return false;
    }
    const std::optional<struct stat> status = StatusOf(*place);
    return status && !S_ISREG(status->st_mode) ? WriteInPlace(*place, text, problem)
                                               : Replace(*place, text, mode, problem);
}

}  // namespace

bool WriteOutputFile(const std::string& path, const std::string& text, EFileMode mode,
                     std::string& problem) {
    const std::optional<int> descriptor = DescriptorNumber(path);
    std::string reason;
    const bool written = descriptor ? WriteAsItStands(*descriptor, text, reason)
                                    : WriteToPlace(path, text, mode, reason);
    if (!written) {
        problem = fmt::format("{} could not be written: {}", path, reason);
    }
    return written;
}

}  // namespace qorctl
