#include "health/PerformanceData.h"

#include <algorithm>
#include <string_view>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr std::string_view NEEDS_QUOTES = " '";

std::string Label(const std::string& text) {
    std::string label = MonitoringText(text);
    std::replace(label.begin(), label.end(), '=', '_');
    if (!label.empty() && label.find_first_of(NEEDS_QUOTES) == std::string::npos) {
        return label;
    }
    std::string quoted = "'";
    for (const char character : label) {
        quoted += character;
        if (character == '\'') {
            quoted += character;
        }
    }
    return quoted + '\'';
}

std::string FormatValue(const CPerformanceValue& value) {
    return Label(value.label) + '=' + std::to_string(value.value) + value.unit + ';' +
           value.warning + ';' + value.critical;
}

}  // namespace

CPerformanceText FormatPerformanceData(const std::vector<CPerformanceValue>& values) {
    CPerformanceText out;
    for (const CPerformanceValue& value : values) {
        const std::string entry = (out.text.empty() ? "" : " ") + FormatValue(value);
        if (out.leftOut > 0 || out.text.size() + entry.size() > MAX_PERFORMANCE_TEXT) {
            ++out.leftOut;
        } else {
            out.text += entry;
        }
    }
    return out;
}

std::string MonitoringText(const std::string& text) {
    std::string out = MakeVisible(text, {.utf8 = false, .colour = false});
    std::replace(out.begin(), out.end(), '|', '_');
    return out;
}

}  // namespace qorctl
