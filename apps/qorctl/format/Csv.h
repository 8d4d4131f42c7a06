// The drives of an answer as comma-separated values (RFC 4180).
//
// A header line, then one row a physical drive and one row a PCIe SSD, each line ended by CR LF.
// Numbers are in the units that the column names state. An empty cell: the tool did not say.
//
// Spreadsheets take a cell that begins with "=", "+", "-" or "@" for a formula, so such a text gets
// an apostrophe in front; so does the rest of a text behind a comma, semicolon, bar or colon, where
// a spreadsheet may be told to begin a new cell. Control characters, bytes that are no UTF-8 and
// what else is not printable become visible, "\x1b".
#ifndef QORCTL_FORMAT_CSV_H
#define QORCTL_FORMAT_CSV_H

#include <string>

#include "health/Advice.h"
#include "model/Inventory.h"

namespace qorctl {

std::string FormatCsv(const CInventory& inventory, const CProblemMarks& marks);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_CSV_H
