#include "Server.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

#include "Fuzz.h"
#include "PrivateMounts.h"
#include "cli/ExecForeignModule.h"

namespace qorfuzz {
namespace {

constexpr const char* RESULT_DIR = "/opt/tarmica/qor/provider/tmp/MSRAID";
constexpr const char* TOOL_DIR = "/opt/tarmica/krz/cli/";

std::vector<CToolReport>& ToolReports() {
    static std::vector<CToolReport> reports;
    return reports;
}

std::string& UtilityText() {
    static std::string text;
    return text;
}

std::string_view AnswerOf(std::string_view command) {
    command.remove_prefix(std::string_view(TOOL_DIR).size());
    for (const CToolReport& report : ToolReports()) {
        if (report.command.empty() || report.command == command) {
            return report.text;
        }
    }
    return {};
}

void WriteText(const char* path, std::string_view text) {
    constexpr mode_t OWNER_ONLY = 0600;
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, OWNER_ONLY);
    Demand(fd >= 0, "the simulated server takes files", path);
    const ssize_t written = write(fd, text.data(), text.size());
    Demand(std::cmp_equal(written, text.size()), "the simulated server has space", path);
    close(fd);
}

int FreeDescriptor() {
    const int fd = dup(STDERR_FILENO);
    close(fd);
    return fd;
}

}  // namespace

void LetToolPrint(std::vector<CToolReport> reports) {
    ToolReports() = std::move(reports);
}

void LetUtilityPrint(const std::string& text) {
    UtilityText() = text;
}

void WriteServerFile(const char* path, const std::string& text) {
    WriteText(path, text);
}

CLeavesNothing::CLeavesNothing() : m_FreeDescriptor(FreeDescriptor()) {}

CLeavesNothing::~CLeavesNothing() {
    // Every request makes the directory again. It cannot be removed with a file in it.
    Demand(rmdir(RESULT_DIR) == 0 || errno == ENOENT, "no result file is left");
    Demand(FreeDescriptor() == m_FreeDescriptor, "no descriptor is left");
}

}  // namespace qorfuzz

extern "C" {

int LLVMFuzzerInitialize(int*, char***) {
    // Trace lines are formatted and written, so that what they do with the input is seen, too.
    // Trace lines are written, but for those that tell the flow only: they take most of the time.
    setenv("QOR_TRACE", "file:/dev/null:19", 0);
    qorsim::EnterPrivateMounts();
    std::filesystem::create_directories("/opt/tarmica/qor/provider/tmp");
    std::filesystem::create_directories("/opt/tarmica/qor/kam/work");
    std::filesystem::create_directories(qorfuzz::TOOL_DIR);
    qorfuzz::WriteText("/opt/tarmica/krz/cli/krzcli", "");
    return 0;
}

// The names that the linker gives to the replacements of the two runners.
int __wrap__Z17ExecForeignModuleRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES6_Pm(
    const std::string& command, const std::string& outFile, unsigned long* exitCode);
unsigned int
__wrap__Z17ExecForeignModuleRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES6_S6_Pmm(
    const std::string& command, const std::string& outFile, const std::string& workDir,
    unsigned long* exitCode, unsigned long timeoutMs);

int __wrap__Z17ExecForeignModuleRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES6_Pm(
    const std::string& command, const std::string& outFile, unsigned long* exitCode) {
    qorfuzz::WriteText(outFile.c_str(), qorfuzz::AnswerOf(command));
    *exitCode = 0;
    return EXEC_OK;
}

unsigned int
__wrap__Z17ExecForeignModuleRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES6_S6_Pmm(
    const std::string&, const std::string& outFile, const std::string&, unsigned long* exitCode,
    unsigned long) {
    qorfuzz::WriteText(outFile.c_str(), qorfuzz::UtilityText());
    *exitCode = 0;
    return EXEC_OK;
}

}  // extern "C"
