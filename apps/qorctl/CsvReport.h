// The drives of an answer as comma-separated values (RFC 4180).
//
// A header line, then one row a physical drive and one row a PCIe SSD, each line ended by CR LF.
// Numbers are in the units that the column names state. An empty cell: the tool did not say.
//
// Spreadsheets take a cell that begins with "=", "+", "-", "@", a tab or CR for a formula, so such
// a text gets an apostrophe in front. Texts are the tool's bytes otherwise.
//
// Thread rule: a plain function.
#ifndef QORCTL_CSVREPORT_H
#define QORCTL_CSVREPORT_H

#include <string>

#include "Inventory.h"

namespace qorctl {

std::string FormatCsv(const CInventory& inventory);

}  // namespace qorctl

#endif  // QORCTL_CSVREPORT_H
