#include "JsonPatch.h"

#include <fmt/format.h>

#include <algorithm>

#include "JsonText.h"

namespace qorsim {
namespace {

using nlohmann::json;

constexpr size_t MAX_OPERATIONS = 10000;
constexpr size_t MAX_COPIED = 100000;

std::string TextOf(const json& operation, const char* key) {
    const auto member = operation.find(key);
    return member != operation.end() && member->is_string() ? member->get<std::string>() : "";
}

// The value that an operation copies or moves; null when it does neither or names none.
const json* SourceOf(const json& operation, const json& document) {
    const std::string kind = TextOf(operation, "op");
    if (kind != "copy" && kind != "move") {
        return nullptr;
    }
    const json::json_pointer from(TextOf(operation, "from"));
    return document.contains(from) ? &document.at(from) : nullptr;
}

bool IsTooDeep(const std::string& path, const json& value) {
    const auto above = static_cast<size_t>(std::count(path.begin(), path.end(), '/'));
    return above + DepthOf(value) > MAX_JSON_DEPTH;
}

}  // namespace

std::string MessageOf(const json::exception& failure) {
    const std::string text = failure.what();
    const size_t end = text.find("] ");
    return end == std::string::npos ? text : text.substr(end + 2);
}

// What is wrong with the operation itself is left to the one who carries it out.
std::string CPatcher::ExcessOf(const json& operation, const json& document) {
    if (++m_Operations > MAX_OPERATIONS) {
        return fmt::format("there are more than {} operations", MAX_OPERATIONS);
    }
    if (!operation.is_object()) {
        return "";
    }
    const json* value = SourceOf(operation, document);
    if (value != nullptr) {
        m_Copied += WeightOf(*value);
    } else if (operation.contains("value")) {
        value = &operation["value"];
    }
    if (m_Copied > MAX_COPIED) {
        return fmt::format("what patches copy and move must not be more than {} values and bytes",
                           MAX_COPIED);
    }
    return value != nullptr && IsTooDeep(TextOf(operation, "path"), *value)
               ? fmt::format("nests the profile deeper than {} levels", MAX_JSON_DEPTH)
               : "";
}

void CPatcher::Apply(const CProfileReader& place, json& document) {
    for (const CProfileReader& operation : place.Elements()) {
        try {
            const std::string excess = ExcessOf(operation.Value(), document);
            if (!excess.empty()) {
                operation.Reject(excess);
                return;
            }
            document.patch_inplace(json::array({operation.Value()}));
        } catch (const json::exception& failure) {
            operation.Reject(MessageOf(failure));
            return;
        }
    }
}

}  // namespace qorsim
