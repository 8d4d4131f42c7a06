// `qorctl raid`: asks the plug-in for the RAID information and reports it.
#ifndef QORCTL_COMMANDS_RAIDCOMMAND_H
#define QORCTL_COMMANDS_RAIDCOMMAND_H

#include "commands/ItemReport.h"

namespace qorctl {

// Outputs and exit status as RunItemReport().
int RunRaidCommand(const CItemReportOptions& options);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_RAIDCOMMAND_H
