// `qorctl drive`: asks the plug-in for one physical drive with its SMART data and reports it.
#ifndef QORCTL_COMMANDS_DRIVECOMMAND_H
#define QORCTL_COMMANDS_DRIVECOMMAND_H

#include "commands/ItemReport.h"
#include "model/DriveAddress.h"

namespace qorctl {

// Outputs and exit status as RunItemReport().
int RunDriveCommand(const CItemReportOptions& options, const CDriveAddress& address);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_DRIVECOMMAND_H
