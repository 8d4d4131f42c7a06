// The text of a report: sections of key/value lines, each closed by a blank line.
#ifndef QORSIM_REPORT_H
#define QORSIM_REPORT_H

#include <fmt/format.h>

#include <string>

namespace qorsim {

class CReport {
public:
    void Line(const std::string& text) { m_Text += text + "\n"; }
    void Blank() { m_Text += "\n"; }
    void Title(const std::string& title) { Line("### " + title + " ###"); }
    template <typename Value>
    void Key(const std::string& key, const Value& value) {
        Line(fmt::format("{} : {}", key, value));
    }

    const std::string& Text() const { return m_Text; }

private:
    std::string m_Text;
};

}  // namespace qorsim

#endif  // QORSIM_REPORT_H
