// A physical drive by what a person has at hand.
#ifndef QORCTL_MODEL_DRIVESEARCH_H
#define QORCTL_MODEL_DRIVESEARCH_H

#include <optional>
#include <string>
#include <vector>

#include "model/DriveAddress.h"
#include "model/Inventory.h"

namespace qorctl {

// The drives that `word` may mean, in the order of the report: "252:3" (enclosure and slot, of any
// controller), "PD7" or "7", a serial number or a WWN, both in either case, a WWN with or without
// "0x". They point into the inventory.
std::vector<const CPhysicalDrive*> FindDrives(const CInventory& inventory, const std::string& word);

// What the RAID tool is asked for the drive by; nothing when a number of it is not known.
std::optional<CDriveAddress> AddressOf(const CPhysicalDrive& drive);

}  // namespace qorctl

#endif  // QORCTL_MODEL_DRIVESEARCH_H
