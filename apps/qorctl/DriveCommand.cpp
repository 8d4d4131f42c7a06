#include "DriveCommand.h"

#include "PluginRequest.h"

namespace qorctl {

int RunDriveCommand(const std::string& pluginPath, const CDriveAddress& address) {
    return ShowItemsAsTree(pluginPath, DriveRequest(address));
}

}  // namespace qorctl
