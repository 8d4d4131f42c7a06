#include "host/ProgressLine.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

// A request that takes less is not worth a line.
constexpr std::chrono::milliseconds PATIENCE(300);
// Columns that stay free behind the line: it must not go on in the next one, not even with the "^C"
// of a Ctrl-C.
constexpr size_t END = 3;

void WriteError(std::string_view text) {
    // A terminal that is gone must not end the request.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

CProgressLine::CProgressLine() : m_CanDraw(CanMoveCursor(STDERR_FILENO)) {}

void CProgressLine::Draw(const std::string& text) {
    const CClock::time_point now = CClock::now();
    if (text != m_Text) {
        m_Text = text;
        m_Since = now;
    }
    if (!m_CanDraw || text.empty() || now - m_Start < PATIENCE) {
        return;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - m_Since).count();
    const size_t width = DetectWidth(STDERR_FILENO);
    std::string line = MakeVisible(fmt::format("qorctl: {} s, {}", seconds, text),
                                   {.utf8 = false, .colour = false});
    line.resize(std::min(line.size(), width > END ? width - END : 0));
    m_IsDrawn = true;
    WriteError(std::string(CLEAR_LINE) + line);
}

void CProgressLine::Clear() {
    if (m_IsDrawn) {
        m_IsDrawn = false;
        WriteError(CLEAR_LINE);
    }
}

}  // namespace qorctl
