// What changed between two looks at the storage.
#ifndef QORCTL_MODEL_INVENTORYDIFF_H
#define QORCTL_MODEL_INVENTORYDIFF_H

#include <string>
#include <vector>

#include "model/Inventory.h"

namespace qorctl {

enum class EChange { CHANGED, APPEARED, GONE };

struct CChange {
    EChange kind = EChange::CHANGED;
    std::string object;  // as ObjectName(); " (2)" follows the second one of a name
    std::string what;    // "state", "use", "serial number", "media errors" ...
    CText before;        // absent: the tool did not say, or the object was not there
    CText after;         // likewise
};

// In the order of the newer report, what went at the end. Temperatures are no changes; the progress
// of a rebuild is one as long as there is some, not when it comes and goes with the state.
// Cost: linear in the objects, but for the look-up of names.
std::vector<CChange> CompareInventories(const CInventory& before, const CInventory& after);

// "controller 0 drive PD3: ONLINE -> FAILED", "controller 0 drive PD5: media errors 2 -> 3",
// "controller 0 drive PD9: appeared, Unconfig GOOD"; as the tool's bytes are.
std::string DescribeChange(const CChange& change);

}  // namespace qorctl

#endif  // QORCTL_MODEL_INVENTORYDIFF_H
