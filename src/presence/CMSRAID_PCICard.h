// Is a device that the RAID tool supports present in this host? The host's PCI devices (a file that
// the common library writes) are held against the supported ones (an ini file per device class).
// No state; all operations are static. Every output list is emptied first.
#ifndef QOR_PRESENCE_CMSRAID_PCICARD_H
#define QOR_PRESENCE_CMSRAID_PCICARD_H

#include <istream>
#include <list>
#include <string>

// The lists of supported devices, in the install directory. An entry without a vendor or a device
// is skipped.
//
//     [SuportDevice]
//     SuportDeviceNum=N
//     VendorI=VEN_vvvv      I = 1 to N
//     DeviceI=DEV_dddd
inline constexpr const char* RAID_INI_NAME = "RaidVCFac.ini";
inline constexpr const char* SSD_INI_NAME = "PciessdVCFac.ini";
// Spelled with one "p" in every ini file in the field.
inline constexpr const char* INI_SECTION = "SuportDevice";
inline constexpr const char* INI_COUNT_KEY = "SuportDeviceNum";
inline constexpr size_t INI_VALUE_SIZE = 256;

// One PCI vendor and device, as text: "VEN_" and "DEV_" with four upper-case hexadecimal digits.
struct DevicePCIID {
    std::string vendor;
    std::string device;
};

// Turns a word of the device list ("BB:DD.F_VVVV:DDDD…") into an identifier
// ("VEN_VVVV&DEV_DDDD", upper case). Throws std::out_of_range for a word too short to hold both.
void GetWindowsDeviceID(std::string word, std::string& id);

// The next word of a device list that stands for a device; false at the end.
bool ReadDeviceWord(std::istream& list, std::string& word);

// True if the texts of `entry` occur in the identifier.
bool Matches(const std::string& id, const DevicePCIID& entry);

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
