#include "commands/ExecCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>

#include "host/ToolRun.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

// As timeout(1), env(1) and the shell use them.
constexpr int TIMED_OUT = 124;
constexpr int OWN_FAILURE = 125;
constexpr int NOT_RUN = 126;
constexpr int NOT_INSTALLED = 127;

int ExitStatusOf(const CToolRun& run) {
    switch (run.result) {
        case EToolResult::DONE:
        case EToolResult::TOOL_ERROR:
            return static_cast<int>(run.status & 0xFFU);
        case EToolResult::NOT_RUN:
            return NOT_RUN;
        case EToolResult::NOT_INSTALLED:
            return NOT_INSTALLED;
        case EToolResult::TIME_OUT:
            return TIMED_OUT;
    }
    return OWN_FAILURE;
}

}  // namespace

int RunExecCommand(const std::string& pluginPath, const std::vector<std::string>& words) {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(pluginPath, problem);
    if (!library) {
        Report(problem);
        return OWN_FAILURE;
    }
    const CToolRun run = RunTool(*library, fmt::format("{}", fmt::join(words, " ")));
    if (!run.problem.empty()) {
        Report(run.problem);
        return OWN_FAILURE;
    }
    if (WriteBytes(run.output) != EXIT_SUCCESS) {
        return OWN_FAILURE;
    }
    if (run.result != EToolResult::DONE) {
        Report(ExplainToolRun(run));
    }
    return ExitStatusOf(run);
}

}  // namespace qorctl
