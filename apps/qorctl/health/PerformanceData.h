// Performance data as monitoring servers read them behind the "|" of a plug-in's output:
//
//     data      = value *( " " value )
//     value     = label "=" number [ unit ] ";" [ range ] ";" [ range ] [ ";" min [ ";" max ] ]
//     label     = word | "'" text "'"                  a quote within is doubled; no "=" in either
//     unit      = "%" | "c" | nothing                  "c": a counter that only grows
//     range     = number                               alarmed above the number. Below 0 too, says
//                                                      the convention; "~:50" does not, but
//                                                      writers of metrics drop such thresholds
#ifndef QORCTL_HEALTH_PERFORMANCEDATA_H
#define QORCTL_HEALTH_PERFORMANCEDATA_H

#include <cstddef>
#include <string>
#include <vector>

namespace qorctl {

struct CPerformanceValue {
    std::string label;  // any text: what the form cannot hold is replaced by "_"
    long long value = 0;
    std::string unit;
    std::string warning;   // a range; empty: none
    std::string critical;  // likewise
};

// Bytes of all performance data: enough for 2,000 drives, and for every monitoring server that
// takes so many.
inline constexpr size_t MAX_PERFORMANCE_TEXT = 262144;

struct CPerformanceText {
    std::string text;    // values, separated by blanks; empty for none
    size_t leftOut = 0;  // values from the end of the list that there was no room for
};

CPerformanceText FormatPerformanceData(const std::vector<CPerformanceValue>& values);

// A text for the lines of a plug-in's output: on one line, printable ASCII, no "|".
std::string MonitoringText(const std::string& text);

}  // namespace qorctl

#endif  // QORCTL_HEALTH_PERFORMANCEDATA_H
