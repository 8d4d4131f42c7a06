// What happens on a simulated server while it runs. A profile's events:
//
//     "events": [{"after_s": 10, "note": "drive 3 fails",
//                 "patch": [{"op": "replace", "path": "/controllers/0/drives/3/status",
//                            "value": "FAILED"}]}]
//
// An event happens so many seconds after the server's start. Its JSON patch (RFC 6902) is carried
// out on the profile as the earlier events left it.
#ifndef QORSIM_TIMELINE_H
#define QORSIM_TIMELINE_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "JsonPatch.h"

namespace qorsim {

// Finds the first mistake in the events of a profile whose beginning is without one: in their form,
// their order, or in the host that an event leaves. `problem` then says where and what.
void CheckEvents(const nlohmann::json& profile, CPatcher& patcher, std::string& problem);

// The profile as it is `seconds` after the start, without its events. A mistake in an event that
// has happened gives nothing and `problem` says where and what.
std::optional<nlohmann::json> ProfileAt(nlohmann::json profile, long seconds, std::string& problem);

}  // namespace qorsim

#endif  // QORSIM_TIMELINE_H
