// qorsim: a simulated server, and the stand-ins of its tools under their names.
#include <CLI/CLI.hpp>

#include "Run.h"
#include "StandIn.h"

int main(int argc, char** argv) {
    if (const auto status = qorsim::PlayTool({argv, argv + argc})) {
        return *status;
    }
    CLI::App app("A simulated server with RAID controllers, for programs that have none", "qorsim");
    app.require_subcommand(1);
    int status = 0;
    qorsim::AddRunCommand(app, status);
    CLI11_PARSE(app, argc, argv);
    return status;
}
