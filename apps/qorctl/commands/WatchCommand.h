// `qorctl watch`: asks the plug-in again and again and shows what changes.
#ifndef QORCTL_COMMANDS_WATCHCOMMAND_H
#define QORCTL_COMMANDS_WATCHCOMMAND_H

#include <string>

#include "watch/Watch.h"

namespace qorctl {

enum class EWatchFormat { TEXT, JSON };

// Loads the plug-in once (`pluginPath`, or where CPluginLibrary looks when it is empty) and watches
// as CWatch does. As text on a terminal that can move its cursor, the screen is redrawn; otherwise
// changes are lines on standard output. Returns the exit status: that of CWatch, 1 when the plug-in
// could not be loaded, 128 and the signal's number when one wanted an end.
//
// Thread rule: the only thread of the process; see WatchTerminal.h.
int RunWatchCommand(const std::string& pluginPath, const CWatchOptions& options,
                    EWatchFormat format);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_WATCHCOMMAND_H
