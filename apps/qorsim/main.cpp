// qorsim: a simulated server, and the stand-ins of its tools under their names.
#include <CLI/CLI.hpp>
#include <memory>

#include "Commands.h"
#include "HelpText.h"
#include "Record.h"
#include "RecordTool.h"
#include "Replay.h"
#include "Run.h"
#include "StandIn.h"

namespace {

constexpr const char* FOOTER =
    "qorsim COMMAND --help tells more about each command.\n"
    "\n"
    "Examples:\n"
    "  qorsim list\n"
    "  qorsim run --host small -- qorctl raid";

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
    app.require_subcommand(1);
    app.footer(FOOTER);
    int status = 0;
    for (const auto add :
         {qorsim::AddRunCommand, qorsim::AddListCommand, qorsim::AddShowCommand,
          qorsim::AddValidateCommand, qorsim::AddNewCommand, qorsim::AddInstallCommand,
          qorsim::AddRecordCommand, qorsim::AddReplayCommand}) {
        add(app, status);
    }
    CLI11_PARSE(app, argc, argv);
    return status;
}
