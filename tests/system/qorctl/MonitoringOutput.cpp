#include "MonitoringOutput.h"

#include <cstdlib>
#include <limits>
#include <sstream>

namespace qortest {
namespace {

// A label in front of "=", quotes taken off; "" and an error when it is malformed.
std::string TakeLabel(std::string& text, CMonitoringOutput& output) {
    std::string label;
    size_t at = 0;
    const bool quoted = text.starts_with('\'');
    for (at = quoted ? 1 : 0; at < text.size(); ++at) {
        if (quoted && text[at] == '\'' && text[at + 1] == '\'') {
            ++at;
        } else if (text[at] == (quoted ? '\'' : '=')) {
            break;
        }
        if (!quoted && (text[at] == ' ' || text[at] == '\'')) {
            output.errors.push_back("a blank or quote in a label without quotes: " + text);
        }
        label += text[at];
    }
    at += quoted ? 1 : 0;
    if (at >= text.size() || text[at] != '=' || label.empty() ||
        label.find('=') != std::string::npos) {
        output.errors.push_back("no label: " + text);
    }
    text.erase(0, at + 1);
    return label;
}

void TakeValue(std::string& text, CMonitoringOutput& output) {
    const std::string label = TakeLabel(text, output);
    std::string fields = text.substr(0, text.find(' '));
    text.erase(0, fields.size() + 1);
    char* end = nullptr;
    CMonitoringValue value;
    value.value = std::strtod(fields.c_str(), &end);
    if (end == fields.c_str()) {
        output.errors.push_back("no number: " + label + "=" + fields);
    }
    std::istringstream rest(end);
    std::getline(rest, value.unit, ';');
    std::getline(rest, value.warning, ';');
    std::getline(rest, value.critical, ';');
    if (value.unit.find_first_of("0123456789;'\"") != std::string::npos) {
        output.errors.push_back("no unit: " + label + "=" + fields);
    }
    if (!output.values.emplace(label, value).second) {
        output.errors.push_back("a label twice: " + label);
    }
}

}  // namespace

CMonitoringOutput ReadMonitoringOutput(const std::string& text) {
    CMonitoringOutput output;
    std::istringstream lines(text);
    std::string first;
    std::getline(lines, first);
    for (std::string line; std::getline(lines, line);) {
        if (line.find('|') != std::string::npos) {
            output.errors.push_back("a pipe in the details: " + line);
        }
        output.details.push_back(line);
    }
    const size_t pipe = first.find('|');
    output.summary = first.substr(0, pipe);
    std::string data = pipe == std::string::npos ? "" : first.substr(pipe + 1);
    if (data.find('|') != std::string::npos) {
        output.errors.push_back("a second pipe: " + data);
    }
    while (!data.empty()) {
        TakeValue(data, output);
    }
    if (text.empty() || text.back() != '\n') {
        output.errors.emplace_back("the last line is not ended");
    }
    return output;
}

bool IsAlarmed(double value, const std::string& range) {
    const bool inside = range.starts_with('@');
    const std::string text = range.substr(inside ? 1 : 0);
    const size_t colon = text.find(':');
    const std::string start = colon == std::string::npos ? "0" : text.substr(0, colon);
    const std::string end = colon == std::string::npos ? text : text.substr(colon + 1);
    const double infinity = std::numeric_limits<double>::infinity();
    const double low = start == "~" ? -infinity : std::strtod(start.c_str(), nullptr);
    const double high = end.empty() ? infinity : std::strtod(end.c_str(), nullptr);
    const bool isInside = value >= low && value <= high;
    return inside == isInside;
}

}  // namespace qortest
