// The command lines of the sub-commands for support: doctor, exec and version.
#ifndef QORCTL_COMMANDS_SUPPORTCOMMANDS_H
#define QORCTL_COMMANDS_SUPPORTCOMMANDS_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds them; one that is asked for sets `status` to the program's exit status.
void AddSupportCommands(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_SUPPORTCOMMANDS_H
