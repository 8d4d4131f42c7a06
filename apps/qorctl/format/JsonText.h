// JSON as a text that every reader takes and nothing obeys.
//
// Thread rule: a plain function.
#ifndef QORCTL_FORMAT_JSONTEXT_H
#define QORCTL_FORMAT_JSONTEXT_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace qorctl {

// One line.
inline constexpr int NO_INDENTATION = -1;

// The document in UTF-8, its last line ended. The tool's bytes that are no UTF-8, which JSON cannot
// hold, become U+FFFD; characters that are not printable stand as "\u009b".
std::string JsonText(const nlohmann::ordered_json& json, int indentation);

// The text as such a document has it: UTF-8.
std::string ValidUtf8(std::string_view text);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_JSONTEXT_H
