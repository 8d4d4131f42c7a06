// What a request is doing, on standard error if that is a terminal:
//
//     qorctl: 12 s, krzcli -pdinfo -nosmart -a1 (controller 2 of 4)
//
// Thread rule: one thread at a time.
#ifndef QORCTL_HOST_PROGRESSLINE_H
#define QORCTL_HOST_PROGRESSLINE_H

#include <chrono>
#include <string>

namespace qorctl {

class CProgressLine {
public:
    CProgressLine();
    // Clears it.
    ~CProgressLine() { Clear(); }
    CProgressLine(const CProgressLine&) = delete;  // one owner of the terminal's line
    CProgressLine& operator=(const CProgressLine&) = delete;

    bool CanDraw() const { return m_CanDraw; }
    // Shows `text` and for how long it has been the same; nothing for a command that takes no time.
    void Draw(const std::string& text);
    void Clear();

private:
    using CClock = std::chrono::steady_clock;

    const bool m_CanDraw;
    bool m_IsDrawn = false;
    std::string m_Text;
    CClock::time_point m_Start = CClock::now();
    CClock::time_point m_Since = m_Start;
};

}  // namespace qorctl

#endif  // QORCTL_HOST_PROGRESSLINE_H
