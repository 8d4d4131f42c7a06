// `qorctl drive`: asks the plug-in for one physical drive with its SMART data and shows it as a
// tree.
#ifndef QORCTL_DRIVECOMMAND_H
#define QORCTL_DRIVECOMMAND_H

#include <string>

#include "DriveAddress.h"

namespace qorctl {

// Outputs and exit status as RunRaidCommand().
int RunDriveCommand(const std::string& pluginPath, const CDriveAddress& address);

}  // namespace qorctl

#endif  // QORCTL_DRIVECOMMAND_H
