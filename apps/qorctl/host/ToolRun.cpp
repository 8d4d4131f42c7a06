#include "host/ToolRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "host/Request.h"
#include "util/UniqueFd.h"

namespace qorctl {
namespace {

constexpr std::string_view VERSION_KEY = "Product Version";

constexpr const char* FOLDER = "/var/tmp";
constexpr mode_t OWNER_ONLY = 0600;
constexpr size_t MAX_OUTPUT = size_t{64} << 20;

// In memory only where no disk takes it: a tool that prints without end would fill the machine's.
util::CUniqueFd OpenNamelessFile() {
    util::CUniqueFd file(open(FOLDER, O_TMPFILE | O_RDWR | O_CLOEXEC, OWNER_ONLY));
    return file.IsOpen() ? std::move(file)
                         : util::CUniqueFd(memfd_create("qorctl-tool-output", MFD_CLOEXEC));
}

// Other processes of the same user reach the file by this path while it is open.
std::string PathOf(const util::CUniqueFd& file) {
    return fmt::format("/proc/{}/fd/{}", getpid(), file.Get());
}

std::string ReadWhole(const util::CUniqueFd& file, std::string& problem) {
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0 || static_cast<size_t>(status.st_size) > MAX_OUTPUT) {
        problem = fmt::format("the RAID tool printed more than {} MiB", MAX_OUTPUT >> 20U);
        return "";
    }
    std::string text;
    std::array<char, 65536> block;
    ssize_t count = 0;
    while ((count = pread(file.Get(), block.data(), block.size(),
                          static_cast<off_t>(text.size()))) > 0) {
        text.append(block.data(), static_cast<size_t>(count));
    }
    return text;
}

}  // namespace

CToolRun RunTool(const CPluginLibrary& library, const std::string& command) {
    CToolRun run;
    const util::CUniqueFd file = OpenNamelessFile();
    if (!file.IsOpen()) {
        run.problem = fmt::format("no file for the tool's output: {}", std::strerror(errno));
        return run;
    }
    const std::string path = PathOf(file);
    const CAnswer answer = Ask(
        library, {.operation = [&](CMngSrv_QorLibIF& object, CItemList&, CResultTexts&) {
            run.result = static_cast<EToolResult>(object.KRZExecCli(command, &run.status, path));
            return true;
        }});
    run.problem = answer.IsAnswered() ? "" : answer.messages.back().text;
    if (run.problem.empty()) {
        run.output = ReadWhole(file, run.problem);
    }
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
            return "the RAID tool is not installed (/opt/tarmica/krz/cli/krzcli)";
        case EToolResult::TIME_OUT:
            return "the RAID tool did not end in time and was killed";
    }
    return fmt::format("the plug-in returned the unknown result 0x{:X}",
                       static_cast<unsigned int>(run.result));
}

std::string ProductVersion(const std::string& output) {
    const size_t key = output.find(VERSION_KEY);
    if (key == std::string::npos) {
        return "";
    }
    const size_t before = output.rfind('\n', key);
    const size_t begin = before == std::string::npos ? 0 : before + 1;
    const std::string_view line =
        std::string_view(output).substr(begin, output.find('\n', key) - begin);
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon + 2 > line.size()) {
        return "";
    }
    const std::string_view version = line.substr(colon + 2);
    return std::string(version.substr(0, version.find_last_not_of(" \t\r\n") + 1));
}

}  // namespace qorctl
