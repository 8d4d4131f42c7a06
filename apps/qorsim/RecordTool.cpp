#include "RecordTool.h"

#include <fmt/format.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "FaultServer.h"
#include "Files.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr const char* INTERPRETER = "/opt/tarmica/qorsim/qorsim";
constexpr const char* RECORD_CALL = "record-call";
constexpr const char* REPLAY_CALL = "replay-call";

bool PlaceScript(const std::string& path, const char* verb, std::string& error) {
    if (!WriteFile(path, fmt::format("#!{} {}\n", INTERPRETER, verb), error)) {
        return false;
    }
    std::error_code failure;
    fs::permissions(path, fs::perms(0755), failure);
    if (failure) {
        error = fmt::format("cannot make {} executable: {}", path, failure.message());
    }
    return !failure;
}

// A file of the real server is a mount point here, and cannot be renamed. It is shown under the
// other name, and what is beneath the mount under its own.
bool MoveMount(const std::string& path, const std::string& target, std::string& error) {
    if (WriteFile(target, "", error)) {
        if (mount(path.c_str(), target.c_str(), "none", MS_BIND, nullptr) == 0 &&
            umount2(path.c_str(), MNT_DETACH) == 0) {
            return true;
        }
        error = fmt::format("cannot show {} as {}: {}", path, target, std::strerror(errno));
    }
    return false;
}

bool MoveAside(const std::string& path, std::string& error) {
    const std::string target = TrueTool(path);
    if (std::rename(path.c_str(), target.c_str()) == 0) {
        return true;
    }
    if (errno == EBUSY) {
        return MoveMount(path, target, error);
    }
    error = fmt::format("cannot rename {}: {}", path, std::strerror(errno));
    return false;
}

}  // namespace

bool PlaceInterpreter(std::string& error) {
    return CopySelf(INTERPRETER, error);
}

bool PlaceRecordingTool(const std::string& tool, std::string& error) {
    return MoveAside(ToolPath(tool), error) && PlaceScript(ToolPath(tool), RECORD_CALL, error);
}

bool PlaceReplayingTool(const std::string& tool, std::string& error) {
    return PlaceScript(ToolPath(tool), REPLAY_CALL, error);
}

// The kernel puts the script's path between what stands in its first line and its arguments.
std::optional<int> PlayScriptedTool(const std::vector<std::string>& arguments) {
    constexpr size_t FIRST = 3;
    if (arguments.size() < FIRST || arguments[0] != INTERPRETER) {
        return std::nullopt;
    }
    const std::vector<std::string> rest(arguments.begin() + FIRST, arguments.end());
    if (arguments[1] == RECORD_CALL) {
        return RecordCall(arguments[2], rest);
    }
    if (arguments[1] == REPLAY_CALL) {
        return ReplayCall(arguments[2], rest);
    }
    return std::nullopt;
}

std::string TrueTool(const std::string& path) {
    return path + ".real";
}

}  // namespace qorsim
