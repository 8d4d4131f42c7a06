// The SMART data of all drives, by a request for each, within the time limit of a command that
// makes several requests.
#ifndef QORCTL_COMMANDS_SMARTREQUESTS_H
#define QORCTL_COMMANDS_SMARTREQUESTS_H

#include <chrono>
#include <optional>

#include "host/Request.h"
#include "metrics/Metrics.h"
#include "model/Inventory.h"

namespace qorctl {

// Begins when it is made.
class CTimeLimit {
public:
    explicit CTimeLimit(const CPluginChoice& plugin) : m_Plugin(plugin) {}

    // What is left for the next request, in whole seconds; nothing when there is none.
    std::optional<CPluginChoice> Rest() const;

private:
    const CPluginChoice& m_Plugin;
    const std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

// A drive that gives no answer keeps no SMART data, and is counted.
CSmartRequests AskForAllSmart(const CTimeLimit& limit, CInventory& inventory);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_SMARTREQUESTS_H
