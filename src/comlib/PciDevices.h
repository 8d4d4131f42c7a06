// The PCI devices that the kernel knows, read from "/sys/bus/pci/devices".
#ifndef QOR_COMLIB_PCIDEVICES_H
#define QOR_COMLIB_PCIDEVICES_H

#include <optional>
#include <string>

namespace comlib {

// The text of the device list: a line "BB:DD.F_VVVV:DDDD_SSSS_RR" for each device, sorted by
// address (see COsInfo::makeDeviceInfo). Nothing, after a trace, if one of them could not be read.
//
// Thread rule: any thread at any time.
std::optional<std::string> ReadPciDevices();

}  // namespace comlib

#endif  // QOR_COMLIB_PCIDEVICES_H
