// `qorctl version`: which builds of what are at work.
#ifndef QORCTL_COMMANDS_VERSIONCOMMAND_H
#define QORCTL_COMMANDS_VERSIONCOMMAND_H

#include <string>

#include "commands/ReportFormat.h"

namespace qorctl {

// Writes the versions of this program, the plug-in, the common library that it uses and the RAID
// tool to standard output. A missing tool is stated; exit status 1 when the plug-in could not be
// loaded (the program's own version is written all the same).
int RunVersionCommand(const std::string& pluginPath, EReportFormat format);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_VERSIONCOMMAND_H
