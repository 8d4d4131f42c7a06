// How long a rebuild, or whatever else tells its per cents, still takes by its own pace.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_PACE_H
#define QORCTL_WATCH_PACE_H

#include <cstdint>
#include <optional>
#include <string>

namespace qorctl {

// "45 s", "2 min 13 s", "1 h 20 min", "3 d 4 h": the two largest units.
std::string DurationText(int64_t milliseconds);

class CPace {
public:
    // Times are milliseconds of one clock and grow. Per cents that fall begin anew.
    void See(int64_t time, long long percent);

    // "about 1 h 20 min left", after a single per cent "at least 40 min left", since the first one
    // may have been nearly over when it was first seen. Empty before two different per cents were
    // seen, at 100, and where the next one is long overdue.
    std::string Left(int64_t now) const;

private:
    struct CPoint {
        int64_t time = 0;
        long long percent = 0;
    };

    std::optional<CPoint> m_Seen;  // the first one
    CPoint m_Change;               // the first other per cents: where these began is known
    CPoint m_Last;                 // the latest per cents, when they were new
    long long m_LargestStep = 0;   // between two that were seen one after the other
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_PACE_H
