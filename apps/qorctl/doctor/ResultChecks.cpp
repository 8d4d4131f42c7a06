// The directory of the result files, which are read back as trusted input.
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"

namespace fs = std::filesystem;

namespace qorctl::doctor {
namespace {

constexpr const char* RESULT_FILE_END = "MngSrvRaid.txt";
constexpr mode_t OWNER_ONLY = 0700;
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

}  // namespace

CFinding ExamineResultDirectory(CServerFacts& facts) {
    const std::string path = facts.ResultDirectory();
    const std::optional<mode_t> mode = ModeOf(path);
    if (mode && (!S_ISDIR(*mode) || access(path.c_str(), W_OK | X_OK) != 0)) {
        return Fail(path + " is no directory that this user may write into",
                    "remove it, or run as the server's user");
    }
    if (mode) {
        return Ok(path);
    }
    const std::string above = ExistingAbove(path);
    if (access(above.c_str(), W_OK | X_OK) != 0) {
        return Fail(fmt::format("{} is missing and cannot be made in {}", path, above),
                    "run as the server's user");
    }
    return Warn(path + " is missing", "nothing: the next request makes it");
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
