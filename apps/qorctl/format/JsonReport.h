// The answer of a request as a JSON document, the form that docs/formats/qorctl-json.md and
// data/qorctl.schema.json describe.
//
// Thread rule: a plain function.
#ifndef QORCTL_FORMAT_JSONREPORT_H
#define QORCTL_FORMAT_JSONREPORT_H

#include <string>

#include "model/Inventory.h"

namespace qorctl {

// Changes when a name or a meaning changes; new names may come without that.
inline constexpr int JSON_SCHEMA_VERSION = 1;

// The document of the sub-command `command`, UTF-8, indented, with a line feed at its end. Bytes of
// the plug-in that are not UTF-8 become U+FFFD. Cost: linear in the size of the model.
std::string FormatJson(const CInventory& inventory, const std::string& command);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_JSONREPORT_H
