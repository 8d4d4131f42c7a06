// The families of the devices.
#ifndef QORCTL_METRICS_DEVICEMETRICS_H
#define QORCTL_METRICS_DEVICEMETRICS_H

#include "metrics/DeviceLabels.h"
#include "metrics/MetricsText.h"
#include "model/Inventory.h"

namespace qorctl {

void AddDevices(CMetricsText& text, const CInventory& inventory, const CDeviceLabels& labels);

// What SMART requests told of the physical drives.
void AddSmart(CMetricsText& text, const CInventory& inventory, const CDeviceLabels& labels);

}  // namespace qorctl

#endif  // QORCTL_METRICS_DEVICEMETRICS_H
