// What CompareInventories() looks at, as JSON for a state file, and back.
//
// The tool's bytes need not be UTF-8: each stands as the character of its number, so that what is
// read back is the same.
//
// Thread rule: any thread at any time.
#ifndef QORCTL_WATCH_SEENINVENTORY_H
#define QORCTL_WATCH_SEENINVENTORY_H

#include <nlohmann/json.hpp>

#include "format/JsonDocument.h"
#include "model/Inventory.h"

namespace qorctl {

CJson SeenToJson(const CInventory& inventory);

// An inventory that compares as the one that was written. Throws nlohmann::json::exception for
// anything else than what SeenToJson() returns.
CInventory SeenFromJson(const CJson& json);

}  // namespace qorctl

#endif  // QORCTL_WATCH_SEENINVENTORY_H
