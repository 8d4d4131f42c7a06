#include "metrics/DeviceLabels.h"

#include <algorithm>
#include <utility>

#include "model/ObjectNames.h"

namespace qorctl {
namespace {

std::optional<std::string> Digits(const CNumber& number) {
    return number ? std::make_optional(std::to_string(*number)) : std::nullopt;
}

CLabels PlaceOf(const CController& controller) {
    return CLabels().With("controller", Digits(controller.number));
}

CLabels PlaceOf(const CLogicalDrive& drive) {
    return CLabels().With("controller", Digits(drive.controller)).With("ld", Digits(drive.number));
}

CLabels PlaceOf(const CPhysicalDrive& drive) {
    const CDrivePlace& place = drive.place;
    const CLabels labels = CLabels()
                               .With("controller", Digits(drive.controller))
                               .With("enclosure", Digits(place.enclosure))
                               .With("slot", Digits(place.slot));
    const bool isWhole = place.enclosure && place.slot;
    return isWhole ? labels : labels.With("pd", Digits(drive.number));
}

CLabels PlaceOf(const CPcieSsd& ssd) {
    return CLabels().With("bus", Digits(ssd.bus));
}

template <class TDevice>
std::vector<CLabels> DistinctPlaces(const std::vector<TDevice>& devices) {
    std::vector<CLabels> places;
    std::map<std::string, size_t> seen;
    for (const TDevice& device : devices) {
        CLabels labels = PlaceOf(device);
        if (const size_t count = ++seen[labels.Text()]; count > 1) {
            labels = labels.With("twin", std::to_string(count));
        }
        places.push_back(std::move(labels));
    }
    return places;
}

CLabels OfKind(std::string_view kind, const CLabels& place) {
    return CLabels("object", kind).And(place);
}

template <class TDevice>
void AddObjects(std::map<std::string, CLabels>& objects, const char* kind,
                const std::vector<TDevice>& devices, const std::vector<CLabels>& places) {
    for (size_t i = 0; i < devices.size(); ++i) {
        objects.emplace(ObjectName(devices[i]), OfKind(kind, places[i]));
    }
}

}  // namespace

CDeviceLabels::CDeviceLabels(const CInventory& inventory)
    : controllers(DistinctPlaces(inventory.controllers)),
      logicalDrives(DistinctPlaces(inventory.logicalDrives)),
      physicalDrives(DistinctPlaces(inventory.physicalDrives)),
      pcieSsds(DistinctPlaces(inventory.pcieSsds)) {
    AddObjects(m_Objects, "controller", inventory.controllers, controllers);
    AddObjects(m_Objects, "logical_drive", inventory.logicalDrives, logicalDrives);
    AddObjects(m_Objects, "physical_drive", inventory.physicalDrives, physicalDrives);
    AddObjects(m_Objects, "pcie_ssd", inventory.pcieSsds, pcieSsds);
    for (size_t i = 0; i < controllers.size(); ++i) {
        m_Objects.emplace(BatteryName(inventory.controllers[i]), OfKind("battery", controllers[i]));
    }
}

CLabels CDeviceLabels::OfObject(const std::string& object) const {
    const auto found = m_Objects.find(object);
    return found == m_Objects.end() ? OfKind("server", CLabels()) : found->second;
}

}  // namespace qorctl
