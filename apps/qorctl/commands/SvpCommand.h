// `qorctl svp`: the plug-in's service-processor form as hexadecimal digits, or decoded.
#ifndef QORCTL_COMMANDS_SVPCOMMAND_H
#define QORCTL_COMMANDS_SVPCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command; see AddRaidCommand() for `status`. The form of a file is decoded without a
// plug-in; one that is malformed gives exit status 1 and no output but the reason.
void AddSvpCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_SVPCOMMAND_H
