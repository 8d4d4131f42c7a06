#include "host/ToolRun.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "host/Request.h"

namespace qorctl {
namespace {

constexpr std::string_view VERSION_KEY = "Product Version";

// A file in memory. Other processes of the same user reach it by its path while this object lives.
class CMemoryFile {
public:
    CMemoryFile() : m_Fd(memfd_create("qorctl-tool-output", MFD_CLOEXEC)) {}
    ~CMemoryFile() {
        if (m_Fd >= 0) {
            close(m_Fd);
        }
    }
    CMemoryFile(const CMemoryFile&) = delete;  // one owner of the descriptor
    CMemoryFile& operator=(const CMemoryFile&) = delete;

    bool IsOpen() const { return m_Fd >= 0; }
    std::string Path() const { return fmt::format("/proc/{}/fd/{}", getpid(), m_Fd); }
    std::string Read() const;

private:
    int m_Fd;
};

std::string CMemoryFile::Read() const {
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
    const CMemoryFile file;
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
    run.output = file.Read();
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
