// Reports of any size as the RAID tool prints them, the same in every run.
#ifndef QORBENCH_REPORTWRITER_H
#define QORBENCH_REPORTWRITER_H

#include <cstddef>
#include <string>

namespace qorbench {

enum class EReport { CONTROLLERS, LOGICAL_DRIVES, PHYSICAL_DRIVES, SMART, PCIE_SSDS };

inline constexpr EReport ALL_REPORTS[] = {EReport::CONTROLLERS, EReport::LOGICAL_DRIVES,
                                          EReport::PHYSICAL_DRIVES, EReport::SMART,
                                          EReport::PCIE_SSDS};

// "ctrl", "ld", "pd", "smart", "pssd".
const char* NameOf(EReport kind);

// A report of at least `size` bytes that ends with a whole block (one row of the SMART table).
std::string MakeReport(EReport kind, std::size_t size);

}  // namespace qorbench

#endif  // QORBENCH_REPORTWRITER_H
