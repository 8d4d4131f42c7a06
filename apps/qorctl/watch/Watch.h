// The loop of `qorctl watch`: asks at fixed times, compares each answer with the one before and
// hands both to a view.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_WATCH_H
#define QORCTL_WATCH_WATCH_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "health/Health.h"
#include "host/Answer.h"
#include "model/InventoryDiff.h"
#include "watch/WatchClock.h"

namespace qorctl {

struct CWatchOptions {
    int64_t interval = 60;  // seconds, above 0
    int64_t count = 0;      // requests; 0: until somebody wants an end
};

// One request and what it told.
struct CTick {
    int64_t wallTime = 0;
    CAnswer answer;
    CHealth health;  // of the answer; empty without one
    EHealth status = EHealth::UNKNOWN;
    std::vector<CChange> changes;  // since the answer before
    bool isFirstAnswer = false;
    bool answersAgain = false;  // the request before had no answer
};

class IWatchView {
public:
    virtual ~IWatchView() = default;

    // Shows a request. False: nothing can be shown any more.
    virtual bool Show(const CTick& tick) = 0;
    // Shows the last one again.
    virtual bool Redraw() = 0;
};

class CWatch {
public:
    // The references must outlive the object.
    CWatch(const CWatchOptions& options, std::function<CAnswer()> ask, IWatchClock& clock,
           IWatchView& view)
        : m_Options(options), m_Ask(std::move(ask)), m_Clock(clock), m_View(view) {}

    // Asks at once and then at every interval after that, until `count` requests were made,
    // somebody wants an end or nothing can be shown. Times that a long request missed are left
    // out. Returns the exit status: 0 when the last request had an answer that was shown.
    int Run();

private:
    bool Ask();
    void Judge(CTick& tick);
    bool Wait(int64_t time);

    const CWatchOptions m_Options;
    const std::function<CAnswer()> m_Ask;
    IWatchClock& m_Clock;
    IWatchView& m_View;
    std::optional<CInventory> m_Before;   // of the last answer
    EHealth m_Status = EHealth::UNKNOWN;  // likewise
    bool m_Answered = true;               // the last request
};

// The lines of a tick, each ended: see docs/health.md.
std::string FormatTickText(const CTick& tick);
std::string FormatTickJson(const CTick& tick);

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCH_H
