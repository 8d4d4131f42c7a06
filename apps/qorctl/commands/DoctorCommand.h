// `qorctl doctor`: what a support engineer would look at first.
#ifndef QORCTL_COMMANDS_DOCTORCOMMAND_H
#define QORCTL_COMMANDS_DOCTORCOMMAND_H

#include <string>

#include "commands/ReportFormat.h"

namespace qorctl {

// Examines the server and writes every check with its verdict, reason and remedy to standard
// output. Returns 0 when no check failed (warnings are shown but do not count), else 1.
int RunDoctorCommand(const std::string& pluginPath, EReportFormat format);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_DOCTORCOMMAND_H
