// Are physical disks attached to the RAID controllers? Asked only where the RAID tool is missing:
// one of the two LSI utilities is run, and the disk counts that it prints are added up.
#ifndef QOR_PRESENCE_CMSRAID_MEGASTORCLI_H
#define QOR_PRESENCE_CMSRAID_MEGASTORCLI_H

#include <list>

#include "presence/CMSRAID_PCICard.h"

class CMSRAID_MegaStorCLI {
public:
    // `devices` are the supported RAID controllers that are present: older models (or none) are
    // asked about with MegaCli, a host with any other with storcli. True if the utility ran, ended
    // with exit status 0 and reported more than zero disks; every failure is false and traced.
    static bool IsPresentRAIDPhysDisk(const std::list<DevicePCIID>& devices);
};

#endif  // QOR_PRESENCE_CMSRAID_MEGASTORCLI_H
