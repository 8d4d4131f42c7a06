#include "watch/Pace.h"

#include <fmt/format.h>

#include <algorithm>

#include "watch/WatchClock.h"

namespace qorctl {
namespace {

constexpr int64_t MINUTE = 60;  // seconds
constexpr int64_t HOUR = 60 * MINUTE;
constexpr int64_t DAY = 24 * HOUR;
constexpr long long WHOLE = 100;  // per cent
// A step that takes so many times as long as the others did has no pace any more.
constexpr int64_t OVERDUE = 3;

std::string InUnits(int64_t seconds, int64_t large, const char* name, int64_t small,
                    const char* smallName) {
    return fmt::format("{} {} {} {}", seconds / large, name, seconds % large / small, smallName);
}

// A minute or more, as exact as an estimate is.
std::string RoundedText(int64_t milliseconds) {
    const int64_t minutes = (milliseconds / MILLISECONDS + MINUTE / 2) / MINUTE;
    return minutes * MINUTE < HOUR ? fmt::format("{} min", minutes)
                                   : DurationText(minutes * MINUTE * MILLISECONDS);
}

}  // namespace

std::string DurationText(int64_t milliseconds) {
    const int64_t seconds = milliseconds / MILLISECONDS;
    if (seconds < MINUTE) {
        return fmt::format("{} s", seconds);
    }
    if (seconds < HOUR) {
        return InUnits(seconds, MINUTE, "min", 1, "s");
    }
    return seconds < DAY ? InUnits(seconds, HOUR, "h", MINUTE, "min")
                         : InUnits(seconds, DAY, "d", HOUR, "h");
}

void CPace::See(int64_t time, long long percent) {
    const CPoint point = {time, percent};
    if (!m_Seen || percent < m_Last.percent) {
        m_Seen = m_Change = m_Last = point;
        m_LargestStep = 0;
    } else if (percent > m_Last.percent) {
        m_LargestStep = std::max(m_LargestStep, percent - m_Last.percent);
        m_Change = m_Change.percent == m_Seen->percent ? point : m_Change;
        m_Last = point;
    }
}

std::string CPace::Left(int64_t now) const {
    if (!m_Seen || m_Last.percent == m_Seen->percent || m_Last.percent >= WHOLE) {
        return "";
    }
    const CPoint& from = m_Last.percent == m_Change.percent ? *m_Seen : m_Change;
    const int64_t time = m_Last.time - from.time;
    const long long percent = m_Last.percent - from.percent;
    const int64_t waited = now - m_Last.time;
    if (waited > OVERDUE * m_LargestStep * time / percent) {
        return "";
    }
    const int64_t left = std::max<int64_t>((WHOLE - m_Last.percent) * time / percent - waited, 0);
    const bool isCoarse = m_Last.percent - m_Seen->percent == 1;
    if (left < MINUTE * MILLISECONDS) {
        return isCoarse ? "" : "less than 1 min left";
    }
    return fmt::format("{} {} left", isCoarse ? "at least" : "about", RoundedText(left));
}

}  // namespace qorctl
