// What the checks share about the server, looked up once.
//
// The configuration, the lists of devices and the PCI bus are read and judged with the code of the
// plug-in and of our common library, which is linked in, so that a server is examined also where
// the libraries are missing, and by no other rules than theirs.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_DOCTOR_SERVERFACTS_H
#define QORCTL_DOCTOR_SERVERFACTS_H

#include <list>
#include <optional>
#include <string>

#include "doctor/SupportedList.h"
#include "host/DeviceWords.h"
#include "host/PluginLibrary.h"
#include "host/ResultFiles.h"
#include "host/ToolRun.h"

namespace qorctl::doctor {

class CServerFacts {
public:
    // `plugin` must outlive the object.
    explicit CServerFacts(const CPluginChoice& plugin);

    // What the loader was asked for.
    const std::string& PluginName() const { return m_PluginName; }
    // Nothing when it could not be loaded; then the problem says why.
    const std::optional<CPluginLibrary>& Plugin() const { return m_Plugin; }
    const std::string& PluginProblem() const { return m_PluginProblem; }

    // The provider's install directory; empty when it is not known.
    const std::string& InstallPath() const { return m_InstallPath; }
    std::string ResultDirectory() const { return ResultDirectoryIn(m_InstallPath); }

    const CSupportedList& RaidList() const { return m_RaidList; }
    const CSupportedList& SsdList() const { return m_SsdList; }

    // The supported devices that stand in the device list, or on the bus where there is no list.
    const std::list<DevicePCIID>& RaidDevices() const { return m_RaidDevices; }
    const std::list<DevicePCIID>& SsdDevices() const { return m_SsdDevices; }

    bool IsToolInstalled() const;
    // The answer to "krzcli -v", asked for once; only with a loaded plug-in and an installed tool.
    const CToolRun& VersionRun();

private:
    const CPluginChoice& m_Choice;
    std::string m_PluginName;
    std::string m_PluginProblem;
    std::optional<CPluginLibrary> m_Plugin;
    std::string m_InstallPath;
    CSupportedList m_RaidList;
    CSupportedList m_SsdList;
    std::list<DevicePCIID> m_RaidDevices;
    std::list<DevicePCIID> m_SsdDevices;
    std::optional<CToolRun> m_VersionRun;
};

}  // namespace qorctl::doctor

#endif  // QORCTL_DOCTOR_SERVERFACTS_H
