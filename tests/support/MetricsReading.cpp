#include "MetricsReading.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <regex>
#include <set>
#include <sstream>
#include <string_view>

namespace qortest {
namespace {

// The bytes of the character that `text` begins with; 0: it is not printable, or no UTF-8.
size_t CharacterSize(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const size_t size = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    const bool isLead = (lead >= 0x20 && lead < 0x7f) || (lead >= 0xc2 && lead < 0xf5);
    const std::string_view tail = text.substr(1, size - 1);
    const bool isWhole =
        tail.size() == size - 1 && std::all_of(tail.begin(), tail.end(), [](char byte) {
            return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80;
        });
    return isLead && isWhole ? size : 0;
}

bool IsPrintable(std::string_view text) {
    while (!text.empty()) {
        const size_t size = CharacterSize(text);
        if (size == 0) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

class CReader {
public:
    CMetricsReading Read(const std::string& text);

private:
    bool Take(const std::string& line);
    bool TakeHelp(const std::string& line);
    bool TakeType(const std::string& line);
    bool TakeSeries(const std::string& line);
    bool TakeLabels(const std::string& text, CMetricSeries& series) const;

    CMetricsReading m_Reading;
    std::string m_Family;
    bool m_HasType = true;  // of the family that stands last
    std::set<std::string> m_Series;
};

CMetricsReading CReader::Read(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; m_Reading.problem.empty() && std::getline(lines, line);) {
        if (lines.eof() || !Take(line)) {
            m_Reading.problem = line;
        }
    }
    for (const auto& [name, family] : m_Reading.families) {
        if (m_Reading.problem.empty() && family.series == 0) {
            m_Reading.problem = name + " has no series";
        }
    }
    return m_Reading;
}

bool CReader::Take(const std::string& line) {
    if (!IsPrintable(line)) {
        return false;
    }
    return line.starts_with("# HELP ")   ? TakeHelp(line)
           : line.starts_with("# TYPE ") ? TakeType(line)
                                         : TakeSeries(line);
}

bool CReader::TakeHelp(const std::string& line) {
    static const std::regex help(R"(# HELP ([a-z_]+) ([^\\]+))");
    std::smatch match;
    if (!m_HasType || !std::regex_match(line, match, help)) {
        return false;
    }
    m_Family = match[1];
    m_HasType = false;
    return m_Reading.families.emplace(m_Family, CMetricFamily()).second;
}

bool CReader::TakeType(const std::string& line) {
    const bool isCounter = m_Family.ends_with("_total");
    m_HasType = true;
    m_Reading.families[m_Family].type = isCounter ? "counter" : "gauge";
    return line == "# TYPE " + m_Family + (isCounter ? " counter" : " gauge");
}

bool CReader::TakeSeries(const std::string& line) {
    const size_t end = line.rfind(' ');
    if (!m_HasType || end == std::string::npos || !line.starts_with(m_Family) ||
        !m_Series.insert(line.substr(0, end)).second) {
        return false;
    }
    CMetricSeries series;
    series.family = m_Family;
    const std::string number = line.substr(end + 1);
    char* rest = nullptr;
    series.value = std::strtod(number.c_str(), &rest);
    if (number.empty() || *rest != '\0' || !std::isfinite(series.value) ||
        (m_Family.ends_with("_total") && series.value < 0) ||
        !TakeLabels(line.substr(m_Family.size(), end - m_Family.size()), series)) {
        return false;
    }
    ++m_Reading.families[m_Family].series;
    m_Reading.series.push_back(series);
    return true;
}

// Reads '{a="b",c="d"}', or nothing.
bool CReader::TakeLabels(const std::string& text, CMetricSeries& series) const {
    size_t at = 0;
    while (at < text.size()) {
        if (text[at] != (at == 0 ? '{' : ',')) {
            return false;
        }
        const size_t sign = text.find("=\"", ++at);
        if (sign == std::string::npos) {
            return false;
        }
        const std::string name = text.substr(at, sign - at);
        size_t quote = sign + 2;
        while (quote < text.size() && text[quote] != '"') {
            const bool isEscape = text[quote] == '\\';
            const char next = quote + 1 < text.size() ? text[quote + 1] : ' ';
            if (isEscape && next != '\\' && next != '"') {
                return false;
            }
            quote += isEscape ? 2 : 1;
        }
        const std::string value = text.substr(sign + 2, quote - sign - 2);
        if (value.empty() || name.empty() ||
            name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_") != std::string::npos ||
            !series.labels.emplace(name, value).second) {
            return false;
        }
        at = quote + 1;
        if (text.substr(std::min(at, text.size())) == "}") {
            return true;
        }
    }
    return text.empty();
}

}  // namespace

double CMetricsReading::Value(const std::string& family,
                              const std::map<std::string, std::string>& labels) const {
    double value = std::numeric_limits<double>::quiet_NaN();
    size_t found = 0;
    for (const CMetricSeries& each : series) {
        const bool fits = std::all_of(labels.begin(), labels.end(), [&each](const auto& label) {
            const auto own = each.labels.find(label.first);
            return own != each.labels.end() && own->second == label.second;
        });
        if (each.family == family && fits) {
            value = each.value;
            ++found;
        }
    }
    return found == 1 ? value : std::numeric_limits<double>::quiet_NaN();
}

CMetricsReading ReadMetrics(const std::string& text) {
    return CReader().Read(text);
}

}  // namespace qortest
