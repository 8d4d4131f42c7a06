// What the objects of an inventory are called in texts for people and programs.
#ifndef QORCTL_MODEL_OBJECTNAMES_H
#define QORCTL_MODEL_OBJECTNAMES_H

#include <string>

#include "model/Inventory.h"

namespace qorctl {

// "?" for a number that the tool did not say.
std::string NumberText(const CNumber& number);

// "controller 0", "controller 0 logical drive LD1", "controller 0 drive PD3", "PCIe SSD 177"
std::string ObjectName(const CController& controller);
std::string ObjectName(const CLogicalDrive& drive);
std::string ObjectName(const CPhysicalDrive& drive);
std::string ObjectName(const CPcieSsd& ssd);

// "1 controller, 3 logical drives, 9 drives, 0 PCIe SSDs"
std::string DescribeCounts(const CInventory& inventory);

}  // namespace qorctl

#endif  // QORCTL_MODEL_OBJECTNAMES_H
