#include "cli/KRZVersion.h"

#include <list>

#include "plugin/ComLib.h"

namespace {

int ReadPart(const std::string& text) {
    return static_cast<int>(CStringUtil::TStringToNumber(text));
}

}  // namespace

std::optional<CKRZVersion> CKRZVersion::Parse(const std::string& text) {
    const std::list<std::string> parts = CStringUtil::SplitByDot(text);
    if (parts.size() != 2) {
        return std::nullopt;
    }
    return CKRZVersion{ReadPart(parts.front()), ReadPart(parts.back())};
}
