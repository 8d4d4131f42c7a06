// By which labels the series of a device are told apart from those of all others.
//
// They are its place, which stays when a part is replaced: `controller`, `enclosure` and `slot`,
// `ld`, `bus`. A physical drive whose place the tool did not tell in full has its number, `pd`. The
// second of two devices that claim one place has `twin="2"`.
#ifndef QORCTL_METRICS_DEVICELABELS_H
#define QORCTL_METRICS_DEVICELABELS_H

#include <map>
#include <string>
#include <vector>

#include "metrics/MetricsText.h"
#include "model/Inventory.h"

namespace qorctl {

struct CDeviceLabels {
    explicit CDeviceLabels(const CInventory& inventory);

    // Of what a finding is about, by its name (see model/ObjectNames.h): the labels of the device
    // behind `object`, its kind. An empty name is the server.
    CLabels OfObject(const std::string& object) const;

    // As many as the inventory has, in its order.
    std::vector<CLabels> controllers;
    std::vector<CLabels> logicalDrives;
    std::vector<CLabels> physicalDrives;
    std::vector<CLabels> pcieSsds;

private:
    std::map<std::string, CLabels> m_Objects;
};

}  // namespace qorctl

#endif  // QORCTL_METRICS_DEVICELABELS_H
