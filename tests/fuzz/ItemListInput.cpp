#include "ItemListInput.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "Fuzz.h"

namespace qorfuzz {
namespace {

std::optional<std::string> TakeField(std::optional<std::string_view>& rest) {
    static constexpr std::string_view SEPARATOR = " | ";
    if (!rest) {
        return std::nullopt;
    }
    const size_t end = rest->find(SEPARATOR);
    const std::string field(rest->substr(0, end));
    rest = end == std::string_view::npos ? std::nullopt
                                         : std::make_optional(rest->substr(end + SEPARATOR.size()));
    return field;
}

}  // namespace

void ReadItems(std::string_view text, ItemList& items) {
    for (const std::string_view line : LinesOf(text)) {
        std::optional<std::string_view> rest = line;
        const std::string parent = TakeField(rest).value_or("");
        const std::string name = TakeField(rest).value_or("");
        const std::string value = TakeField(rest).value_or("");
        const std::string flag = TakeField(rest).value_or("TRUE");
        items.push_back(nullptr);
        items.back() = CreateItemDisp(parent.c_str(), name.c_str(), value.c_str(), flag.c_str());
    }
}

}  // namespace qorfuzz
