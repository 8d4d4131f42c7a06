// qorsim: a simulated server, and the stand-ins of its tools under their names.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "HelpText.h"
#include "Record.h"
#include "RecordTool.h"
#include "Replay.h"
#include "Run.h"
#include "StandIn.h"
#include "VisibleText.h"
#include "WrongLine.h"

namespace {

constexpr const char* FOOTER =
    "qorsim COMMAND --help tells more about each command.\n"
    "\n"
    "Examples:\n"
    "  qorsim list\n"
    "  qorsim run --host small -- qorctl raid";

int ExitUnparsed(const CLI::App& app, const CLI::ParseError& error,
                 const std::vector<std::string>& words) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        return app.exit(error);
    }
    const qorapps::CWrongLine wrong = qorapps::ExplainWrongLine(app, error, words);
    qorsim::Complain("qorsim", wrong.problem);
    std::fprintf(stderr, "%s\n", wrong.hint.c_str());
    return error.get_exit_code();
}

}  // namespace

int main(int argc, char** argv) {
    if (const auto status = qorsim::PlayTool({argv, argv + argc})) {
        return *status;
    }
    if (const auto status = qorsim::PlayScriptedTool({argv, argv + argc})) {
        return *status;
    }
    CLI::App app("A simulated server with RAID controllers, for programs that have none", "qorsim");
    app.formatter(std::make_shared<qorapps::CHelpText>());
    app.set_version_flag("-V,--version", "qorsim " QORSIM_VERSION);
    app.require_subcommand(1);
    app.footer(FOOTER);
    int status = 0;
    for (const auto add :
         {qorsim::AddRunCommand, qorsim::AddListCommand, qorsim::AddShowCommand,
          qorsim::AddValidateCommand, qorsim::AddNewCommand, qorsim::AddInstallCommand,
          qorsim::AddRecordCommand, qorsim::AddReplayCommand, qorapps::AddHelpCommand}) {
        add(app, status);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return ExitUnparsed(app, error, {argv + std::min(argc, 1), argv + argc});
    }
    return status;
}
