// Host profiles: JSON files in the form of data/hosts/host.schema.json.
#ifndef QORSIM_HOSTPROFILE_H
#define QORSIM_HOSTPROFILE_H

#include <optional>
#include <string>

#include "Host.h"

namespace qorsim {

// Reads the text of a profile. On a mistake returns nothing, and `error` says where it is (line and
// column, or the JSON pointer of the value) and what is wrong with it.
std::optional<CHost> ParseHostProfile(const std::string& text, std::string& error);

}  // namespace qorsim

#endif  // QORSIM_HOSTPROFILE_H
