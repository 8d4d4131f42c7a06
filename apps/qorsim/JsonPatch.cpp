#include "JsonPatch.h"

namespace qorsim {

using nlohmann::json;

std::string MessageOf(const json::exception& failure) {
    const std::string text = failure.what();
    const size_t end = text.find("] ");
    return end == std::string::npos ? text : text.substr(end + 2);
}

void ApplyPatch(const CProfileReader& place, json& document) {
    for (const CProfileReader& operation : place.Elements()) {
        try {
            document.patch_inplace(json::array({operation.Value()}));
        } catch (const json::exception& failure) {
            operation.Reject(MessageOf(failure));
            return;
        }
    }
}

}  // namespace qorsim
