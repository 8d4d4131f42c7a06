// `qorctl status`, `raid`, `storage` and `drive`: what the plug-in tells, in the form that is asked
// for.
#ifndef QORCTL_COMMANDS_REPORTCOMMAND_H
#define QORCTL_COMMANDS_REPORTCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Each adds its sub-command; when it is the one that is given, `status`, which must outlive the
// parsing, becomes the exit status: 0, also with nothing to report; 1 when the request failed, the
// plug-in could not be loaded or threw an exception, or the output could not be written.
//
// JSON and the status are written whatever happens, the other forms only after success; with
// nothing to report these are empty (CSV: its header line). Everything else goes to standard error.
void AddStatusCommand(CLI::App& app, int& status);
void AddRaidCommand(CLI::App& app, int& status);
void AddStorageCommand(CLI::App& app, int& status);
void AddDriveCommand(CLI::App& app, int& status);

// `status` without any option; returns the exit status.
int RunStatus();

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_REPORTCOMMAND_H
