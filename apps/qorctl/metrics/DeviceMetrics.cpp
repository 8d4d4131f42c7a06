#include "metrics/DeviceMetrics.h"

#include <algorithm>
#include <string>
#include <utility>

#include "health/Health.h"

namespace qorctl {
namespace {

constexpr double PERCENT = 100;
constexpr double SECONDS_OF_HOUR = 3600;
constexpr std::string_view UNKNOWN_STATE = "unknown";

using enum EMetric;

// A measurement that a device may have: a series each.
template <class TDevice>
struct CMeasureFamily {
    CFamily family;
    CMeasure TDevice::*measure;
    double factor = 1;  // from the unit that was read to the one that is written
    double divisor = 1;
};

// A state: a series for each that is known, 1 for the one that the device is in.
template <class TDevice>
struct CStateFamily {
    CFamily family;
    std::string_view key;  // of the report
    CText TDevice::*state;
};

// What a device is: a label for each text.
template <class TDevice>
struct CInfoLabel {
    std::string_view name;
    CText TDevice::*text;
};

constexpr CFamily CONTROLLER_INFO = {"qor_controller_info", GAUGE,
                                     "The controller, its firmware and driver."};
constexpr CInfoLabel<CController> CONTROLLER_LABELS[] = {
    {"product", &CController::product},
    {"serial", &CController::serial},
    {"firmware_package", &CController::firmwarePackage},
    {"firmware", &CController::firmwareVersion},
    {"bios", &CController::biosVersion},
    {"driver", &CController::driverVersion},
    {"pci", &CController::pciText},
};
constexpr CFamily BATTERY_PRESENT = {"qor_controller_battery_present", GAUGE,
                                     "1 with a battery, 0 where the RAID tool says that there is "
                                     "none."};
constexpr CStateFamily<CController> BATTERY_STATE = {
    {"qor_controller_battery_state", GAUGE, "1 for the state that the battery is in."},
    "BBU Status",
    &CController::batteryStatus};
constexpr CMeasureFamily<CController> CONTROLLER_MEASURES[] = {
    {{"qor_controller_battery_charge_ratio", GAUGE, "Relative charge of the battery."},
     &CController::batteryCharge,
     1,
     PERCENT},
    {{"qor_controller_battery_temperature_celsius", GAUGE, "Temperature of the battery."},
     &CController::batteryTemperature},
    {{"qor_controller_memory_bytes", GAUGE, "Memory of the controller."}, &CController::memory},
    {{"qor_controller_physical_drives_stated", GAUGE,
      "Physical drives that the controller says it has."},
     &CController::physicalDriveCount},
    {{"qor_controller_logical_drives_stated", GAUGE,
      "Logical drives that the controller says it has."},
     &CController::logicalDriveCount},
};
constexpr CFamily DRIVES_REPORTED = {"qor_controller_physical_drives_reported", GAUGE,
                                     "Physical drives of the controller that were reported."};
constexpr CFamily LOGICAL_DRIVES_REPORTED = {"qor_controller_logical_drives_reported", GAUGE,
                                             "Logical drives of the controller that were "
                                             "reported."};

constexpr CFamily LOGICAL_INFO = {"qor_logical_drive_info", GAUGE,
                                  "The logical drive and its RAID group."};
constexpr CInfoLabel<CLogicalDrive> LOGICAL_LABELS[] = {
    {"name", &CLogicalDrive::name},
    {"group", &CLogicalDrive::group},
    {"raid_level", &CLogicalDrive::raidLevel},
    {"type", &CLogicalDrive::type},
};
constexpr CStateFamily<CLogicalDrive> LOGICAL_STATE = {
    {"qor_logical_drive_state", GAUGE, "1 for the state that the logical drive is in."},
    "State",
    &CLogicalDrive::state};
constexpr CMeasureFamily<CLogicalDrive> LOGICAL_MEASURES[] = {
    {{"qor_logical_drive_size_bytes", GAUGE, "Size of the logical drive."},
     &CLogicalDrive::capacity},
};

constexpr CFamily DRIVE_INFO = {"qor_physical_drive_info", GAUGE, "The drive and its firmware."};
constexpr CInfoLabel<CPhysicalDrive> DRIVE_LABELS[] = {
    {"product", &CPhysicalDrive::product},
    {"serial", &CPhysicalDrive::serial},
    {"firmware", &CPhysicalDrive::revision},
    {"vendor", &CPhysicalDrive::vendor},
    {"wwn", &CPhysicalDrive::wwn},
    {"media", &CPhysicalDrive::mediaType},
    {"interface", &CPhysicalDrive::interfaceType},
};
constexpr CStateFamily<CPhysicalDrive> DRIVE_STATE = {
    {"qor_physical_drive_state", GAUGE, "1 for the state that the drive is in."},
    "PD Status(Detail)",
    &CPhysicalDrive::statusDetail};
constexpr CFamily DRIVE_ROLE = {"qor_physical_drive_role", GAUGE,
                                "1 for what the drive is used for, with its RAID group."};
constexpr CMeasureFamily<CPhysicalDrive> DRIVE_MEASURES[] = {
    {{"qor_physical_drive_temperature_celsius", GAUGE, "Temperature of the drive."},
     &CPhysicalDrive::temperature},
    {{"qor_physical_drive_media_errors_total", COUNTER, "Media errors of the drive."},
     &CPhysicalDrive::mediaErrors},
    {{"qor_physical_drive_other_errors_total", COUNTER, "Other errors of the drive."},
     &CPhysicalDrive::otherErrors},
    {{"qor_physical_drive_predictive_failures_total", COUNTER,
      "How often the drive said that it is going to fail."},
     &CPhysicalDrive::predictiveFailures},
    {{"qor_physical_drive_size_bytes", GAUGE, "Raw capacity of the drive."},
     &CPhysicalDrive::capacity},
    {{"qor_physical_drive_progress_ratio", GAUGE,
      "How much of the drive's rebuild or copy is done."},
     &CPhysicalDrive::progress,
     1,
     PERCENT},
};

constexpr CFamily SSD_INFO = {"qor_pcie_ssd_info", GAUGE, "The PCIe SSD and its firmware."};
constexpr CInfoLabel<CPcieSsd> SSD_LABELS[] = {
    {"product", &CPcieSsd::product},
    {"serial", &CPcieSsd::serial},
    {"firmware", &CPcieSsd::firmware},
};
constexpr CStateFamily<CPcieSsd> SSD_STATE = {
    {"qor_pcie_ssd_state", GAUGE, "1 for the state that the PCIe SSD is in."},
    "Status",
    &CPcieSsd::status};
constexpr CMeasureFamily<CPcieSsd> SSD_MEASURES[] = {
    {{"qor_pcie_ssd_temperature_celsius", GAUGE, "Temperature of the PCIe SSD."},
     &CPcieSsd::temperature},
    {{"qor_pcie_ssd_life_used_ratio", GAUGE,
      "Used part of the rated endurance; above 1 beyond it."},
     &CPcieSsd::used,
     1,
     PERCENT},
    {{"qor_pcie_ssd_written_bytes_total", COUNTER, "Bytes that were written."}, &CPcieSsd::written},
    {{"qor_pcie_ssd_size_bytes", GAUGE, "Capacity of the PCIe SSD."}, &CPcieSsd::capacity},
};

constexpr CFamily POWER_ON = {"qor_physical_drive_power_on_seconds_total", COUNTER,
                              "For how long the drive has been on."};
constexpr CFamily FAILURE_PREDICTED = {"qor_physical_drive_smart_failure_predicted", GAUGE,
                                       "1 if the drive's SMART data say that it will fail."};
constexpr CMeasureFamily<CSmartAttribute> SATA_MEASURES[] = {
    {{"qor_physical_drive_smart_attribute_current", GAUGE,
      "Rated value of a SATA attribute; it falls towards the threshold."},
     &CSmartAttribute::current},
    {{"qor_physical_drive_smart_attribute_worst", GAUGE,
      "Lowest rated value that a SATA attribute ever had."},
     &CSmartAttribute::worst},
    {{"qor_physical_drive_smart_attribute_threshold", GAUGE,
      "Rated value at which a SATA attribute tells of a failure."},
     &CSmartAttribute::threshold},
    {{"qor_physical_drive_smart_attribute_raw", GAUGE, "Raw value of a SATA attribute."},
     &CSmartAttribute::value},
};
constexpr CMeasureFamily<CSmartAttribute> SAS_MEASURES[] = {
    {{"qor_physical_drive_smart_events_total", COUNTER, "A SMART counter of a SAS drive."},
     &CSmartAttribute::value},
    {{"qor_physical_drive_smart_events_threshold", GAUGE,
      "What a SMART counter of a SAS drive should not go beyond."},
     &CSmartAttribute::threshold},
};

// The devices of a kind, each with its labels.
template <class TDevice>
class CDevices {
public:
    CDevices(CMetricsText& text, const std::vector<TDevice>& devices,
             const std::vector<CLabels>& labels)
        : m_Text(text), m_Devices(devices), m_Labels(labels) {}

    template <class TUse>
    void Add(const CFamily& family, TUse use) const {
        m_Text.Begin(family);
        for (size_t i = 0; i < m_Devices.size(); ++i) {
            use(m_Devices[i], m_Labels[i]);
        }
    }

    template <size_t SIZE>
    void AddInfo(const CFamily& family, const CInfoLabel<TDevice> (&rows)[SIZE]) const;
    void AddState(const CStateFamily<TDevice>& row) const;
    template <size_t SIZE>
    void AddMeasures(const CMeasureFamily<TDevice> (&rows)[SIZE]) const;

private:
    CMetricsText& m_Text;
    const std::vector<TDevice>& m_Devices;
    const std::vector<CLabels>& m_Labels;
};

// The number by which the plug-in's texts name a physical drive.
CLabels WithNumber(const CPhysicalDrive& drive, const CLabels& labels) {
    return drive.number ? labels.With("pd", std::to_string(*drive.number)) : labels;
}

template <class TDevice>
CLabels WithNumber(const TDevice& /*device*/, const CLabels& labels) {
    return labels;
}

template <class TDevice>
template <size_t SIZE>
void CDevices<TDevice>::AddInfo(const CFamily& family,
                                const CInfoLabel<TDevice> (&rows)[SIZE]) const {
    Add(family, [&](const TDevice& device, const CLabels& place) {
        CLabels labels = WithNumber(device, place);
        for (const CInfoLabel<TDevice>& row : rows) {
            labels = labels.With(row.name, device.*row.text);
        }
        m_Text.Add(labels, 1);
    });
}

// A text without a known meaning is "unknown", and has a series of its own for people to see.
template <class TDevice>
void CDevices<TDevice>::AddState(const CStateFamily<TDevice>& row) const {
    std::vector<std::string_view> known = KnownStates(row.key);
    known.push_back(UNKNOWN_STATE);
    std::vector<CLabels> states;
    states.reserve(known.size());
    for (const std::string_view each : known) {
        states.emplace_back("state", each);
    }
    Add(row.family, [&](const TDevice& device, const CLabels& labels) {
        const CText& state = device.*row.state;
        if (!state) {
            return;
        }
        const bool isKnown = std::find(known.begin(), known.end(), *state) != known.end();
        const std::string_view its = isKnown ? *state : UNKNOWN_STATE;
        for (size_t i = 0; i < known.size(); ++i) {
            m_Text.Add(labels.And(states[i]), known[i] == its ? 1 : 0);
        }
        if (!isKnown) {
            m_Text.Add(labels.With("state", *state), 1);
        }
    });
}

void AddMeasure(CMetricsText& text, const CLabels& labels, const CMeasure& measure, double factor,
                double divisor) {
    if (!measure || !measure->number) {
        return;
    }
    if (factor == divisor) {
        text.Add(labels, *measure->number);
    } else {
        text.AddReal(labels, static_cast<double>(*measure->number) * factor / divisor);
    }
}

template <class TDevice>
template <size_t SIZE>
void CDevices<TDevice>::AddMeasures(const CMeasureFamily<TDevice> (&rows)[SIZE]) const {
    for (const CMeasureFamily<TDevice>& row : rows) {
        Add(row.family, [&](const TDevice& device, const CLabels& labels) {
            AddMeasure(m_Text, labels, device.*row.measure, row.factor, row.divisor);
        });
    }
}

void AddYesOrNo(CMetricsText& text, const CLabels& labels, const CText& said, std::string_view yes,
                std::string_view no) {
    if (said == yes || said == no) {
        text.Add(labels, said == yes ? 1 : 0);
    }
}

template <class TDrive>
long long CountOf(const std::vector<TDrive>& drives, const CController& controller) {
    return std::count_if(drives.begin(), drives.end(), [&controller](const TDrive& drive) {
        return drive.controller == controller.number;
    });
}

void AddControllers(CMetricsText& text, const CInventory& inventory,
                    const std::vector<CLabels>& labels) {
    const CDevices<CController> controllers(text, inventory.controllers, labels);
    controllers.AddInfo(CONTROLLER_INFO, CONTROLLER_LABELS);
    controllers.Add(BATTERY_PRESENT, [&](const CController& controller, const CLabels& place) {
        AddYesOrNo(text, place, controller.batteryPresence, "Present", "Absent");
    });
    controllers.AddState(BATTERY_STATE);
    controllers.AddMeasures(CONTROLLER_MEASURES);
    controllers.Add(DRIVES_REPORTED, [&](const CController& controller, const CLabels& place) {
        text.Add(place, CountOf(inventory.physicalDrives, controller));
    });
    controllers.Add(LOGICAL_DRIVES_REPORTED,
                    [&](const CController& controller, const CLabels& place) {
                        text.Add(place, CountOf(inventory.logicalDrives, controller));
                    });
}

void AddLogicalDrives(CMetricsText& text, const CInventory& inventory,
                      const std::vector<CLabels>& labels) {
    const CDevices<CLogicalDrive> drives(text, inventory.logicalDrives, labels);
    drives.AddInfo(LOGICAL_INFO, LOGICAL_LABELS);
    drives.AddState(LOGICAL_STATE);
    drives.AddMeasures(LOGICAL_MEASURES);
}

// Only the one that it has: nobody waits for a role.
void AddRole(CMetricsText& text, const CPhysicalDrive& drive, const CLabels& place) {
    if (!drive.use) {
        return;
    }
    const std::string_view role =
        drive.role == EDriveRole::UNKNOWN ? UNKNOWN_STATE : RoleName(drive.role);
    text.Add(place.With("role", role).With("group", drive.group), 1);
}

void AddPhysicalDrives(CMetricsText& text, const CInventory& inventory,
                       const std::vector<CLabels>& labels) {
    const CDevices<CPhysicalDrive> drives(text, inventory.physicalDrives, labels);
    drives.AddInfo(DRIVE_INFO, DRIVE_LABELS);
    drives.AddState(DRIVE_STATE);
    drives.Add(DRIVE_ROLE, [&](const CPhysicalDrive& drive, const CLabels& place) {
        AddRole(text, drive, place);
    });
    drives.AddMeasures(DRIVE_MEASURES);
}

void AddPcieSsds(CMetricsText& text, const CInventory& inventory,
                 const std::vector<CLabels>& labels) {
    const CDevices<CPcieSsd> ssds(text, inventory.pcieSsds, labels);
    ssds.AddInfo(SSD_INFO, SSD_LABELS);
    ssds.AddState(SSD_STATE);
    ssds.AddMeasures(SSD_MEASURES);
}

// SAS drives have bare counters: no number, and no rated value.
bool IsOfSas(const CSmartAttribute& attribute) {
    return !attribute.id && !attribute.current && !attribute.worst;
}

// The lines of all drives' SMART tables, of one of the two kinds.
struct CSmartLines {
    std::vector<CSmartAttribute> attributes;
    std::vector<CLabels> labels;
};

CSmartLines LinesOf(const CInventory& inventory, const std::vector<CLabels>& places, bool isOfSas) {
    CSmartLines lines;
    for (size_t i = 0; i < places.size(); ++i) {
        const std::optional<CSmart>& smart = inventory.physicalDrives[i].smart;
        for (const CSmartAttribute& attribute :
             smart ? smart->attributes : std::vector<CSmartAttribute>()) {
            if (IsOfSas(attribute) == isOfSas) {
                const CLabels labels =
                    attribute.id ? places[i].With("id", std::to_string(*attribute.id)) : places[i];
                lines.labels.push_back(labels.With("attribute", attribute.name));
                lines.attributes.push_back(attribute);
            }
        }
    }
    return lines;
}

}  // namespace

void AddDevices(CMetricsText& text, const CInventory& inventory, const CDeviceLabels& labels) {
    AddControllers(text, inventory, labels.controllers);
    AddLogicalDrives(text, inventory, labels.logicalDrives);
    AddPhysicalDrives(text, inventory, labels.physicalDrives);
    AddPcieSsds(text, inventory, labels.pcieSsds);
}

void AddSmart(CMetricsText& text, const CInventory& inventory, const CDeviceLabels& labels) {
    const CDevices<CPhysicalDrive> drives(text, inventory.physicalDrives, labels.physicalDrives);
    drives.Add(POWER_ON, [&](const CPhysicalDrive& drive, const CLabels& place) {
        if (drive.smart) {
            AddMeasure(text, place, drive.smart->powerOnTime, SECONDS_OF_HOUR, 1);
        }
    });
    drives.Add(FAILURE_PREDICTED, [&](const CPhysicalDrive& drive, const CLabels& place) {
        if (drive.smart) {
            AddYesOrNo(text, place, drive.smart->predictiveFailure, "Yes", "No");
        }
    });
    const CSmartLines sata = LinesOf(inventory, labels.physicalDrives, false);
    CDevices<CSmartAttribute>(text, sata.attributes, sata.labels).AddMeasures(SATA_MEASURES);
    const CSmartLines sas = LinesOf(inventory, labels.physicalDrives, true);
    CDevices<CSmartAttribute>(text, sas.attributes, sas.labels).AddMeasures(SAS_MEASURES);
}

}  // namespace qorctl
