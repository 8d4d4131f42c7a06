#include "metrics/MetricsText.h"

#include <fmt/format.h>

#include <algorithm>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

bool IsPlain(char character) {
    return character >= ' ' && character <= '~' && character != '\\' && character != '"';
}

// Nearly every value is as it is.
void AppendEscaped(std::string& text, std::string_view value) {
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

// The place of the quote behind a value that AppendEscaped() wrote.
size_t EndOfValue(std::string_view text) {
    size_t end = text.find_first_of("\\\"");
    while (text[end] == '\\') {
        end = text.find_first_of("\\\"", end + 2);
    }
    return end;
}

std::string HeadOf(const CFamily& family) {
    return fmt::format("# HELP {0} {1}\n# TYPE {0} {2}\n", family.name, family.help,
                       family.type == EMetric::COUNTER ? "counter" : "gauge");
}

}  // namespace

CLabels CLabels::With(std::string_view name, const std::optional<std::string_view>& value) const {
    CLabels labels = *this;
    if (value && !value->empty() && !Has(name)) {
        labels.Append(name, *value);
    }
    return labels;
}

CLabels CLabels::And(const CLabels& others) const {
    CLabels labels = *this;
    if (!IsEmpty() && !others.IsEmpty()) {
        labels.m_Text += ',';
    }
    labels.m_Text += others.m_Text;
    return labels;
}

bool CLabels::Has(std::string_view name) const {
    std::string_view rest = m_Text;
    while (!rest.empty()) {
        if (rest.substr(0, rest.find('=')) == name) {
            return true;
        }
        rest.remove_prefix(rest.find('"') + 1);
        rest.remove_prefix(EndOfValue(rest));
        rest.remove_prefix(std::min(rest.size(), std::string_view("\",").size()));
    }
    return false;
}

void CLabels::Append(std::string_view name, std::string_view value) {
    if (!IsEmpty()) {
        m_Text += ',';
    }
    m_Text.append(name).append("=\"");
    AppendEscaped(m_Text, value);
    m_Text += '"';
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

void CMetricsText::AddSeries(const CLabels& labels, std::string_view number) {
    if (m_Series.empty()) {
        m_Text += HeadOf(m_Family);
    }
    if (!m_Series.insert(labels.Text()).second) {
        return;
    }
    m_Text += m_Family.name;
    if (!labels.IsEmpty()) {
        m_Text.append(1, '{').append(labels.Text()).append(1, '}');
    }
    m_Text.append(1, ' ').append(number).append(1, '\n');
}

}  // namespace qorctl
