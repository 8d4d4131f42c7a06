// `qorctl watch`: asks the plug-in again and again and shows what changes.
#ifndef QORCTL_COMMANDS_WATCHCOMMAND_H
#define QORCTL_COMMANDS_WATCHCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command, which needs the only thread of the process (see WatchTerminal.h). `status`,
// which must outlive the parsing, becomes that of CWatch, 1 when the plug-in could not be loaded,
// 128 and the signal's number when one wanted an end.
void AddWatchCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_WATCHCOMMAND_H
