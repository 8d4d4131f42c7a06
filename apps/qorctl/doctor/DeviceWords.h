// The devices of a device list and of the bus, as the plug-in reads them.
#ifndef QORCTL_DOCTOR_DEVICEWORDS_H
#define QORCTL_DOCTOR_DEVICEWORDS_H

#include <optional>
#include <string>
#include <vector>

namespace qorctl::doctor {

struct CDeviceWord {
    std::string place;       // "BB:DD.F_VVVV:DDDD", in upper case
    std::string identifier;  // "VEN_vvvv&DEV_dddd", in upper case
};

// Nothing when the file is missing or cannot be read.
std::optional<std::vector<CDeviceWord>> ReadDeviceList();

// The kernel's devices; nothing when they cannot be read.
std::optional<std::vector<CDeviceWord>> ReadLiveBus();

}  // namespace qorctl::doctor

#endif  // QORCTL_DOCTOR_DEVICEWORDS_H
