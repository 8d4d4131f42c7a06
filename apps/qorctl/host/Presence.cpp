#include "host/Presence.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "base/ServerPaths.h"
#include "host/DeviceWords.h"
#include "host/PathTrouble.h"
#include "plugin/ComLib.h"

namespace qorctl {
namespace {

constexpr const char* NO_DIRECTORY = "there is no install directory";

using CDeviceWords = std::vector<CDeviceWord>;

CPresence NotKnown(std::string reason, std::string remedy) {
    return {.reason = std::move(reason), .remedy = std::move(remedy)};
}

// What hides the list of supported cards: without it the plug-in finds none.
std::optional<CPresence> ListTrouble() {
    const std::string directory = CFileUtility::GetInstallPath(0);
    const CPathTrouble trouble =
        ExaminePath(directory + "/" + RAID_INI_NAME, EPathKind::FILE, R_OK);
    if (trouble.trouble == ETrouble::NONE) {
        return std::nullopt;
    }
    if (trouble.trouble != ETrouble::MISSING) {
        return NotKnown(trouble.reason, RemedySentence(trouble));
    }
    return NotKnown(
        fmt::format("{}; \"qorctl doctor\" says what is missing",
                    directory.empty() ? NO_DIRECTORY : trouble.reason),
        directory.empty()
            ? "Make the install directory, and copy what is shipped in share/qor into it."
            : "Copy the RaidVCFac.ini that is shipped into the install directory.");
}

CPresence WithoutDevices(const CPathTrouble& trouble) {
    switch (trouble.trouble) {
        case ETrouble::NONE:
            return NotKnown(
                fmt::format("{} cannot be read, or is larger than 16 MiB", DEVICE_LIST_PATH),
                fmt::format("Delete {}: the next request makes it again.", DEVICE_LIST_PATH));
        case ETrouble::MISSING:
            return NotKnown(trouble.reason + ", and the bus cannot be read either",
                            "Mount sysfs: the list is made of /sys/bus/pci/devices.");
        case ETrouble::UNREACHABLE:
        case ETrouble::FORBIDDEN:
        case ETrouble::WRONG_KIND:
            break;
    }
    return NotKnown(trouble.reason, RemedySentence(trouble));
}

size_t CountSupported(const CDeviceWords& words, const std::list<DevicePCIID>& supported) {
    return static_cast<size_t>(
        std::count_if(words.begin(), words.end(), [&](const CDeviceWord& word) {
            return std::any_of(
                supported.begin(), supported.end(),
                [&word](const DevicePCIID& device) { return Matches(word.identifier, device); });
        }));
}

}  // namespace

CPresence LookForDevices() {
    if (std::optional<CPresence> trouble = ListTrouble()) {
        return *std::move(trouble);
    }
    const CPathTrouble trouble = ExaminePath(DEVICE_LIST_PATH, EPathKind::FILE, R_OK);
    const std::optional<CDeviceWords> words =
        trouble.trouble == ETrouble::MISSING ? ReadLiveBus() : ReadDeviceList();
    if (!words) {
        return WithoutDevices(trouble);
    }
    std::list<DevicePCIID> cards;
    std::list<DevicePCIID> ssds;
    CMSRAID_PCICard::GetSupportRAIDList(&cards);
    CMSRAID_PCICard::GetSupportPCIeSSDList(&ssds);
    return {.reason = "",
            .remedy = "",
            .raidCards = CountSupported(*words, cards),
            .pcieSsds = CountSupported(*words, ssds)};
}

}  // namespace qorctl
