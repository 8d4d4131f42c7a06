// JSON documents: what all of them begin with, as texts that every reader takes and nothing obeys.
#ifndef QORCTL_FORMAT_JSONDOCUMENT_H
#define QORCTL_FORMAT_JSONDOCUMENT_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace qorctl {

using CJson = nlohmann::ordered_json;

// Changes when a name or a meaning changes; new names may come without that.
inline constexpr int JSON_SCHEMA_VERSION = 1;

inline constexpr int INDENTATION = 2;
inline constexpr int NO_INDENTATION = -1;  // one line

// A document of the sub-command `command` with nothing but its head.
CJson NewDocument(std::string_view command);

// null for a text that is not there, or empty.
CJson TextOrNull(const std::optional<std::string>& text);

// The document in UTF-8, its last line ended. The tool's bytes that are no UTF-8, which JSON cannot
// hold, become U+FFFD; characters that are not printable stand as "\u009b".
std::string JsonText(const CJson& json, int indentation);

// The text as such a document has it: UTF-8.
std::string ValidUtf8(std::string_view text);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_JSONDOCUMENT_H
