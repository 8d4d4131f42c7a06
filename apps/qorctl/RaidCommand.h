// `qorctl raid`: asks the plug-in for the RAID information and shows it as a tree.
#ifndef QORCTL_RAIDCOMMAND_H
#define QORCTL_RAIDCOMMAND_H

#include <string>

namespace qorctl {

// Loads the plug-in (`pluginPath`, or where CPluginLibrary looks when it is empty), writes the
// items to standard output as a tree, and everything else (codes in words, failures) to standard
// error. Returns the exit status: 0 success, also with nothing to report; 1 the request failed, the
// plug-in could not be loaded or threw an exception, or standard output could not be written.
int RunRaidCommand(const std::string& pluginPath);

}  // namespace qorctl

#endif  // QORCTL_RAIDCOMMAND_H
