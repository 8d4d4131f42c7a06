#include "Run.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "Files.h"
#include "Layout.h"
#include "PrivateMounts.h"

namespace qorsim {
namespace {

constexpr int FAILED = 125;  // this program's own failure; a command seldom ends with it

struct CRunOptions {
    std::string host;
    std::vector<std::string> command;
};

bool EnterMounts(std::string& error) {
    try {
        EnterPrivateMounts();
        return true;
    } catch (const std::runtime_error& failure) {
        error = failure.what();
        return false;
    }
}

// So that the programs of this build or installation are found first.
void ExtendPath() {
    const char* path = std::getenv("PATH");
    const std::string extended =
        OwnDirectory() + ":" + (path != nullptr && *path != '\0' ? path : "/usr/bin:/bin");
    setenv("PATH", extended.c_str(), 1);
}

int Run(const CRunOptions& options) {
    std::string error;
    const std::optional<CServerSource> source = LoadServer(options.host, error);
    if (!source || !EnterMounts(error) || !LayOutServer(*source, error)) {
        std::fprintf(stderr, "qorsim: %s\n", error.c_str());
        return FAILED;
    }
    ExtendPath();
    return RunAndWait(options.command);
}

}  // namespace

void AddRunCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CRunOptions>();
    CLI::App* run = app.add_subcommand(
        "run", "Run a command on a simulated server; the real machine is left untouched");
    run->add_option("--host", options->host,
                    "The server: the name of a shipped host, or the path of a host profile")
        ->required();
    run->add_option("command", options->command, "The command and its arguments, behind --")
        ->required();
    run->callback([options, &status] { status = Run(*options); });
    run->footer(
        "Ends as the command does: with its exit status, 128 + N when signal N killed it,\n"
        "126 or 127 when it cannot be run; 125 when the server cannot be simulated.");
}

}  // namespace qorsim
