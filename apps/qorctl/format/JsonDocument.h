// JSON documents: what all of them begin with, as texts that every reader takes and nothing obeys.
#ifndef QORCTL_FORMAT_JSONDOCUMENT_H
#define QORCTL_FORMAT_JSONDOCUMENT_H

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "model/ObjectNames.h"

namespace qorctl {

using CJson = nlohmann::ordered_json;

// Changes when a name or a meaning changes; new names may come without that.
inline constexpr int JSON_SCHEMA_VERSION = 2;

inline constexpr int INDENTATION = 2;
inline constexpr int NO_INDENTATION = -1;  // one line

// A document of the sub-command `command` with nothing but its head.
CJson NewDocument(std::string_view command);

// null for a text that is not there, or empty.
CJson TextOrNull(const std::optional<std::string>& text);

// null for a value that is not there; its number, or its text when it is no number.
CJson ValueOrNull(const CMeasure& value);

// Adds `drive`, if there is one, to an object as its "physical_drive": with "controller",
// "enclosure", "slot", "drive", "serial", "product", "capacity" and "capacity_bytes", each where
// the tool told it.
void AddDrive(CJson& json, const std::optional<CDriveIdentity>& drive);

// The document in UTF-8, its last line ended. The tool's bytes that are no UTF-8, which JSON cannot
// hold, become U+FFFD; characters that are not printable stand as "\u009b".
std::string JsonText(const CJson& json, int indentation);

// The value that the text is; a discarded one when it is no JSON, or has objects and arrays in each
// other more than `deepest` times: what is nested without end ends whoever writes it again.
CJson ParseJson(const std::string& text, size_t deepest);

// The text as such a document has it: UTF-8.
std::string ValidUtf8(std::string_view text);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_JSONDOCUMENT_H
