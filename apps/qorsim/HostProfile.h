// Host profiles: JSON documents in the form of data/hosts/host.schema.json, without what they
// extend.
#ifndef QORSIM_HOSTPROFILE_H
#define QORSIM_HOSTPROFILE_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "Host.h"

namespace qorsim {

// Reads the host as it is before the profile's first event. On a mistake returns nothing, and
// `error` says where it is (the JSON pointer of the value) and what is wrong with it.
std::optional<CHost> ReadHostProfile(const nlohmann::json& profile, std::string& error);

}  // namespace qorsim

#endif  // QORSIM_HOSTPROFILE_H
