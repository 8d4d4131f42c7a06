#include "watch/WatchScreen.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <string_view>
#include <utility>

#include "format/Table.h"
#include "health/Advice.h"
#include "model/ObjectNames.h"

namespace qorctl {
namespace {

// Of the time of a change, which the head of the screen has.
constexpr size_t DATE = std::string_view("2026-11-20T").size();
// Lines of a screen on which there is room to say what keys there are.
constexpr size_t ROOM_FOR_KEYS = 5;
constexpr std::string_view INDENT = "  ";

std::vector<std::string> SplitLines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

// A line that fits, in the colour of a severity.
std::string FitLine(const std::string& text, EHealth health, const CTextStyle& style) {
    const std::string visible = MakeVisible(text, style);
    const std::string_view fit =
        style.width == ANY_WIDTH ? visible : FirstColumns(visible, style.width);
    return Coloured(fit, ColourOf(health), style);
}

// The lines of a text with as much of a drive's name as fits in one.
void AddText(std::vector<std::string>& lines, const std::function<std::string(ENameForm)>& text,
             EHealth health, const CTextStyle& style) {
    const ENameForm form = LongestForm([&](ENameForm each) {
        return style.width == ANY_WIDTH ||
               CountColumns(MakeVisible(text(each), style)) <= style.width;
    });
    for (const std::string& line :
         SplitLines(WrapText(MakeVisible(text(form), style), style.width, 0, INDENT))) {
        lines.push_back(FitLine(line, health, style));
    }
}

void AddText(std::vector<std::string>& lines, const std::string& text, EHealth health,
             const CTextStyle& style) {
    AddText(
        lines, [&](ENameForm) { return text; }, health, style);
}

// Nothing for a drive that makes no progress, or whose text is no number of per cents.
std::optional<long long> PercentOf(const CPhysicalDrive& drive) {
    const std::optional<long long> percent = drive.progress ? drive.progress->number : std::nullopt;
    return percent && *percent >= 0 && *percent <= 100 ? percent : std::nullopt;
}

std::string StateOf(const CPhysicalDrive& drive) {
    return (drive.statusDetail ? drive.statusDetail : drive.status).value_or("");
}

}  // namespace

void CWatchScreen::Take(const CTick& tick) {
    for (const CChange& change : tick.changes) {
        m_Changes.push_front({tick.wallTime, change});
    }
    if (m_Changes.size() > KEPT_CHANGES) {
        m_Forgotten += m_Changes.size() - KEPT_CHANGES;
        m_Changes.resize(KEPT_CHANGES);
    }
    if (tick.answer.IsAnswered()) {
        m_Answer = tick;
        TakePaces();
    }
    m_Last = tick;
}

void CWatchScreen::TakePaces() {
    std::map<COperation, CPace> paces;
    for (const CPhysicalDrive& drive : m_Answer->answer.inventory.physicalDrives) {
        if (const std::optional<long long> percent = PercentOf(drive)) {
            CPace& pace = paces[OperationOf(drive)];
            pace = m_Paces[OperationOf(drive)];
            pace.See(m_Answer->time, *percent);
        }
    }
    m_Paces = std::move(paces);
}

CWatchScreen::COperation CWatchScreen::OperationOf(const CPhysicalDrive& drive) {
    return {DriveKey(drive), drive.serial.value_or(""), StateOf(drive)};
}

void CWatchScreen::Scroll(EScroll way) {
    const size_t page = std::max<size_t>(m_Room, 2) - 1;  // a line stays in sight
    switch (way) {
        case EScroll::LINE_UP:
            m_Top -= std::min<size_t>(m_Top, 1);
            break;
        case EScroll::LINE_DOWN:
            m_Top += 1;
            break;
        case EScroll::PAGE_UP:
            m_Top -= std::min(m_Top, page);
            break;
        case EScroll::PAGE_DOWN:
            m_Top += page;
            break;
        case EScroll::TO_BEGIN:
            m_Top = 0;
            break;
        case EScroll::TO_END:
            m_Top = m_Lines;
            break;
    }
    m_Top = std::min(m_Top, m_Lines - std::min(m_Room, m_Lines));
}

std::vector<std::string> CWatchScreen::Head(const CTextStyle& style, const CMoment& moment) const {
    const EHealth status = m_Last ? m_Last->status : EHealth::UNKNOWN;
    std::string title = fmt::format("{}  qorctl watch, every {} s", HealthName(status), m_Interval);
    if (m_Last) {
        title += ": " + FormatTime(m_Last->wallTime);
    }
    std::string age =
        m_Answer ? fmt::format("the data is {} old", DurationText(moment.now - m_Answer->time))
                 : "no data yet";
    if (moment.now - moment.askedAt.value_or(moment.now) >= MILLISECONDS) {
        age += fmt::format("; asking for {} s", (moment.now - *moment.askedAt) / MILLISECONDS);
    }
    return {FitLine(title, status, style), FitLine(age, EHealth::OK, style)};
}

void CWatchScreen::AddProblems(std::vector<std::string>& lines, const CTextStyle& style) const {
    if (m_Last && !m_Last->answer.IsAnswered()) {
        AddText(lines, DescribeNoAnswer(m_Last->answer), EHealth::UNKNOWN, style);
        if (m_Answer) {
            AddText(lines, "the last answer, of " + FormatTime(m_Answer->wallTime) + ":",
                    EHealth::OK, style);
        }
    }
    if (!m_Answer) {
        return;
    }
    for (const CHealthFinding& finding : m_Answer->health.findings) {
        const auto text = [&](ENameForm form) {
            return fmt::format("{}: {}", HealthName(finding.health), FindingText(finding, form));
        };
        AddText(lines, text, finding.health, style);
    }
}

void CWatchScreen::AddChange(std::vector<std::string>& lines, const CTimedChange& change,
                             size_t date, const CTextStyle& style) {
    const auto text = [&](ENameForm form) {
        return FormatTime(change.wallTime).substr(date) + ' ' + DescribeChange(change.change, form);
    };
    AddText(lines, text, EHealth::OK, style);
}

std::string CWatchScreen::Summary() const {
    const CAnswer& answer = m_Answer->answer;
    return answer.sentence.empty() ? DescribeCounts(answer.inventory) : answer.sentence;
}

std::vector<std::string> CWatchScreen::Body(const CTextStyle& style) const {
    std::vector<std::string> lines;
    AddProblems(lines, style);
    if (!m_Changes.empty()) {
        lines.insert(lines.end(), {"", FitLine("Latest changes", EHealth::OK, style)});
    }
    for (size_t i = 0; i < std::min(m_Changes.size(), SHOWN_CHANGES); ++i) {
        AddChange(lines, m_Changes[i], DATE, style);
    }
    if (m_Answer) {
        lines.emplace_back();
        AddText(lines, Summary(), EHealth::OK, style);
        lines.emplace_back();
        const std::vector<std::string> tables = SplitLines(FormatTables(
            m_Answer->answer.inventory, CProblemMarks(m_Answer->health.findings), style));
        lines.insert(lines.end(), tables.begin(), tables.end());
    }
    return lines;
}

std::vector<std::string> CWatchScreen::Progress(const CTextStyle& style,
                                                const CMoment& moment) const {
    std::vector<std::string> lines;
    if (!m_Answer) {
        return lines;
    }
    for (const CPhysicalDrive& drive : m_Answer->answer.inventory.physicalDrives) {
        if (!drive.progress) {
            continue;
        }
        const auto pace = m_Paces.find(OperationOf(drive));
        const std::string left = pace == m_Paces.end() ? "" : pace->second.Left(moment.now);
        const auto text = [&](ENameForm form) {
            return fmt::format("{}: {}{}{}{}", DriveName(IdentityOf(drive), form), StateOf(drive),
                               ProgressText(drive.progress), left.empty() ? "" : ", ", left);
        };
        AddText(lines, text, EHealth::OK, style);
    }
    return lines;
}

// What part of the body there is to see, and how to see more.
std::string CWatchScreen::Footer() const {
    return m_Room >= m_Lines
               ? "q ends"
               : fmt::format("lines {}-{} of {}; q ends; Up, Down, PgUp, PgDn, Home, End",
                             m_Top + 1, m_Top + m_Room, m_Lines);
}

std::vector<std::string> CWatchScreen::Lines(const CScreenSize& size, CTextStyle style,
                                             const CMoment& moment) {
    style.width = size.columns;
    std::vector<std::string> lines = Head(style, moment);
    lines.resize(std::min(lines.size(), size.rows));
    const bool hasFooter = size.rows >= ROOM_FOR_KEYS;
    const size_t room = size.rows - lines.size() - (hasFooter ? 1 : 0);
    std::vector<std::string> progress = Progress(style, moment);
    progress.resize(std::min(progress.size(), (room + 1) / 2));
    const std::vector<std::string> body = Body(style);
    m_Room = room - progress.size();
    m_Lines = body.size();
    m_Top = std::min(m_Top, m_Lines - std::min(m_Room, m_Lines));
    for (size_t i = 0; i < m_Room; ++i) {
        lines.push_back(m_Top + i < m_Lines ? body[m_Top + i] : "");
    }
    lines.insert(lines.end(), progress.begin(), progress.end());
    if (hasFooter) {
        lines.push_back(FitLine(Footer(), EHealth::OK, style));
    }
    return lines;
}

std::string CWatchScreen::LastWords(CTextStyle style, const CMoment& moment) const {
    style.width = ANY_WIDTH;
    style.colour = false;
    std::vector<std::string> lines;
    if (m_Last) {
        lines.push_back(
            fmt::format("{} {}", FormatTime(m_Last->wallTime), HealthName(m_Last->status)));
    }
    AddProblems(lines, style);
    if (m_Answer) {
        AddText(lines, Summary(), EHealth::OK, style);
    }
    const std::vector<std::string> progress = Progress(style, moment);
    lines.insert(lines.end(), progress.begin(), progress.end());
    if (!m_Changes.empty()) {
        lines.emplace_back("Changes");
    }
    if (m_Forgotten > 0) {
        lines.push_back(fmt::format("... and {} earlier ones", m_Forgotten));
    }
    std::for_each(m_Changes.rbegin(), m_Changes.rend(),
                  [&](const CTimedChange& change) { AddChange(lines, change, 0, style); });
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    return text;
}

}  // namespace qorctl
