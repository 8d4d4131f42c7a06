// A list of supported devices, as the plug-in reads it, and what is odd about it.
#ifndef QORCTL_DOCTOR_SUPPORTEDLIST_H
#define QORCTL_DOCTOR_SUPPORTEDLIST_H

#include <list>
#include <string>
#include <vector>

#include "host/PathTrouble.h"
#include "presence/CMSRAID_PCICard.h"

namespace qorctl::doctor {

struct CSupportedList {
    std::string path;
    CPathTrouble trouble;               // what keeps this user from reading the file
    size_t matching = 0;                // entries of the file that can match a device
    std::list<DevicePCIID> devices;     // entries that the plug-in takes
    std::vector<std::string> oddities;  // one line each
};

CSupportedList ReadRaidList();
CSupportedList ReadSsdList();

}  // namespace qorctl::doctor

#endif  // QORCTL_DOCTOR_SUPPORTEDLIST_H
