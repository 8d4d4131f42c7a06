// What `qorctl watch` shows on a terminal:
//
//     CRITICAL  qorctl watch, every 60 s: 2026-11-20T10:00:00Z            the status
//     the data is 2 min 13 s old; asking for 130 s
//     CRITICAL: controller 0 logical drive LD1: Degraded                  the part that scrolls:
//     ...                                                                 problems, changes, tables
//     controller 0 drive 252:7 (PD7): REBUILD 34%, about 1 h 20 min left  what makes progress
//     lines 1-19 of 57; q ends; Up, Down, PgUp, PgDn, Home, End
//
// Owner: the content is copied from the ticks. Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_WATCHSCREEN_H
#define QORCTL_WATCH_WATCHSCREEN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "terminal/TerminalText.h"
#include "watch/Pace.h"
#include "watch/Watch.h"

namespace qorctl {

struct CScreenSize {
    size_t rows = 24;
    size_t columns = 80;
};

enum class EScroll { LINE_UP, LINE_DOWN, PAGE_UP, PAGE_DOWN, TO_BEGIN, TO_END };

class CWatchScreen {
public:
    // The latest changes that the screen shows, and those that are kept for its end.
    static constexpr size_t SHOWN_CHANGES = 10;
    static constexpr size_t KEPT_CHANGES = 1000;

    explicit CWatchScreen(int64_t interval) : m_Interval(interval) {}

    void Take(const CTick& tick);

    // The next Lines() are further up or down.
    void Scroll(EScroll way);

    // `size.rows` lines of at most `size.columns` columns. Coloured where the style has colour; its
    // width does not count.
    std::vector<std::string> Lines(const CScreenSize& size, CTextStyle style,
                                   const CMoment& moment);

    // What stays when the screen is gone, lines of any width, each ended: the status, the problems
    // and the changes seen, the oldest first. Empty before the first request has ended.
    std::string LastWords(CTextStyle style, const CMoment& moment) const;

private:
    struct CTimedChange {
        int64_t wallTime;
        CChange change;
    };

    // A drive and what happens to it: another drive, or another operation, has another pace.
    using COperation = std::array<std::string, 3>;

    static COperation OperationOf(const CPhysicalDrive& drive);
    static void AddChange(std::vector<std::string>& lines, const CTimedChange& change, size_t date,
                          const CTextStyle& style);

    void TakePaces();
    std::vector<std::string> Head(const CTextStyle& style, const CMoment& moment) const;
    std::vector<std::string> Body(const CTextStyle& style) const;
    std::vector<std::string> Progress(const CTextStyle& style, const CMoment& moment) const;
    void AddProblems(std::vector<std::string>& lines, const CTextStyle& style) const;
    std::string Summary() const;
    std::string Footer() const;

    int64_t m_Interval;
    std::optional<CTick> m_Last;         // the last request
    std::optional<CTick> m_Answer;       // the last one that had an answer
    std::deque<CTimedChange> m_Changes;  // the latest first
    size_t m_Forgotten = 0;              // changes that were too many
    std::map<COperation, CPace> m_Paces;
    size_t m_Top = 0;    // the first line of the body that is on the screen,
    size_t m_Room = 0;   // how many are,
    size_t m_Lines = 0;  // and how many there are
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHSCREEN_H
