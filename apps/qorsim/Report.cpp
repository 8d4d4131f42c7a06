#include "Report.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qorsim {

CReport::CReport(const CHost& host, const std::string& name) {
    std::copy_if(host.tool.additions.begin(), host.tool.additions.end(),
                 std::back_inserter(m_Additions),
                 [&](const CAddition& addition) { return addition.report == name; });
}

void CReport::Line(const std::string& text) {
    if (m_Text.size() + text.size() > MAX_REPORT) {
        throw CReportTooLong();
    }
    m_Text.append(text).append("\n");
}

// Added keys come first: a section may end in lines that are no keys.
void CReport::Title(const std::string& title) {
    m_Section = title;
    Line("### " + title + " ###");
    for (const CAddition& addition : m_Additions) {
        if (addition.after.empty() && addition.section == title) {
            Keys(addition);
        }
    }
}

void CReport::Keys(const CAddition& addition) {
    for (const auto& [key, value] : addition.keys) {
        Key(key, value);
    }
}

void CReport::Blank() {
    m_Text += "\n";
    const std::string closed = std::exchange(m_Section, "");
    for (const CAddition& addition : m_Additions) {
        if (!closed.empty() && addition.after == closed) {
            Line("### " + addition.section + " ###");
            Keys(addition);
            m_Text += "\n";
        }
    }
}

}  // namespace qorsim
