#include "metrics/MetricsText.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

bool IsPlain(char character) {
    return character >= ' ' && character <= '~' && character != '\\' && character != '"';
}

// Nearly every value is as it is.
void AppendEscaped(std::string& text, const std::string& value) {
    if (std::all_of(value.begin(), value.end(), IsPlain)) {
        text += value;
        return;
    }
    for (const char character : MakeVisible(value, {.utf8 = true})) {
        if (character == '\\' || character == '"') {
            text += '\\';
        }
        text += character;
    }
}

std::string LabelsText(const CLabels& labels) {
    std::string text;
    for (const CLabel& label : labels) {
        text += text.empty() ? '{' : ',';
        text += label.name;
        text += "=\"";
        AppendEscaped(text, label.value);
        text += '"';
    }
    return text.empty() ? text : text + '}';
}

std::string HeadOf(const CFamily& family) {
    return fmt::format("# HELP {0} {1}\n# TYPE {0} {2}\n", family.name, family.help,
                       family.type == EMetric::COUNTER ? "counter" : "gauge");
}

}  // namespace

CLabels With(CLabels labels, std::string_view name, const std::optional<std::string>& value) {
    const bool isThere = std::any_of(labels.begin(), labels.end(),
                                     [name](const CLabel& label) { return label.name == name; });
    if (value && !value->empty() && !isThere) {
        labels.push_back({name, *value});
    }
    return labels;
}

void CMetricsText::Begin(const CFamily& family) {
    m_Family = family;
    m_Series.clear();
}

void CMetricsText::Add(const CLabels& labels, long long number) {
    AddSeries(labels, std::to_string(number));
}

void CMetricsText::AddReal(const CLabels& labels, double number) {
    AddSeries(labels, fmt::format("{}", number));
}

void CMetricsText::AddSeries(const CLabels& labels, const std::string& number) {
    std::string text = LabelsText(labels);
    if (m_Series.empty()) {
        m_Text += HeadOf(m_Family);
    }
    if (const auto [place, isNew] = m_Series.insert(std::move(text)); isNew) {
        m_Text.append(m_Family.name).append(*place).append(1, ' ').append(number).append(1, '\n');
        ++m_Count;
    }
}

}  // namespace qorctl
