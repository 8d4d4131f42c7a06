#include "doctor/ServerFacts.h"

#include "base/ServerPaths.h"
#include "plugin/ComLib.h"

namespace qorctl::doctor {
namespace {

constexpr const char* RAID_LIST = "/RaidVCFac.ini";
constexpr const char* SSD_LIST = "/PciessdVCFac.ini";

CSupportedList ReadSsdList(const std::string& path) {
    CSupportedList list = ReadSupportedList(path);
    list.devices.push_back({"VEN_1AED", "DEV_2001"});  // supported without being listed
    return list;
}

std::vector<CSupportedDevice> Supported(const CSupportedList& list,
                                        const std::vector<CDeviceWord>& words) {
    std::vector<CSupportedDevice> found;
    for (const CDeviceWord& word : words) {
        for (const CSupportedDevice& device : list.devices) {
            if (Matches(device, word.identifier)) {
                found.push_back(device);
            }
        }
    }
    return found;
}

}  // namespace

CServerFacts::CServerFacts(const std::string& pluginPath)
    : m_PluginName(CPluginLibrary::Locate(pluginPath)),
      m_Plugin(CPluginLibrary::Load(pluginPath, m_PluginProblem)),
      m_InstallPath(CFileUtility::GetInstallPath(0)),
      m_RaidList(ReadSupportedList(m_InstallPath + RAID_LIST)),
      m_SsdList(ReadSsdList(m_InstallPath + SSD_LIST)) {
    std::optional<std::vector<CDeviceWord>> words = ReadDeviceList();
    if (!words) {
        words = ReadLiveBus();
    }
    if (words) {
        m_RaidDevices = Supported(m_RaidList, *words);
        m_SsdDevices = Supported(m_SsdList, *words);
    }
}

bool CServerFacts::IsToolInstalled() const {
    return CFileUtility::IsFileExist(KRZ_CLI_PATH);
}

const CToolRun& CServerFacts::VersionRun() {
    if (!m_VersionRun) {
        m_VersionRun = RunTool(*m_Plugin, "krzcli -v");
    }
    return *m_VersionRun;
}

}  // namespace qorctl::doctor
