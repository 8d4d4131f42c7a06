#include "watch/WatchScreen.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string_view>

#include "format/Table.h"
#include "health/Advice.h"
#include "model/ObjectNames.h"

namespace qorctl {
namespace {

// Of the time of a change, which the head of the screen has.
constexpr size_t DATE = std::string_view("2026-11-20T").size();

// A line that fits, in the colour of a severity.
std::string FitLine(const std::string& text, EHealth health, const CTextStyle& style) {
    const std::string visible = MakeVisible(text, style);
    return Coloured(FirstColumns(visible, style.width), ColourOf(health), style);
}

// A line with as much of a drive's name as fits.
std::string FitName(const std::function<std::string(ENameForm)>& text, EHealth health,
                    const CTextStyle& style) {
    const ENameForm form = LongestForm([&](ENameForm each) {
        return CountColumns(MakeVisible(text(each), style)) <= style.width;
    });
    return FitLine(text(form), health, style);
}

void AddLines(std::vector<std::string>& lines, std::string_view text) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
}

}  // namespace

void CWatchScreen::Take(const CTick& tick) {
    for (const CChange& change : tick.changes) {
        m_Changes.push_front({FormatTime(tick.wallTime).substr(DATE), change});
    }
    m_Changes.resize(std::min(m_Changes.size(), MAX_CHANGES));
    if (tick.answer.IsAnswered()) {
        m_Answer = tick;
    }
    m_Last = tick;
}

std::vector<std::string> CWatchScreen::AllLines(const CTextStyle& style) const {
    std::vector<std::string> lines;
    const auto add = [&](const std::string& text, EHealth health = EHealth::OK) {
        lines.push_back(FitLine(text, health, style));
    };
    add(fmt::format("{}  qorctl watch, every {} s: {}", HealthName(m_Last.status), m_Interval,
                    FormatTime(m_Last.wallTime)),
        m_Last.status);
    if (!m_Last.answer.IsAnswered()) {
        add(DescribeNoAnswer(m_Last.answer), EHealth::UNKNOWN);
    }
    if (!m_Answer.answer.IsAnswered()) {
        return lines;
    }
    if (!m_Last.answer.IsAnswered()) {
        add("the last answer, of " + FormatTime(m_Answer.wallTime) + ":");
    }
    add(m_Answer.answer.sentence.empty() ? DescribeCounts(m_Answer.answer.inventory)
                                         : m_Answer.answer.sentence);
    for (const CHealthFinding& finding : m_Answer.health.findings) {
        const auto text = [&](ENameForm form) {
            return fmt::format("{}: {}", HealthName(finding.health), FindingText(finding, form));
        };
        lines.push_back(FitName(text, finding.health, style));
    }
    if (!m_Changes.empty()) {
        add("");
        add("Latest changes");
    }
    for (const CTimedChange& each : m_Changes) {
        const auto text = [&](ENameForm form) {
            return each.time + ' ' + DescribeChange(each.change, form);
        };
        lines.push_back(FitName(text, EHealth::OK, style));
    }
    add("");
    AddLines(lines, FormatTables(m_Answer.answer.inventory, CProblemMarks(m_Answer.health.findings),
                                 style));
    return lines;
}

std::vector<std::string> CWatchScreen::Lines(const CScreenSize& size, CTextStyle style) const {
    style.width = size.columns;
    std::vector<std::string> lines = AllLines(style);
    if (lines.size() > size.rows && size.rows > 0) {
        const size_t missing = lines.size() - size.rows + 1;
        lines.resize(size.rows - 1);
        lines.push_back(FitLine(fmt::format("... {} more lines", missing), EHealth::OK, style));
    }
    return lines;
}

}  // namespace qorctl
