#include "Layout.h"

#include <fmt/format.h>

#include "Files.h"
#include "HostProfile.h"
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

bool PlaceTool(const CHost& host, const std::string& directory, const std::string& name,
               std::string& error) {
    return MakeDirectory(directory, error) && (host.tool.missing.count(name) != 0 ||
                                               LinkFile(SIMULATOR, directory + "/" + name, error));
}

// The tools share one copy of the program: it is large, and stands in memory.
bool PlaceTools(const CHost& host, std::string& error) {
    return CopySelf(SIMULATOR, error) && PlaceTool(host, KRZ_CLI_DIR, "krzcli", error) &&
           PlaceTool(host, UTILITY_DIR, "MegaCli", error) &&
           PlaceTool(host, UTILITY_DIR, "storcli", error);
}

bool LoadList(const std::string& name, std::string& text, std::string& error) {
    const std::optional<std::string> content = ReadFile(DataDirectory() + "/" + name, error);
    text = content.value_or("");
    return content.has_value();
}

}  // namespace

std::optional<CServerSource> LoadServer(const std::string& reference, std::string& error) {
    const std::string path = FindProfile(reference, error);
    if (path.empty()) {
        return std::nullopt;
    }
    std::optional<std::string> profile = ReadFile(path, error);
    if (!profile) {
        return std::nullopt;
    }
    std::string problem;
    std::optional<CHost> host = ParseHostProfile(*profile, problem);
    if (!host) {
        error = fmt::format("{}: {}", path, problem);
        return std::nullopt;
    }
    CServerSource source{std::move(*host), std::move(*profile), "", ""};
    if (!LoadList(RAID_LIST, source.raidList, error) ||
        !LoadList(PCIE_SSD_LIST, source.pcieSsdList, error)) {
        return std::nullopt;
    }
    return source;
}

bool LayOutServer(const CServerSource& source, std::string& error) {
    const std::string provider = PROVIDER_DIR;
    return PlaceTools(source.host, error) && MakeDirectory(KRZ_LIB_DIR, error) &&
           WriteFile(PROFILE_COPY, source.profile, error) &&
           WriteFile(provider + "/" + RAID_LIST, source.raidList, error) &&
           WriteFile(provider + "/" + PCIE_SSD_LIST, source.pcieSsdList, error) &&
           MakeDirectory(provider + "/tmp", error) &&
           WriteFile(DEVICE_LIST, DeviceList(source.host), error) &&
           MakeDirectory(CONFIG_DIR, error);
}

}  // namespace qorsim
