// What a report is known to leave out. Nobody can say that it is well.
#ifndef QORCTL_MODEL_GAP_H
#define QORCTL_MODEL_GAP_H

#include <string>
#include <string_view>
#include <vector>

#include "model/Inventory.h"

namespace qorctl {

struct CGap {
    std::string_view rule;  // a stable word for programs
    std::string object;     // as ObjectName(); empty: the server
    std::string text;
    std::string remedy;
};

// "controller 0 states 240 drives, 112 reported"
std::string GapText(const CGap& gap);

// The physical and logical drives that a controller or RAID group states, or that another one
// names, and the report does not have; and controllers that hide each other behind one number.
std::vector<CGap> FindMissingDrives(const CInventory& inventory);

}  // namespace qorctl

#endif  // QORCTL_MODEL_GAP_H
