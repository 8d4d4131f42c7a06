#include "doctor/ServerFacts.h"

#include "base/ServerPaths.h"
#include "plugin/ComLib.h"

namespace qorctl::doctor {
CServerFacts::CServerFacts(const CPluginChoice& plugin)
    : m_Choice(plugin),
      m_PluginName(CPluginLibrary::Locate(plugin.path)),
      m_Plugin(CPluginLibrary::Load(plugin.path, m_PluginProblem)),
      m_InstallPath(CFileUtility::GetInstallPath(0)),
      m_RaidList(ReadRaidList()),
      m_SsdList(ReadSsdList()) {
    std::optional<std::vector<CDeviceWord>> words = ReadDeviceList();
    if (!words) {
        words = ReadLiveBus();
    }
    if (words) {
        m_RaidDevices = SupportedOf(m_RaidList.devices, *words);
        m_SsdDevices = SupportedOf(m_SsdList.devices, *words);
    }
}

bool CServerFacts::IsToolInstalled() const {
    return CFileUtility::IsFileExist(KRZ_CLI_PATH);
}

const CToolRun& CServerFacts::VersionRun() {
    if (!m_VersionRun) {
        m_VersionRun = RunTool(m_Choice, "krzcli -v");
    }
    return *m_VersionRun;
}

}  // namespace qorctl::doctor
