#include "format/JsonDocument.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

std::string Dumped(const CJson& json, int indentation) {
    return json.dump(indentation, ' ', false, CJson::error_handler_t::replace);
}

}  // namespace

CJson NewDocument(std::string_view command) {
    return {{"schema_version", JSON_SCHEMA_VERSION}, {"command", command}};
}

CJson TextOrNull(const std::optional<std::string>& text) {
    return text && !text->empty() ? CJson(*text) : CJson();
}

std::string JsonText(const CJson& json, int indentation) {
    return MakeJsonVisible(Dumped(json, indentation), {.utf8 = true}) + '\n';
}

std::string ValidUtf8(std::string_view text) {
    constexpr unsigned char LAST_OF_ASCII = 0x7F;
    if (std::all_of(text.begin(), text.end(), [](char character) {
            return static_cast<unsigned char>(character) <= LAST_OF_ASCII;
        })) {
        return std::string(text);
    }
    // What the document itself makes of it.
    return CJson::parse(Dumped(text, NO_INDENTATION)).get<std::string>();
}

}  // namespace qorctl
