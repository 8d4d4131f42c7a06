// The text of a report: sections of key/value lines, each closed by a blank line.
#ifndef QORSIM_REPORT_H
#define QORSIM_REPORT_H

#include <fmt/format.h>

#include <string>
#include <vector>

#include "Host.h"

namespace qorsim {

// A report beyond MAX_REPORT: a small profile's additions may stand in it for each of many drives.
struct CReportTooLong {};

inline constexpr size_t MAX_REPORT = size_t{64} << 20;

// Lines are appended until CReportTooLong is thrown.
class CReport {
public:
    CReport() = default;
    // A report with what the host's tool adds to it. `name` is that of the report ("ctrlinfo").
    CReport(const CHost& host, const std::string& name);

    void Line(const std::string& text);
    // Opens a section.
    void Title(const std::string& title);
    template <typename Value>
    void Key(const std::string& key, const Value& value) {
        Line(fmt::format("{} : {}", key, value));
    }
    // A blank line; it closes the section that is open.
    void Blank();

    const std::string& Text() const { return m_Text; }

private:
    void Keys(const CAddition& addition);

    std::string m_Text;
    std::string m_Section;  // that is open, "" for none
    std::vector<CAddition> m_Additions;
};

}  // namespace qorsim

#endif  // QORSIM_REPORT_H
