#include "commands/SmartRequests.h"

#include <utility>

#include "host/Ask.h"
#include "model/DriveSearch.h"

namespace qorctl {
namespace {

// False when the drive gave no answer.
bool AskForSmart(const CTimeLimit& limit, CPhysicalDrive& drive, size_t& toolRuns) {
    const std::optional<CDriveAddress> address = AddressOf(drive);
    const std::optional<CPluginChoice> plugin = limit.Rest();
    if (!address || !plugin) {
        return false;
    }
    CAnswer answer = Ask(*plugin, DriveRequest(*address), EProgress::SHOWN);
    toolRuns += answer.toolRuns;
    for (CPhysicalDrive& told : answer.inventory.physicalDrives) {
        drive.smart = std::move(told.smart);
    }
    return answer.IsAnswered();
}

}  // namespace

std::optional<CPluginChoice> CTimeLimit::Rest() const {
    CPluginChoice rest = m_Plugin;
    if (m_Plugin.timeout) {
        const auto used = std::chrono::steady_clock::now() - m_Start;
        rest.timeout = std::chrono::floor<std::chrono::seconds>(*m_Plugin.timeout - used);
        if (rest.timeout->count() <= 0) {
            return std::nullopt;
        }
    }
    return rest;
}

CSmartRequests AskForAllSmart(const CTimeLimit& limit, CInventory& inventory) {
    CSmartRequests requests;
    for (CPhysicalDrive& drive : inventory.physicalDrives) {
        requests.failures += AskForSmart(limit, drive, requests.toolRuns) ? 0U : 1U;
    }
    return requests;
}

}  // namespace qorctl
