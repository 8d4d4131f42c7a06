// The answer of a request as tables for people: one of controllers, logical drives, physical drives
// and PCIe SSDs each, a line a device, and of a drive's SMART attributes where they were asked for.
// The first column marks problems: "!!" critical, "!" warning, "?" unknown.
#ifndef QORCTL_FORMAT_TABLE_H
#define QORCTL_FORMAT_TABLE_H

#include <cstddef>
#include <string>

#include "health/Advice.h"
#include "model/Inventory.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// The tables, an empty line between them; empty without a device.
std::string FormatTables(const CInventory& inventory, const CProblemMarks& marks,
                         const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_TABLE_H
