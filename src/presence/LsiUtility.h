// The two LSI utilities that count physical disks where the RAID tool is missing.
#ifndef QOR_PRESENCE_LSIUTILITY_H
#define QOR_PRESENCE_LSIUTILITY_H

#include <list>
#include <string>
#include <string_view>

#include "presence/CMSRAID_PCICard.h"

struct CLsiUtility {
    const char* name;
    const char* arguments;
    std::string_view countKey;  // a count line begins with it
};

// The utility that knows the RAID controllers `devices`: older models, or none, need another one
// than a host with any newer model.
const CLsiUtility& UtilityFor(const std::list<DevicePCIID>& devices);

// Where it stands, below the provider's install directory.
std::string PathOf(const CLsiUtility& utility);

#endif  // QOR_PRESENCE_LSIUTILITY_H
