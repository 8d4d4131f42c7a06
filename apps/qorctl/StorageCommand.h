// `qorctl storage`: asks the plug-in for the RAID information and the PCIe SSDs and shows both as
// a tree.
#ifndef QORCTL_STORAGECOMMAND_H
#define QORCTL_STORAGECOMMAND_H

#include <string>

namespace qorctl {

// Outputs and exit status as RunRaidCommand().
int RunStorageCommand(const std::string& pluginPath);

}  // namespace qorctl

#endif  // QORCTL_STORAGECOMMAND_H
