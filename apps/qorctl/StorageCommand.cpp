#include "StorageCommand.h"

#include "PluginRequest.h"

namespace qorctl {

int RunStorageCommand(const std::string& pluginPath) {
    return ShowItemsAsTree(pluginPath, StorageRequest());
}

}  // namespace qorctl
