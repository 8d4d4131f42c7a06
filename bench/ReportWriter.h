// Reports of any size as the RAID tool prints them, the same in every run.
#ifndef QORBENCH_REPORTWRITER_H
#define QORBENCH_REPORTWRITER_H

#include <cstddef>
#include <string>

namespace qorbench {

enum class EReport { Controllers, LogicalDrives, PhysicalDrives, Smart, PcieSsds };

inline constexpr EReport ALL_REPORTS[] = {EReport::Controllers, EReport::LogicalDrives,
                                          EReport::PhysicalDrives, EReport::Smart,
                                          EReport::PcieSsds};

// "ctrl", "ld", "pd", "smart", "pssd".
const char* NameOf(EReport kind);

// A report of at least `size` bytes that ends with a whole block (one row of the SMART table).
std::string MakeReport(EReport kind, std::size_t size);

}  // namespace qorbench

#endif  // QORBENCH_REPORTWRITER_H
