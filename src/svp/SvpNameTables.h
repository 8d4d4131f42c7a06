// The item names that the service-processor form carries, in the order of the display items. Each
// table ends with an empty text.
#ifndef QOR_SVP_SVPNAMETABLES_H
#define QOR_SVP_SVPNAMETABLES_H

// General block of a controller. The first name gives the section's number, not an item.
inline constexpr const char* tsCtrlGenList[] = {"Controller No.", "Product Name",
                                                "PCI Bus/Dev/Func", ""};

// Firmware block of a controller.
inline constexpr const char* tsCtrlVerList[] = {"Firmware Package Version", "Firmware Version", ""};

// General block of a physical drive. The first name gives the section's number, not an item; the
// others must all be there, in this order, or the drive's section carries no items.
inline constexpr const char* tsPdGenList[] = {"PD No.",      "Raw Capacity",   "Interface Type",
                                              "Media Type",  "Product ID",     "Serial Number",
                                              "Vendor ID",   "PD Status",      "PD Status(Detail)",
                                              "Drive Speed", "Revision Level", ""};

#endif  // QOR_SVP_SVPNAMETABLES_H
