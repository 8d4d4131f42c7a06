#include "MonitoringGrammar.h"

#include <algorithm>

#include "Fuzz.h"

namespace qorfuzz {
namespace {

bool IsPrintable(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c == '\n' || (c >= ' ' && c < 0x7F); });
}

bool IsWithinQuotes(char c) {
    return c != '\'' && c != '=';
}

class CValueReader {
public:
    explicit CValueReader(std::string_view text) : m_Rest(text) {}

    bool AtEnd() const { return m_Rest.empty(); }

    void Demand(std::string_view expected) {
        qorfuzz::Demand(Take(expected), "performance data is as its grammar says", m_Rest);
    }

    std::string ReadLabel() {
        if (!Take("'")) {
            const std::string word =
                TakeWhile([](char c) { return c != '=' && c != ' ' && c != '\''; });
            qorfuzz::Demand(!word.empty(), "a label is not empty", m_Rest);
            return word;
        }
        std::string label = TakeWhile(IsWithinQuotes);
        for (Demand("'"); Take("'"); Demand("'")) {
            label += "'" + TakeWhile(IsWithinQuotes);
        }
        return label;
    }

    std::string ReadNumber() {
        const std::string sign = Take("-") ? "-" : "";
        const std::string digits = TakeWhile([](char c) { return c >= '0' && c <= '9'; });
        qorfuzz::Demand(!digits.empty(), "a value is a number", m_Rest);
        return sign + digits;
    }

    void ReadUnit() {
        if (!Take("%")) {
            Take("c");
        }
    }

    void ReadRange() {
        if (!m_Rest.empty() && m_Rest.front() != ';' && m_Rest.front() != ' ') {
            ReadNumber();
        }
    }

private:
    bool Take(std::string_view text) {
        if (!m_Rest.starts_with(text)) {
            return false;
        }
        m_Rest.remove_prefix(text.size());
        return true;
    }
    template <class TFits>
    std::string TakeWhile(TFits fits) {
        const auto end = std::find_if_not(m_Rest.begin(), m_Rest.end(), fits);
        std::string taken(m_Rest.begin(), end);
        m_Rest.remove_prefix(taken.size());
        return taken;
    }

    std::string_view m_Rest;
};

using CValues = std::map<std::string, std::string, std::less<>>;

CValues ReadValues(std::string_view text) {
    CValues values;
    CValueReader reader(text);
    while (!reader.AtEnd()) {
        const std::string label = reader.ReadLabel();
        reader.Demand("=");
        values.emplace(label, reader.ReadNumber());
        reader.ReadUnit();
        reader.Demand(";");
        reader.ReadRange();
        reader.Demand(";");
        reader.ReadRange();
        if (!reader.AtEnd()) {
            reader.Demand(" ");
        }
    }
    return values;
}

}  // namespace

CValues ReadMonitoringOutput(std::string_view text, std::string_view status) {
    Demand(IsPrintable(text), "a monitoring server gets printable text", text);
    Demand(text.ends_with('\n'), "every line is ended", text);
    const std::string_view first = text.substr(0, text.find('\n'));
    Demand(first.starts_with("RAID " + std::string(status) + " - "), "the status comes first",
           first);
    const size_t bar = std::min(first.find('|'), first.size());
    Demand(std::count(text.begin(), text.end(), '|') == (bar < first.size() ? 1 : 0),
           "only performance data have a bar", text);
    return ReadValues(first.substr(std::min(bar + 1, first.size())));
}

}  // namespace qorfuzz
