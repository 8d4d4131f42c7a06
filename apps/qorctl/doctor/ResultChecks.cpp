// The directory of the result files, which are read back as trusted input.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <optional>

#include "base/ServerPaths.h"
#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"
#include "host/PathTrouble.h"
#include "util/FileIo.h"
#include "util/UniqueFd.h"

namespace fs = std::filesystem;

namespace qorctl::doctor {
namespace {

constexpr mode_t OWNER_ONLY = 0700;
constexpr size_t TRIAL_SIZE = 65536;
constexpr unsigned long long LARGEST_REPORT = 16ULL << 20U;
constexpr unsigned long long FEW_FILES = 16;
// Longer than all attempts of a command that runs into its time limit.
constexpr std::chrono::minutes LONGEST_RUN(10);

// Of a symbolic link itself: who made it decides where reports go.
std::optional<mode_t> ModeOf(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_mode;
}

CFinding NoDirectory() {
    return Ok("there is no result directory yet");
}

// The first level above `path` that exists.
std::string ExistingAbove(const std::string& path) {
    fs::path level = fs::path(path).parent_path();
    std::error_code error;
    while (!fs::exists(level, error) && level != level.parent_path()) {
        level = level.parent_path();
    }
    return level.string();
}

bool IsOld(const fs::directory_entry& entry) {
    std::error_code error;
    return fs::file_time_type::clock::now() - entry.last_write_time(error) > LONGEST_RUN;
}

bool IsResultFile(const fs::directory_entry& entry) {
    std::error_code error;
    return entry.symlink_status(error).type() == fs::file_type::regular &&
           entry.path().filename().string().ends_with(RESULT_FILE_END);
}

// What is left of a file system.
struct CSpace {
    std::optional<unsigned long long> bytes;
    std::optional<unsigned long long> files;  // nothing where there is no limit
};

CSpace SpaceAt(const std::string& path) {
    struct statvfs status = {};
    if (statvfs(path.c_str(), &status) != 0) {
        return {};
    }
    CSpace space = {.bytes = 1ULL * status.f_bavail * status.f_frsize, .files = std::nullopt};
    if (status.f_files != 0) {
        space.files = status.f_favail;
    }
    return space;
}

std::string SpaceText(const CSpace& space) {
    if (!space.bytes) {
        return "free space is not known";
    }
    return fmt::format("{} KiB free", *space.bytes >> 10U) +
           (space.files ? fmt::format(", {} inodes", *space.files) : "");
}

bool IsScarce(const CSpace& space) {
    return (space.bytes && *space.bytes < LARGEST_REPORT) ||
           (space.files && *space.files < FEW_FILES);
}

// Writes as much as a report of a few drives has, and reads it back. Empty when that went well.
std::string ProblemOfWriting(int file) {
    const std::string text(TRIAL_SIZE, 'q');
    std::string back;
    if (!util::WriteAll(file, text) || fsync(file) != 0) {
        return fmt::format("a file of {} KiB cannot be written: {}", TRIAL_SIZE >> 10U,
                           std::strerror(errno));
    }
    const bool isRead = lseek(file, 0, SEEK_SET) == 0 && util::ReadAll(file, TRIAL_SIZE, back);
    return isRead && back == text ? "" : "a file cannot be read back as it was written";
}

std::string TryFile(const std::string& path) {
    const util::CUniqueFd file(
        open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.IsOpen()) {
        return fmt::format("no file can be made: {}", std::strerror(errno));
    }
    std::string problem = ProblemOfWriting(file.Get());
    unlink(path.c_str());
    return problem;
}

}  // namespace

CFinding ExamineResultDirectory(CServerFacts& facts) {
    const std::string path = facts.ResultDirectory();
    const std::optional<mode_t> mode = ModeOf(path);
    if (mode && S_ISLNK(*mode)) {
        return Fail(path + " is a symbolic link: reports would go elsewhere", "remove it");
    }
    const CPathTrouble trouble = ExaminePath(path, EPathKind::DIRECTORY, W_OK | X_OK);
    if (trouble.trouble == ETrouble::NONE) {
        return Ok(path);
    }
    if (trouble.trouble != ETrouble::MISSING) {
        return Fail(trouble.reason, trouble.remedy);
    }
    const std::string above = ExistingAbove(path);
    if (access(above.c_str(), W_OK | X_OK) != 0) {
        return Fail(fmt::format("{} is missing and cannot be made in {}", path, above),
                    "run as the server's user");
    }
    return Warn(path + " is missing", "nothing: the next request makes it");
}

CFinding ExamineResultSpace(CServerFacts& facts) {
    const std::string path = facts.ResultDirectory();
    if (ExamineResultDirectory(facts).verdict != EVerdict::OK) {
        return NotExamined("there is no result directory that can be written into");
    }
    const std::string problem =
        TryFile(fmt::format("{}/doctor-{}_{}", path, getpid(), RESULT_FILE_END));
    const CSpace space = SpaceAt(path);
    const std::string remedy =
        fmt::format("free some of the file system of {}: see df and df -i", path);
    if (!problem.empty()) {
        return Fail(
            fmt::format("{}; {}: reports come back short or empty", problem, SpaceText(space)),
            remedy);
    }
    const std::string text = "written and read back; " + SpaceText(space);
    return IsScarce(space) ? Warn(text + ": less than a large report needs", remedy) : Ok(text);
}

CFinding ExamineResultMode(CServerFacts& facts) {
    const std::string path = facts.ResultDirectory();
    const std::optional<mode_t> mode = ModeOf(path);
    if (!mode) {
        return NoDirectory();
    }
    const mode_t bits = *mode & 07777U;
    const std::string text = fmt::format("mode {:04o}", bits);
    const std::string remedy = fmt::format("chmod 0700 {}", path);
    if ((bits & (S_IWGRP | S_IWOTH)) != 0) {
        return Fail(text + ": others may put reports there that the plug-in takes for true",
                    remedy);
    }
    return bits == OWNER_ONLY ? Ok(text) : Warn(text + ": others may read along", remedy);
}

CFinding JudgeOwner(uid_t owner, uid_t user) {
    if (owner == user) {
        return Ok(fmt::format("user {}", owner));
    }
    if (owner == 0) {
        return Warn(fmt::format("user 0, and this is user {}", user),
                    "run the doctor as the server's user");
    }
    return Fail(fmt::format("user {}, and this is user {}: that user decides what is reported",
                            owner, user),
                "run as the server's user, or remove the directory");
}

CFinding ExamineResultOwner(CServerFacts& facts) {
    struct stat status = {};
    return stat(facts.ResultDirectory().c_str(), &status) == 0
               ? JudgeOwner(status.st_uid, geteuid())
               : NoDirectory();
}

CFinding ExamineLeftovers(CServerFacts& facts) {
    const std::string path = facts.ResultDirectory();
    std::error_code error;
    size_t left = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(path, error)) {
        if (!IsResultFile(entry)) {
            return Fail(entry.path().string() + " is no result file: who put it there?",
                        "find out, then remove it");
        }
        left += IsOld(entry) ? 1U : 0U;
    }
    if (left > 0) {
        return Warn(fmt::format("{} result files of requests that were cut short", left),
                    fmt::format("remove the files of {} while the server is stopped", path));
    }
    return Ok("none");
}

}  // namespace qorctl::doctor
