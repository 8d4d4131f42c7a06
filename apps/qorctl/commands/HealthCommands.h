// The command lines of the sub-commands that watch over the storage's health: check and watch.
#ifndef QORCTL_COMMANDS_HEALTHCOMMANDS_H
#define QORCTL_COMMANDS_HEALTHCOMMANDS_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds them; one that is asked for sets `status` to the program's exit status.
void AddHealthCommands(CLI::App& app, int& status);

// What main() returns for a command line that was not read to its end (`error`, a request for help
// included): a monitoring server takes whatever `check` ends with for its result.
int ExitUnparsed(const CLI::App& app, const CLI::ParseError& error);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_HEALTHCOMMANDS_H
