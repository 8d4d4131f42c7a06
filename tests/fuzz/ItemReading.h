// What a list of items says, read by rules of our own: docs/formats and docs/health.md once more,
// straight and slow.
#ifndef QORFUZZ_ITEMREADING_H
#define QORFUZZ_ITEMREADING_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/ItemList.h"
#include "health/Health.h"

namespace qorfuzz {

enum class ERoot { CONTROLLER, GROUP, DRIVE, SSD, OTHER };

struct CItemReading {
    size_t items = 0;
    std::array<size_t, 5> roots = {};                       // by ERoot
    std::vector<std::optional<std::string>> values;         // of all that stands below a root
    std::vector<std::optional<std::string>> logicalDrives;  // their states
    std::vector<qorctl::EHealth> states;                    // of all that is judged
    size_t smartRows = 0;
    bool isAscii = true;  // all texts
    bool isShort = true;  // no value is so long that it may be cut before it is judged

    size_t Count(ERoot root) const { return roots[static_cast<size_t>(root)]; }
    qorctl::EHealth Worst() const;
};

CItemReading ReadOnceMore(const ItemList& items);

}  // namespace qorfuzz

#endif  // QORFUZZ_ITEMREADING_H
