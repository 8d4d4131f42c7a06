#include "Run.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "Fault.h"
#include "FaultServer.h"
#include "Files.h"
#include "Layout.h"
#include "Options.h"
#include "PrivateMounts.h"
#include "VisibleText.h"

namespace qorsim {
namespace {

struct CRunOptions {
    std::string host;
    long startAt = 0;
    std::vector<std::string> faults;
    std::vector<std::string> command;
};

// So that the programs of this build or installation are found first.
void ExtendPath() {
    const char* path = std::getenv("PATH");
    const std::string extended =
        OwnDirectory() + ":" + (path != nullptr && *path != '\0' ? path : "/usr/bin:/bin");
    setenv("PATH", extended.c_str(), 1);
}

bool CheckFaults(const std::vector<std::string>& faults, std::string& error) {
    return std::all_of(faults.begin(), faults.end(), [&](const std::string& fault) {
        return ParseFault(fault, error).has_value();
    });
}

int Run(const CRunOptions& options) {
    std::string error;
    if (!CheckFaults(options.faults, error)) {
        return FailToSimulate(error);
    }
    const std::optional<CServerSource> source = LoadServer(options.host, error);
    if (!source || !EnterEmptyServer(error) || !LayOutServer(*source, options.startAt, "", error) ||
        !PlaceFaults(options.faults, error)) {
        return FailToSimulate(error);
    }
    const int status = RunInServer(options.command);
    for (const std::string& sentence : DescribeIdleFaults(options.faults)) {
        Complain("qorsim", sentence);
    }
    return status;
}

}  // namespace

bool EnterEmptyServer(std::string& error) {
    try {
        EnterPrivateMounts();
        return true;
    } catch (const std::runtime_error& failure) {
        error = failure.what();
        return false;
    }
}

int RunInServer(const std::vector<std::string>& command) {
    ExtendPath();
    return RunAndWait(command);
}

int FailToSimulate(const std::string& error) {
    constexpr int FAILED = 125;  // a command seldom ends with it
    Complain("qorsim", error);
    return FAILED;
}

void AddRunCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CRunOptions>();
    CLI::App* run = app.add_subcommand(
        "run", "Run a command on a simulated server; the real machine is left untouched");
    run->add_option("--host", options->host,
                    "The server: the name of a shipped host, or the path of a host profile")
        ->type_name("HOST")
        ->required();
    AddStartAtOption(*run, options->startAt);
    run->add_option("--fault", options->faults,
                    "What goes wrong there: KIND[=VALUE][@COMMAND][#WHEN]; can be repeated")
        ->type_name("FAULT")
        ->allow_extra_args(false);
    run->add_option("command", options->command, "The command and its arguments, behind --")
        ->required()
        ->type_name("");
    run->callback([options, &status] { status = Run(*options); });
    run->footer(
        "Ends as the command does: with its exit status, 128 + N when signal N killed it,\n"
        "126 or 127 when it cannot be run; 125 when the server cannot be simulated.\n"
        "A fault that never struck is named at the end, with the commands that there were.\n"
        "\n"
        "Examples:\n"
        "  qorsim run --host degraded -- qorctl raid\n"
        "  qorsim run --host lifecycle --start-at 30 -- qorctl raid\n"
        "  qorsim run --host small --fault exit=3@-pdinfo#1 -- qorctl raid\n"
        "  qorsim run --host ./my-server.json -- bash");
}

}  // namespace qorsim
