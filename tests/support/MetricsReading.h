// The text of `qorctl metrics`, read by a grammar of our own, stricter than that of its readers.
#ifndef QORTEST_METRICSREADING_H
#define QORTEST_METRICSREADING_H

#include <map>
#include <string>
#include <vector>

namespace qortest {

struct CMetricFamily {
    std::string type;
    size_t series = 0;
};

struct CMetricSeries {
    std::string family;
    std::map<std::string, std::string> labels;  // their values as they stand between the quotes
    double value = 0;
};

struct CMetricsReading {
    std::string problem;  // of the first line that is wrong; empty: there is none
    std::map<std::string, CMetricFamily> families;
    std::vector<CMetricSeries> series;

    // The value of the only series with these labels among its own; NaN when there is none or more
    // than one.
    double Value(const std::string& family,
                 const std::map<std::string, std::string>& labels = {}) const;
};

// Reads
//
//     text    = { "# HELP " name " " help LF "# TYPE " name " " type LF series { series } }
//     type    = "gauge" | "counter"                the name of a counter ends in "_total", no other
//     series  = name [ "{" label { "," label } "}" ] " " number LF     the name of the family
//     label   = word "=" '"' { character | "\\" | "\"" } '"'
//
// where a family comes once, a label once in a series, and a series once in a text; a number is
// finite, that of a counter not below 0, and every character is printable ASCII or above it, in
// UTF-8.
CMetricsReading ReadMetrics(const std::string& text);

}  // namespace qortest

#endif  // QORTEST_METRICSREADING_H
