// `qorctl drive`: asks the plug-in for one physical drive with its SMART data and reports it.
#ifndef QORCTL_DRIVECOMMAND_H
#define QORCTL_DRIVECOMMAND_H

#include "DriveAddress.h"
#include "ItemReport.h"

namespace qorctl {

// Outputs and exit status as RunItemReport().
int RunDriveCommand(const CItemReportOptions& options, const CDriveAddress& address);

}  // namespace qorctl

#endif  // QORCTL_DRIVECOMMAND_H
