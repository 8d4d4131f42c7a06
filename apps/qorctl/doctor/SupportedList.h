// A list of supported devices, as the plug-in reads it, and what is odd about it.
//
//     [SuportDevice]
//     SuportDeviceNum=N
//     VendorI=VEN_vvvv      I = 1 to N; an entry without one of the two is skipped
//     DeviceI=DEV_dddd
//
// The plug-in searches for both texts in "VEN_vvvv&DEV_dddd" with upper-case digits.
#ifndef QORCTL_DOCTOR_SUPPORTEDLIST_H
#define QORCTL_DOCTOR_SUPPORTEDLIST_H

#include <string>
#include <vector>

namespace qorctl::doctor {

struct CSupportedDevice {
    std::string vendor;
    std::string device;
};

struct CSupportedList {
    std::string path;
    bool exists = false;
    bool readable = false;                  // a regular file that this user may read
    size_t matching = 0;                    // entries of the file that can match a device
    std::vector<CSupportedDevice> devices;  // entries that the plug-in takes
    std::vector<std::string> oddities;      // one line each
};

CSupportedList ReadSupportedList(const std::string& path);

// True if the plug-in finds `device` in `identifier` ("VEN_vvvv&DEV_dddd").
bool Matches(const CSupportedDevice& device, const std::string& identifier);

}  // namespace qorctl::doctor

#endif  // QORCTL_DOCTOR_SUPPORTEDLIST_H
