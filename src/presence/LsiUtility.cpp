#include "presence/LsiUtility.h"

#include <algorithm>
#include <array>

#include "plugin/ComLib.h"

namespace {

constexpr CLsiUtility MEGACLI = {"MegaCli", "-AdpAllInfo -aALL", "  Disks           :"};
constexpr CLsiUtility STORCLI = {"storcli", "/call show", "Physical Drives ="};

constexpr const char* INTEL_VENDOR = "VEN_8086";
constexpr const char* LSI_VENDOR = "VEN_1000";
constexpr std::array<std::string_view, 3> OLDER_LSI_DEVICES = {"DEV_005B", "DEV_0073", "DEV_0079"};

bool IsOlderModel(const DevicePCIID& controller) {
    if (controller.vendor == INTEL_VENDOR) {
        return true;
    }
    return controller.vendor == LSI_VENDOR &&
           std::find(OLDER_LSI_DEVICES.begin(), OLDER_LSI_DEVICES.end(), controller.device) !=
               OLDER_LSI_DEVICES.end();
}

}  // namespace

const CLsiUtility& UtilityFor(const std::list<DevicePCIID>& devices) {
    return std::all_of(devices.begin(), devices.end(), IsOlderModel) ? MEGACLI : STORCLI;
}

std::string PathOf(const CLsiUtility& utility) {
    return CFileUtility::GetInstallPath(0) + "/RAID/tool/" + utility.name;
}
