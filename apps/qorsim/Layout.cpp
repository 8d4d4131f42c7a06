#include "Layout.h"

#include <fmt/format.h>

#include <ctime>
#include <nlohmann/json.hpp>
#include <utility>

#include "Files.h"
#include "HostProfile.h"
#include "ProfileFile.h"
#include "ServerPaths.h"
#include "ShippedData.h"

namespace qorsim {
namespace {

constexpr const char* RAID_LIST = "RaidVCFac.ini";
constexpr const char* PCIE_SSD_LIST = "PciessdVCFac.ini";

// A device a line: BB:DD.F_VVVV:DDDD_SSSS_RR
std::string DeviceList(const CHost& host) {
    std::string text;
    for (const CPciDevice& device : host.pciDevices) {
        text += fmt::format("{}_{}:{}_{}_{}\n", device.address, device.vendor, device.device,
                            device.subsystem, device.revision);
    }
    return text;
}

// The tools share one copy of the program: it is large, and may stand in memory.
bool PlaceTools(const CHost& host, const std::string& root, std::string& error) {
    constexpr std::pair<const char*, const char*> TOOLS[] = {
        {"krzcli", KRZ_CLI_DIR}, {"MegaCli", UTILITY_DIR}, {"storcli", UTILITY_DIR}};
    const std::string simulator = root + SIMULATOR;
    bool placed = CopySelf(simulator, error);
    for (const auto& [name, directory] : TOOLS) {
        placed = placed && MakeDirectory(root + directory, error) &&
                 (host.tool.missing.count(name) != 0 ||
                  LinkFile(simulator, root + directory + "/" + name, error));
    }
    return placed;
}

bool LoadList(const std::string& name, std::string& text, std::string& error) {
    const std::optional<std::string> content = ReadFile(DataDirectory() + "/" + name, error);
    text = content.value_or("");
    return content.has_value();
}

}  // namespace

std::optional<CServerSource> LoadServer(const std::string& reference, std::string& error) {
    const std::optional<nlohmann::json> profile = LoadProfile(reference, error);
    std::optional<CHost> host = profile ? ReadHostProfile(*profile, error) : std::nullopt;
    if (!host) {
        return std::nullopt;
    }
    CServerSource source{std::move(*host), profile->dump(2) + "\n", "", ""};
    if (!LoadList(RAID_LIST, source.raidList, error) ||
        !LoadList(PCIE_SSD_LIST, source.pcieSsdList, error)) {
        return std::nullopt;
    }
    return source;
}

bool LayOutServer(const CServerSource& source, long seconds, const std::string& root,
                  std::string& error) {
    const std::string provider = root + PROVIDER_DIR;
    return PlaceTools(source.host, root, error) && MakeDirectory(root + KRZ_LIB_DIR, error) &&
           WriteFile(root + PROFILE_COPY, source.profile, error) &&
           WriteFile(root + START_TIME, fmt::format("{}\n", std::time(nullptr) - seconds), error) &&
           WriteFile(provider + "/" + RAID_LIST, source.raidList, error) &&
           WriteFile(provider + "/" + PCIE_SSD_LIST, source.pcieSsdList, error) &&
           MakeDirectory(provider + "/tmp", error) &&
           WriteFile(root + DEVICE_LIST, DeviceList(source.host), error) &&
           MakeDirectory(root + CONFIG_DIR, error);
}

}  // namespace qorsim
