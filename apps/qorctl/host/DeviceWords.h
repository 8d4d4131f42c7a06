// The devices of a device list and of the bus, as the plug-in reads and judges them.
#ifndef QORCTL_HOST_DEVICEWORDS_H
#define QORCTL_HOST_DEVICEWORDS_H

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "presence/CMSRAID_PCICard.h"

namespace qorctl {

struct CDeviceWord {
    std::string place;       // "BB:DD.F_VVVV:DDDD", in upper case
    std::string identifier;  // "VEN_vvvv&DEV_dddd", in upper case
};

// Nothing when the file is missing, or cannot be read as the plug-in reads it.
std::optional<std::vector<CDeviceWord>> ReadDeviceList();

// The kernel's devices; nothing when they cannot be read.
std::optional<std::vector<CDeviceWord>> ReadLiveBus();

// The entries of `supported` that match, one for every device and entry.
std::list<DevicePCIID> SupportedOf(const std::list<DevicePCIID>& supported,
                                   const std::vector<CDeviceWord>& words);

}  // namespace qorctl

#endif  // QORCTL_HOST_DEVICEWORDS_H
