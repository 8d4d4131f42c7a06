// What changed between two looks at the storage.
#ifndef QORCTL_MODEL_INVENTORYDIFF_H
#define QORCTL_MODEL_INVENTORYDIFF_H

#include <optional>
#include <string>
#include <vector>

#include "model/Inventory.h"
#include "model/ObjectNames.h"

namespace qorctl {

enum class EChange { CHANGED, APPEARED, GONE };

struct CChange {
    EChange kind = EChange::CHANGED;
    std::string object;  // as ObjectName(); " (2)" follows the second one of a name
    std::string what;    // "state", "use", "serial number", "media errors" ...
    // A text, or a number and its text; absent: the tool did not say, or the object was not there.
    CMeasure before;
    CMeasure after;  // likewise
    std::optional<CDriveIdentity> drive =
        std::nullopt;                  // of a physical drive: as it is, or last was
    CMeasure progress = std::nullopt;  // of a state that has some
};

// In the order of the newer report, what went at the end. Temperatures are no changes; the progress
// of a rebuild is one as long as there is some, not when it comes and goes with the state.
// Cost: linear in the objects, but for the look-up of names.
std::vector<CChange> CompareInventories(const CInventory& before, const CInventory& after);

// "controller 0 logical drive LD1: Optimal -> Degraded", "controller 0 drive 252:5 (PD5, serial A):
// media errors 2 -> 3", "PCIe SSD 177: appeared, Healthy"; as the tool's bytes are.
std::string DescribeChange(const CChange& change, ENameForm form = ENameForm::WHOLE);

}  // namespace qorctl

#endif  // QORCTL_MODEL_INVENTORYDIFF_H
