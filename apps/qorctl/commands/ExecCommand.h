// `qorctl exec`: one command of the RAID tool, passed through.
#ifndef QORCTL_COMMANDS_EXECCOMMAND_H
#define QORCTL_COMMANDS_EXECCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command; `status` must outlive the parsing. It becomes the tool's exit status when
// that ended by itself, else 124 time-out, 125 the plug-in could not be asked or standard output
// not be written, 126 the tool could not be run or was killed, 127 it is not installed; a failure
// is explained on standard error.
void AddExecCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_EXECCOMMAND_H
