#include "commands/ExecCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "commands/CommonOptions.h"
#include "host/ToolRun.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

constexpr const char* EXEC_FOOTER =
    "COMMAND begins with the tool's name, krzcli. Its words are joined with blanks and handed to\n"
    "the plug-in, which has a shell run the text. NOTHING IS QUOTED: what the shell takes for\n"
    "special (; | & $ ` > * and blanks inside a word) works as in a script. Never pass on text\n"
    "that somebody else supplied.\n"
    "\n"
    "What the tool printed, also on its standard error, goes to standard output when it has\n"
    "ended: byte for byte, but on a terminal what it would obey is made visible. A run is tried\n"
    "three times and may take 150 seconds each.\n"
    "\n"
    "Exit status:\n"
    "  0..255  the tool's own, when it ended by itself; a tool that reports an error and ends\n"
    "          with 0 gives 0 and a line on standard error\n"
    "  124     it did not end in time and was killed\n"
    "  125     the plug-in could not be loaded or asked, or standard output not be written\n"
    "  126     the tool could not be run, or was killed\n"
    "  127     the tool is not installed\n"
    "  other   the command line was not understood\n"
    "Where the tool uses such a status itself, standard error tells them apart.\n"
    "\n"
    "Example:\n"
    "  qorctl exec -- krzcli -ctrlinfo -aAll";

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

struct CExecOptions {
    CPluginChoice plugin;
    std::vector<std::string> words;
};

// The words are one command text of the shell.
int RunExec(const CExecOptions& options) {
    const CToolRun run = RunTool(options.plugin, fmt::format("{}", fmt::join(options.words, " ")));
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

}  // namespace

void AddExecCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CExecOptions>();
    CLI::App* command =
        AddCommand(app, options->plugin, "exec",
                   "Run a command of the RAID tool through the plug-in", EXEC_FOOTER);
    command->add_option("COMMAND", options->words, "The tool's command line, behind --")
        ->required()
        ->type_name("");
    command->callback([options, &status] { status = RunExec(*options); });
}

}  // namespace qorctl
