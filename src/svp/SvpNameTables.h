// The item names that the service-processor form carries, in the order of the display items. Each
// table ends with an empty text.
//
// The texts are made when the library is loaded and freed when it is unloaded or the process exits.
#ifndef QOR_SVP_SVPNAMETABLES_H
#define QOR_SVP_SVPNAMETABLES_H

#include <cstddef>
#include <string>

// General block of a controller. The first name gives the section's number, not an item.
extern const std::string tsCtrlGenList[];

// Firmware block of a controller.
extern const std::string tsCtrlVerList[];

// General block of a physical drive. The first name gives the section's number, not an item; the
// others must all be there, in this order, or the drive's section carries no items.
inline constexpr std::size_t PD_GEN_NAMES = 11;
extern const std::string tsPdGenList[PD_GEN_NAMES + 1];

#endif  // QOR_SVP_SVPNAMETABLES_H
