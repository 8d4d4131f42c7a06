#include "RaidCommand.h"

#include "PluginRequest.h"

namespace qorctl {

int RunRaidCommand(const std::string& pluginPath) {
    return ShowItemsAsTree(pluginPath, RaidRequest());
}

}  // namespace qorctl
