// `qorctl storage`: asks the plug-in for the RAID information and the PCIe SSDs and reports both.
#ifndef QORCTL_COMMANDS_STORAGECOMMAND_H
#define QORCTL_COMMANDS_STORAGECOMMAND_H

#include "commands/ItemReport.h"

namespace qorctl {

// Outputs and exit status as RunItemReport().
int RunStorageCommand(const CItemReportOptions& options);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_STORAGECOMMAND_H
