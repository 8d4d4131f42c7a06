// What one fault brings: a line a question, in the order of the tables.
//
//     GetRAIDInfo: failure, error `05`, notice `01`, `krzcli -ctrlinfo -aAll`
//     raid: 1: error code 05: the RAID tool did not answer in time
//
// A verb's line is its exit status and, where it said something, the message.
#ifndef QORTEST_ROW_H
#define QORTEST_ROW_H

#include <string>
#include <utility>
#include <vector>

namespace qortest {

using CRow = std::vector<std::pair<std::string, std::string>>;

std::string FormatRow(const CRow& row);
CRow ParseRow(const std::string& text);

// The tables of docs/reliability.md, from the row of every fault.
std::string FormatTables(const std::vector<std::pair<std::string, CRow>>& rows);

// Fit for a cell of a table: bytes that are no printable ASCII as "\xNN", and bars escaped.
std::string CellText(const std::string& text);

}  // namespace qortest

#endif  // QORTEST_ROW_H
