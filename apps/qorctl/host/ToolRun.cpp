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

#include "host/Request.h"

namespace qorctl {
namespace {

constexpr std::string_view VERSION_KEY = "Product Version";

constexpr const char* FOLDER = "/var/tmp";
constexpr mode_t OWNER_ONLY = 0600;
constexpr size_t MAX_OUTPUT = size_t{64} << 20;

// In memory only where no disk takes it: a tool that prints without end would fill the machine's.
int OpenNamelessFile() {
    const int fd = open(FOLDER, O_TMPFILE | O_RDWR | O_CLOEXEC, OWNER_ONLY);
    if (fd >= 0) {
        return fd;
    }
    return memfd_create("qorctl-tool-output", MFD_CLOEXEC);
}

// A file without a name. Other processes of the same user reach it by its path while this object
// lives.
class CNamelessFile {
public:
    CNamelessFile() : m_Fd(OpenNamelessFile()) {}
    ~CNamelessFile() {
        if (m_Fd >= 0) {
            close(m_Fd);
        }
    }
    CNamelessFile(const CNamelessFile&) = delete;  // one owner of the descriptor
    CNamelessFile& operator=(const CNamelessFile&) = delete;

    bool IsOpen() const { return m_Fd >= 0; }
    std::string Path() const { return fmt::format("/proc/{}/fd/{}", getpid(), m_Fd); }
    std::string Read(std::string& problem) const;

private:
    int m_Fd;
};

std::string CNamelessFile::Read(std::string& problem) const {
    struct stat status = {};
    if (fstat(m_Fd, &status) != 0 || static_cast<size_t>(status.st_size) > MAX_OUTPUT) {
        problem = fmt::format("the RAID tool printed more than {} MiB", MAX_OUTPUT >> 20U);
        return "";
    }
    std::string text;
    std::array<char, 65536> block;
    ssize_t count = 0;
    while ((count = pread(m_Fd, block.data(), block.size(), static_cast<off_t>(text.size()))) > 0) {
        text.append(block.data(), static_cast<size_t>(count));
    }
    return text;
}

}  // namespace

CToolRun RunTool(const CPluginLibrary& library, const std::string& command) {
    CToolRun run;
    const CNamelessFile file;
    if (!file.IsOpen()) {
        run.problem = fmt::format("no file for the tool's output: {}", std::strerror(errno));
        return run;
    }
    const CAnswer answer =
        Ask(library, {.operation = [&](CMngSrv_QorLibIF& object, CItemList&, CResultTexts&) {
                run.result =
                    static_cast<EToolResult>(object.KRZExecCli(command, &run.status, file.Path()));
                return true;
            }});
    run.problem = answer.IsAnswered() ? "" : answer.messages.back().text;
    if (run.problem.empty()) {
        run.output = file.Read(run.problem);
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
