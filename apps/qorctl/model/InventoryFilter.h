// Which of a server's devices are asked about.
#ifndef QORCTL_MODEL_INVENTORYFILTER_H
#define QORCTL_MODEL_INVENTORYFILTER_H

#include <functional>
#include <set>
#include <string>

#include "model/Inventory.h"

namespace qorctl {

struct CInventoryFilter {
    // Whether devices are asked for by their place. A PCIe SSD has none of these.
    bool HasPlace() const { return controller || enclosure; }
    bool IsSet() const { return HasPlace() || problems; }

    CNumber controller = {};
    CNumber enclosure = {};
    bool problems = false;  // only what has one
};

// Leaves the devices of that controller, or the drives of that enclosure, with the RAID groups,
// logical drives and controllers that they belong to.
void KeepPlace(CInventory& inventory, const CInventoryFilter& filter);

// Leaves the devices that `isProblem` says so of, by their ObjectName(), with the RAID groups and
// controllers that they belong to.
void KeepProblems(CInventory& inventory,
                  const std::function<bool(const std::string& object)>& isProblem);

// The nodes of the tree that the inventory's devices were made from.
std::set<size_t> RootsOf(const CInventory& inventory);

}  // namespace qorctl

#endif  // QORCTL_MODEL_INVENTORYFILTER_H
