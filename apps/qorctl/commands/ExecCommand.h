// `qorctl exec`: one command of the RAID tool, passed through.
#ifndef QORCTL_COMMANDS_EXECCOMMAND_H
#define QORCTL_COMMANDS_EXECCOMMAND_H

#include <string>
#include <vector>

namespace qorctl {

// Runs `words`, joined with single blanks, as one command text of the shell and writes what the
// tool printed to standard output. Returns the tool's exit status when it ended by itself, else
// 124 time-out, 125 the plug-in could not be asked or standard output not be written, 126 the tool
// could not be run or was killed, 127 it is not installed; a failure is explained on standard
// error.
int RunExecCommand(const std::string& pluginPath, const std::vector<std::string>& words);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_EXECCOMMAND_H
