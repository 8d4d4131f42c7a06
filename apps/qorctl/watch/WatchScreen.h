// What `qorctl watch` shows on a terminal: the status, what is wrong, the latest changes and the
// tables of everything, as far as the screen goes.
//
// Owner: the content is copied from the ticks. Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_WATCHSCREEN_H
#define QORCTL_WATCH_WATCHSCREEN_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "terminal/TerminalText.h"
#include "watch/Watch.h"

namespace qorctl {

struct CScreenSize {
    size_t rows = 24;
    size_t columns = 80;
};

class CWatchScreen {
public:
    // The latest changes that are kept.
    static constexpr size_t MAX_CHANGES = 10;

    explicit CWatchScreen(int64_t interval) : m_Interval(interval) {}

    void Take(const CTick& tick);

    // At most `size.rows` lines of at most `size.columns` columns. When there is more, the last
    // line says how many lines are missing. Coloured where the style has colour; its width does not
    // count.
    std::vector<std::string> Lines(const CScreenSize& size, CTextStyle style) const;

private:
    std::vector<std::string> AllLines(const CTextStyle& style) const;

    struct CTimedChange {
        std::string time;
        CChange change;
    };

    int64_t m_Interval;
    CTick m_Last;                        // the last request
    CTick m_Answer;                      // the last one that had an answer
    std::deque<CTimedChange> m_Changes;  // the latest first
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHSCREEN_H
