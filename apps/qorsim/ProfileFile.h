// Profiles as files. A profile may be a change of another one:
//
//     "extends"  the name of a shipped host, or a path below this profile's folder
//     the other members are a merge patch (RFC 7396) on the profile that is extended: objects are
//                merged, null takes a member away, everything else (arrays, too) takes the place
//                of what was there
//     "patch"    a JSON patch (RFC 6902) on the result, for what stands in arrays
//
// The effective profile is what comes of it; it has neither "extends" nor "patch".
//
// A profile may be somebody else's: it names no file outside its folder, and what it takes of time,
// memory and stack is bounded.
#ifndef QORSIM_PROFILEFILE_H
#define QORSIM_PROFILEFILE_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace qorsim {

// Reads a profile's text as JSON. On a mistake returns nothing and `error` says where and what.
std::optional<nlohmann::json> ParseProfile(const std::string& text, std::string& error);

// The effective profile of a host that a user named (see FindProfile), without a mistake before or
// after any of its events. A profile that others extend must be without a mistake by itself. On
// failure returns nothing, and `error` names the file, the place and the reason.
std::optional<nlohmann::json> LoadProfile(const std::string& reference, std::string& error);

}  // namespace qorsim

#endif  // QORSIM_PROFILEFILE_H
