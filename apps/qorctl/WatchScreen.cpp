#include "WatchScreen.h"

#include <fmt/format.h>

#include <algorithm>

#include "CheckCommand.h"

namespace qorctl {
namespace {

// The first `columns` characters.
std::string Clip(const std::string& text, size_t columns) {
    size_t end = 0;
    size_t count = 0;
    while (end < text.size()) {
        size_t next = end + 1;
        while (next < text.size() && CountColumns(text.substr(next, 1)) == 0) {
            ++next;
        }
        if (++count > columns) {
            break;
        }
        end = next;
    }
    return text.substr(0, end);
}

std::string Column(const CText& text) {
    return text ? "  " + *text : "";
}

std::string Column(const CMeasure& measure) {
    return measure ? "  " + measure->text : "";
}

std::string StateColumn(const CText& state) {
    return "  " + state.value_or("(state not reported)");
}

// How far a rebuild or a copy is.
CText ProgressOf(const CPhysicalDrive& drive) {
    const CEntry* entry = FindEntry(drive.sections, "General Information", "Progress");
    return entry == nullptr ? std::nullopt : entry->value;
}

}  // namespace

void CWatchScreen::Take(const CTick& tick) {
    for (const CChange& change : tick.changes) {
        m_Changes.push_front(FormatTime(tick.wallTime) + ' ' + DescribeChange(change));
    }
    m_Changes.resize(std::min(m_Changes.size(), MAX_CHANGES));
    if (tick.poll.answered) {
        m_Answer = tick;
    }
    m_Last = tick;
}

std::vector<std::string> CWatchScreen::AllLines() const {
    std::vector<std::string> lines;
    lines.push_back(fmt::format("qorctl watch, every {} s: {}  {}", m_Interval,
                                FormatTime(m_Last.wallTime), HealthName(m_Last.status)));
    if (!m_Last.poll.answered) {
        lines.push_back(DescribeNoAnswer(m_Last.poll));
    }
    if (!m_Answer.poll.answered) {
        return lines;
    }
    if (!m_Last.poll.answered) {
        lines.push_back("the last answer, of " + FormatTime(m_Answer.wallTime) + ":");
    }
    lines.push_back(m_Answer.poll.message.empty() ? DescribeCounts(m_Answer.poll.inventory)
                                                  : m_Answer.poll.message);
    for (const CHealthFinding& finding : m_Answer.health.findings) {
        lines.push_back(
            fmt::format("{}: {}: {}", HealthName(finding.health), finding.object, finding.message));
    }
    if (!m_Changes.empty()) {
        lines.insert(lines.end(), {"", "Latest changes"});
        lines.insert(lines.end(), m_Changes.begin(), m_Changes.end());
    }
    AddObjects(lines);
    return lines;
}

void CWatchScreen::AddObjects(std::vector<std::string>& lines) const {
    const CInventory& inventory = m_Answer.poll.inventory;
    lines.emplace_back();
    for (const CLogicalDrive& drive : inventory.logicalDrives) {
        lines.push_back(ObjectName(drive) + StateColumn(drive.state) + Column(drive.name) +
                        Column(drive.raidLevel) + Column(drive.capacity));
    }
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        lines.push_back(ObjectName(drive) + StateColumn(drive.statusDetail) +
                        Column(ProgressOf(drive)) + Column(drive.use) + Column(drive.group) +
                        Column(drive.temperature));
    }
    for (const CPcieSsd& ssd : inventory.pcieSsds) {
        lines.push_back(ObjectName(ssd) + StateColumn(ssd.status) + Column(ssd.product) +
                        Column(ssd.temperature) + Column(ssd.used));
    }
}

std::vector<std::string> CWatchScreen::Lines(const CScreenSize& size,
                                             const CTextStyle& style) const {
    std::vector<std::string> lines = AllLines();
    if (lines.size() > size.rows && size.rows > 0) {
        const size_t missing = lines.size() - size.rows + 1;
        lines.resize(size.rows - 1);
        lines.push_back(fmt::format("... {} more lines", missing));
    }
    for (std::string& line : lines) {
        line = Clip(MakeVisible(line, style), size.columns);
    }
    return lines;
}

}  // namespace qorctl
