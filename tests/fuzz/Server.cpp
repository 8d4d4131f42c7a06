#include "Server.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

#include "Depth.h"
#include "Fuzz.h"
#include "MemoryFiles.h"
#include "PrivateMounts.h"
#include "TraceProperties.h"
#include "cli/ExecForeignModule.h"

namespace fs = std::filesystem;

namespace qorfuzz {
namespace {

constexpr const char* RESULT_DIR = "/opt/tarmica/qor/provider/tmp/MSRAID";
constexpr const char* TOOL_DIR = "/opt/tarmica/krz/cli/";

std::vector<CToolReport>& ToolReports() {
    static std::vector<CToolReport> reports;
    return reports;
}

CToolReport& UtilityReport() {
    static CToolReport report;
    return report;
}

const std::string& ToolAnswer(const std::string& command) {
    const auto report = std::find_if(
        ToolReports().begin(), ToolReports().end(),
        [&](const CToolReport& candidate) { return TOOL_DIR + candidate.command == command; });
    Demand(report != ToolReports().end(), "only the commands that are due are run", command);
    return report->text;
}

const std::string& UtilityAnswer(const std::string& command) {
    Demand(UtilityReport().command == command, "only the command that is due is run", command);
    return UtilityReport().text;
}

void WriteText(const char* path, const std::string& text) {
    if (Depth() == EDepth::QUICK) {
        PutMemoryFile(path, text);
        return;
    }
    constexpr mode_t OWNER_ONLY = 0600;
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, OWNER_ONLY);
    Demand(fd >= 0, "the simulated server takes files", path);
    const ssize_t written = write(fd, text.data(), text.size());
    Demand(std::cmp_equal(written, text.size()), "the simulated server has space", path);
    close(fd);
}

// Every request makes the directory again. It cannot be removed with a file in it.
bool HoldsResultFile() {
    return Depth() == EDepth::QUICK ? MemoryFilesBelow(RESULT_DIR) > 0
                                    : rmdir(RESULT_DIR) != 0 && errno != ENOENT;
}

int FreeDescriptor() {
    if (Depth() == EDepth::QUICK) {
        return static_cast<int>(OpenMemoryFiles());
    }
    const int fd = dup(STDERR_FILENO);
    close(fd);
    return fd;
}

}  // namespace

void LetToolPrint(std::vector<CToolReport> reports) {
    ToolReports() = std::move(reports);
}

void LetUtilityPrint(const CToolReport& report) {
    UtilityReport() = report;
}

void WriteServerFile(const char* path, const std::string& text) {
    WriteText(path, text);
}

CLeavesNothing::CLeavesNothing() : m_FreeDescriptor(FreeDescriptor()) {}

CLeavesNothing::~CLeavesNothing() {
    Demand(!HoldsResultFile(), "no result file is left");
    Demand(FreeDescriptor() == m_FreeDescriptor, "no descriptor is left");
}

}  // namespace qorfuzz

extern "C" {

int LLVMFuzzerInitialize(int* argc, char*** argv) {
    if (std::any_of(*argv + 1, *argv + *argc,
                    [](const char* argument) { return fs::is_regular_file(argument); })) {
        qorfuzz::LookAtAllBothWays();
    }
    setenv("QOR_TRACE", "none", 0);
    qorfuzz::LookAtTrace(true);
    qorsim::EnterPrivateMounts();
    fs::create_directories("/opt/tarmica/qor/provider/tmp");
    fs::create_directories("/opt/tarmica/qor/kam/work");
    fs::create_directories(qorfuzz::TOOL_DIR);
    qorfuzz::WriteText("/opt/tarmica/krz/cli/krzcli", "");
    return 0;
}

}  // extern "C"

// In place of the plug-in's runners.
int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                      unsigned long* exitCode) {
    qorfuzz::WriteText(outFile.Path().c_str(), qorfuzz::ToolAnswer(command));
    *exitCode = 0;
    return EXEC_OK;
}

unsigned int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                               const std::string&, unsigned long* exitCode, unsigned long) {
    qorfuzz::WriteText(outFile.Path().c_str(), qorfuzz::UtilityAnswer(command));
    *exitCode = 0;
    return EXEC_OK;
}
