#include "Fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace qorfuzz {

void Demand(bool holds, const char* property, std::string_view detail) {
    if (!holds) {
        std::fprintf(stderr, "property does not hold: %s\n%.*s\n", property,
                     static_cast<int>(std::min<size_t>(detail.size(), 4096)), detail.data());
        std::abort();
    }
}

std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    lines.reserve(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

}  // namespace qorfuzz
