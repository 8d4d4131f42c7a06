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
#include "model/InventoryFilter.h"
#include "watch/WatchClock.h"

namespace qorctl {

// What an earlier watch knew when it ended.
struct CPast {
    std::optional<CInventory> inventory = std::nullopt;  // of its last answer, whole
    EHealth status = EHealth::UNKNOWN;                   // likewise
    bool answered = true;                                // its last request
};

struct CWatchOptions {
    int64_t interval = 60;  // seconds, above 0
    int64_t count = 0;      // requests; 0: until somebody wants an end
    CInventoryFilter filter = {};
    CPast past = {};  // what the first answer is compared with
};

// One request and what it told.
struct CTick {
    int64_t time = 0;      // milliseconds of IWatchClock::Now()
    int64_t wallTime = 0;  // seconds since 1970
    CAnswer answer;
    CHealth health;  // of the answer; empty without one
    EHealth status = EHealth::UNKNOWN;
    std::vector<CChange> changes;  // since the answer before
    bool isFirstAnswer = false;
    bool answersAgain = false;  // the request before had no answer
    // What the next answer is compared with, while the tick is shown; null without an answer.
    // Unlike that of `answer` it holds what has no problem, too.
    const CInventory* seen = nullptr;
};

// When a view is looked at, in milliseconds of IWatchClock::Now().
struct CMoment {
    int64_t now = 0;
    std::optional<int64_t> askedAt = std::nullopt;  // of a request that goes on
};

class IWatchView {
public:
    virtual ~IWatchView() = default;

    // Shows a request. False: nothing can be shown any more.
    virtual bool Show(const CTick& tick) = 0;
    // Shows what goes on, each second and after what came from outside. False: somebody wants an
    // end, or nothing can be shown any more.
    virtual bool Refresh(EWake /*why*/, const CMoment& /*moment*/) { return true; }
    // Whether each second is shown.
    virtual bool IsLive() const { return false; }
    // To be waited for.
    virtual pollfd Terminal() const { return {-1, 0, 0}; }
    // Gives the terminal to others, until the next Refresh().
    virtual void Leave() {}
    // Shows what is to stay. False when that failed.
    virtual bool End(const CMoment& /*moment*/) { return true; }
};

class CWatch {
public:
    // Waits until the descriptor can be read, or so many milliseconds, without end when they are
    // negative. False: somebody wants an end.
    using CWait = std::function<bool(int input, int64_t patience)>;
    // Makes a request and waits for its answer. Nothing: there was an end before.
    using CAsk = std::function<std::optional<CAnswer>(const CWait& wait)>;

    // The references must outlive the object.
    CWatch(const CWatchOptions& options, CAsk ask, IWatchClock& clock, IWatchView& view)
        : m_Options(options),
          m_Ask(std::move(ask)),
          m_Clock(clock),
          m_View(view),
          m_Before(options.past.inventory),
          m_Status(options.past.status),
          m_Answered(options.past.answered) {}

    // Asks at once and then at every interval after that, until `count` requests were made,
    // somebody wants an end or nothing can be shown. Times that a long request missed are left
    // out. A request that goes on then is ended. Returns the exit status: 0 when the last one that
    // came to its end had an answer that was shown.
    int Run();

private:
    bool Watch();
    bool Show(CAnswer answer);
    void Judge(CTick& tick);
    bool WaitUntil(int64_t time, int input);
    CMoment Moment();

    const CWatchOptions m_Options;
    const CAsk m_Ask;
    IWatchClock& m_Clock;
    IWatchView& m_View;
    std::optional<CInventory> m_Before;  // of the last answer
    EHealth m_Status;                    // likewise
    bool m_Answered;                     // the last request
    bool m_HasAnswer = false;            // there was one to a request of this object
    std::optional<int64_t> m_AskedAt;    // the request that goes on
};

// The lines of a tick, each ended: see docs/health.md.
std::string FormatTickText(const CTick& tick);
std::string FormatTickJson(const CTick& tick);

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCH_H
