// One look at the storage of the server, as a value: what the plug-in told, or why it did not.
//
// Thread rule: plain values and functions; one thread at a time.
#ifndef QORCTL_HOST_POLL_H
#define QORCTL_HOST_POLL_H

#include <string>
#include <string_view>

#include "host/PluginLibrary.h"
#include "model/Inventory.h"

namespace qorctl {

// Stable words for programs; docs/health.md lists them all.
inline constexpr std::string_view REASON_JUDGED = "judged";
inline constexpr std::string_view REASON_NO_HARDWARE = "no-hardware";
inline constexpr std::string_view REASON_NO_DRIVES = "no-drives";
inline constexpr std::string_view REASON_PLUGIN_NOT_LOADED = "plugin-not-loaded";
inline constexpr std::string_view REASON_USAGE = "usage";

struct CPoll {
    bool answered = false;  // the plug-in succeeded, also with nothing to report
    std::string_view reason = REASON_JUDGED;
    std::string message;   // the reason in words, one line; empty when there is something to judge
    std::string command;   // the tool's command that failed; empty: none to name
    bool oldTool = false;  // the tool's version is old, or could not be read
    CInventory inventory;  // empty unless there is something to judge
};

// Asks the plug-in for the storage information. Writes nothing.
CPoll PollStorage(const CPluginLibrary& library);

// What stands for a poll when the plug-in could not be loaded, or the command line not read.
// Several lines of `problem` become one.
CPoll FailedPoll(std::string_view reason, const std::string& problem);

}  // namespace qorctl

#endif  // QORCTL_HOST_POLL_H
