// Is a device that the RAID tool supports present in this host? The host's PCI devices (a file that
// the common library writes) are held against the supported ones (an ini file per device class).
// No state; all operations are static. Every output list is emptied first.
#ifndef QOR_PRESENCE_CMSRAID_PCICARD_H
#define QOR_PRESENCE_CMSRAID_PCICARD_H

#include <list>
#include <string>

// One PCI vendor and device, as text: "VEN_" and "DEV_" with four upper-case hexadecimal digits.
struct DevicePCIID {
    std::string vendor;
    std::string device;
};

// Turns a word of the device list ("BB:DD.F_VVVV:DDDD…") into an identifier
// ("VEN_VVVV&DEV_DDDD", upper case). Throws std::out_of_range for a word too short to hold both.
void GetWindowsDeviceID(std::string word, std::string& id);

class CMSRAID_PCICard {
public:
    // `found` receives the supported entries that match, one for every present device and entry; it
    // may be null. An absent device is no error.
    static bool IsPresentRAID(std::list<DevicePCIID>* found);
    static bool IsPresentPCIeSSD(std::list<DevicePCIID>* found);
    static bool IsPresentSupportDevice(const std::list<DevicePCIID>& supported,
                                       std::list<DevicePCIID>* found);

    // The host's devices; has the list file made if there is none. False only for a null pointer.
    static bool GetPresentPCIList(std::list<std::string>* list);

    // The supported devices. Always true; a missing ini file has no entries.
    static bool GetSupportRAIDList(std::list<DevicePCIID>* list);
    static bool GetSupportPCIeSSDList(std::list<DevicePCIID>* list);
    static bool GetSupportPCIListFromIniFile(std::string& path, std::list<DevicePCIID>* list);
};

#endif  // QOR_PRESENCE_CMSRAID_PCICARD_H
