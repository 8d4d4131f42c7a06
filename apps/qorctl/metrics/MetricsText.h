// The text that node_exporter's textfile collector reads, version 0.0.4 of the format:
//
//     text      = { family }
//     family    = "# HELP " name " " help LF "# TYPE " name " " type LF { series }
//     series    = name [ "{" label { "," label } "}" ] " " number LF
//     label     = name "=" '"' { character | "\\" | "\"" } '"'
//
// The series of a family stand together, and no two of a text are the same: a reader refuses a
// whole text for one such pair. There is neither a time stamp, which the collector refuses, nor a
// type beyond these two.
#ifndef QORCTL_METRICS_METRICSTEXT_H
#define QORCTL_METRICS_METRICSTEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace qorctl {

// The labels of a series.
class CLabels {
public:
    CLabels() = default;
    CLabels(std::string_view name, std::string_view value) { Append(name, value); }

    // These and one more, unless its value is not there or empty, or they have one of that name.
    // The value is any bytes: what is not printable UTF-8 is made visible.
    CLabels With(std::string_view name, const std::optional<std::string_view>& value) const;

    // These and all of `others`, which has none of their names.
    CLabels And(const CLabels& others) const;

    bool IsEmpty() const { return m_Text.empty(); }

    // As the text has them, without the braces. Different labels have different texts.
    const std::string& Text() const { return m_Text; }

private:
    bool Has(std::string_view name) const;
    void Append(std::string_view name, std::string_view value);

    std::string m_Text;
};

enum class EMetric { GAUGE, COUNTER };

struct CFamily {
    std::string_view name;
    EMetric type = EMetric::GAUGE;
    std::string_view help;  // without a line feed or a backslash
};

class CMetricsText {
public:
    // The series that follow are of this family. One that gets none is left out of the text.
    void Begin(const CFamily& family);

    // A series of the family, unless it has one with these labels.
    void Add(const CLabels& labels, long long number);
    void AddReal(const CLabels& labels, double number);

    const std::string& Text() const { return m_Text; }
    std::string TakeText() { return std::move(m_Text); }

private:
    void AddSeries(const CLabels& labels, std::string_view number);

    CFamily m_Family;
    std::unordered_set<std::string> m_Series;  // of the family, by their labels
    std::string m_Text;
};

}  // namespace qorctl

#endif  // QORCTL_METRICS_METRICSTEXT_H
