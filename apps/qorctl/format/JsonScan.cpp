#include "format/JsonScan.h"

#include <algorithm>

namespace qorctl {

size_t JsonDepth(std::string_view json) {
    size_t depth = 0;
    size_t deepest = 0;
    CJsonStrings strings;
    for (const char byte : json) {
        if (strings.IsInside(byte)) {
            continue;
        }
        if (byte == '{' || byte == '[') {
            deepest = std::max(deepest, ++depth);
        } else if ((byte == '}' || byte == ']') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

}  // namespace qorctl
