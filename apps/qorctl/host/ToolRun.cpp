#include "host/ToolRun.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "base/ServerPaths.h"
#include "cli/ProductVersion.h"
#include "host/Ask.h"
#include "host/PathTrouble.h"
#include "terminal/NamelessFile.h"
#include "util/FileIo.h"
#include "util/UniqueFd.h"

namespace qorctl {
namespace {

constexpr size_t MAX_OUTPUT = size_t{64} << 20;

// Other processes of the same user reach the file by this path while it is open.
std::string PathOf(const util::CUniqueFd& file) {
    return fmt::format("/proc/{}/fd/{}", getpid(), file.Get());
}

std::string ReadWhole(const util::CUniqueFd& file, std::string& problem) {
    std::string text;
    if (!util::ReadAll(file.Get(), MAX_OUTPUT, text)) {
        problem = errno == EFBIG
                      ? fmt::format("the RAID tool printed more than {} MiB", MAX_OUTPUT >> 20U)
                      : fmt::format("the tool's output cannot be read: {}", std::strerror(errno));
        return "";
    }
    return text;
}

// The plug-in takes a tool that this user may not see for one that is missing.
std::string ExplainMissingTool() {
    const CPathTrouble trouble = ExaminePath(KRZ_CLI_PATH, EPathKind::FILE, X_OK);
    return trouble.remedy.empty() ? fmt::format("the RAID tool is not installed ({})", KRZ_CLI_PATH)
                                  : trouble.reason;
}

}  // namespace

CToolRun RunTool(const CPluginChoice& plugin, const std::string& command) {
    CToolRun run;
    const util::CUniqueFd file = OpenNamelessFile();
    if (!file.IsOpen()) {
        run.problem = fmt::format("no file for the tool's output: {}", std::strerror(errno));
        return run;
    }
    const CAnswer answer =
        Ask(plugin, {.operation = [&command, path = PathOf(file)](CMngSrv_QorLibIF& object,
                                                                  CItemList&, CReply& reply) {
                reply.result = object.KRZExecCli(command, &reply.status, path);
                return true;
            }});
    if (answer.outcome == EOutcome::TIME_OVER) {
        run.result = EToolResult::TIME_OUT;
        return run;
    }
    if (!answer.IsAnswered()) {
        run.problem = answer.messages.back().text;
        return run;
    }
    run.result = static_cast<EToolResult>(answer.result);
    run.status = answer.status;
    run.output = ReadWhole(file, run.problem);
    return run;
}

std::string ExplainToolRun(const CToolRun& run) {
    switch (run.result) {
        case EToolResult::DONE:
            return "the RAID tool succeeded";
        case EToolResult::TOOL_ERROR:
            return run.status == 0
                       ? "the RAID tool reported an error, with exit status 0"
                       : fmt::format("the RAID tool failed, exit status {}", run.status);
        case EToolResult::NOT_RUN:
            return "the RAID tool could not be run, or was killed";
        case EToolResult::NOT_INSTALLED:
            return ExplainMissingTool();
        case EToolResult::TIME_OUT:
            return "the RAID tool did not end in time and was killed";
    }
    return fmt::format("the plug-in returned the unknown result 0x{:X}",
                       static_cast<unsigned int>(run.result));
}

std::string ProductVersion(const std::string& output) {
    std::istringstream lines(output);
    try {
        return ReadProductVersion(lines);
    } catch (const std::out_of_range&) {
        return "";
    }
}

}  // namespace qorctl
