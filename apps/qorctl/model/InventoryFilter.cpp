#include "model/InventoryFilter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/ObjectNames.h"

namespace qorctl {
namespace {

using CGroupName = std::pair<CNumber, CText>;  // controller, group
using CGroupNames = std::set<CGroupName>;

template <class TDevice, class TPredicate>
void Keep(std::vector<TDevice>& devices, TPredicate isKept) {
    std::erase_if(devices, [&](const TDevice& device) { return !isKept(device); });
}

template <class TDevice>
void AddGroups(CGroupNames& groups, const std::vector<TDevice>& devices) {
    for (const TDevice& device : devices) {
        groups.emplace(device.controller, device.group);
    }
}

template <class TDevice>
void AddControllers(std::set<CNumber>& controllers, const std::vector<TDevice>& devices) {
    for (const TDevice& device : devices) {
        controllers.insert(device.controller);
    }
}

void KeepGroups(CInventory& inventory, const CGroupNames& names) {
    Keep(inventory.raidGroups, [&](const CRaidGroup& group) {
        return names.contains({group.controller, group.name});
    });
}

// The controllers of what is left, and those that `isKept` says so of.
template <class TPredicate>
void KeepControllers(CInventory& inventory, TPredicate isKept) {
    std::set<CNumber> controllers;
    AddControllers(controllers, inventory.raidGroups);
    AddControllers(controllers, inventory.logicalDrives);
    AddControllers(controllers, inventory.physicalDrives);
    Keep(inventory.controllers, [&](const CController& controller) {
        return controllers.contains(controller.number) || isKept(controller);
    });
}

void KeepController(CInventory& inventory, long long number) {
    const auto isThere = [number](const auto& device) { return device.controller == number; };
    Keep(inventory.controllers,
         [number](const CController& controller) { return controller.number == number; });
    Keep(inventory.raidGroups, isThere);
    Keep(inventory.logicalDrives, isThere);
    Keep(inventory.physicalDrives, isThere);
}

// A group's list may name its members without their places: then the drives say it.
CGroupNames GroupsIn(const CInventory& inventory, long long enclosure) {
    CGroupNames groups;
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        if (drive.place.enclosure == enclosure && drive.group &&
            drive.role != EDriveRole::DEDICATED_SPARE) {
            groups.emplace(drive.controller, drive.group);
        }
    }
    for (const CRaidGroup& group : inventory.raidGroups) {
        if (std::any_of(group.members.begin(), group.members.end(),
                        [enclosure](const CGroupMember& member) {
                            return member.place.enclosure == enclosure;
                        })) {
            groups.emplace(group.controller, group.name);
        }
    }
    return groups;
}

void KeepEnclosure(CInventory& inventory, long long number) {
    const CGroupNames groups = GroupsIn(inventory, number);
    Keep(inventory.physicalDrives,
         [number](const CPhysicalDrive& drive) { return drive.place.enclosure == number; });
    KeepGroups(inventory, groups);
    Keep(inventory.logicalDrives, [&](const CLogicalDrive& drive) {
        return groups.contains({drive.controller, drive.group});
    });
    KeepControllers(inventory, [](const CController&) { return false; });
}

template <class TDevice>
void AddRoots(std::set<size_t>& roots, const std::vector<TDevice>& devices) {
    for (const TDevice& device : devices) {
        roots.insert(device.root);
    }
}

}  // namespace

void KeepPlace(CInventory& inventory, const CInventoryFilter& filter) {
    if (!filter.HasPlace()) {
        return;
    }
    inventory.pcieSsds.clear();
    inventory.others.clear();
    if (filter.controller) {
        KeepController(inventory, *filter.controller);
    }
    if (filter.enclosure) {
        KeepEnclosure(inventory, *filter.enclosure);
    }
}

void KeepProblems(CInventory& inventory,
                  const std::function<bool(const std::string& object)>& isProblem) {
    const auto isKept = [&](const auto& device) { return isProblem(ObjectName(device)); };
    Keep(inventory.logicalDrives, isKept);
    Keep(inventory.physicalDrives, isKept);
    Keep(inventory.pcieSsds, isKept);
    inventory.others.clear();
    CGroupNames groups;
    AddGroups(groups, inventory.logicalDrives);
    AddGroups(groups, inventory.physicalDrives);
    KeepGroups(inventory, groups);
    KeepControllers(inventory, [&](const CController& controller) {
        return isKept(controller) || isProblem(BatteryName(controller));
    });
}

std::set<size_t> RootsOf(const CInventory& inventory) {
    std::set<size_t> roots;
    AddRoots(roots, inventory.controllers);
    AddRoots(roots, inventory.raidGroups);
    AddRoots(roots, inventory.physicalDrives);
    AddRoots(roots, inventory.pcieSsds);
    AddRoots(roots, inventory.others);
    return roots;
}

}  // namespace qorctl
