// `qorctl version`: which builds of what are at work.
#ifndef QORCTL_COMMANDS_VERSIONCOMMAND_H
#define QORCTL_COMMANDS_VERSIONCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command; see AddRaidCommand() for `status`. A missing tool is stated and no failure.
// Without a plug-in the program's own version is written all the same.
void AddVersionCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_VERSIONCOMMAND_H
