// Shows each request by another view, and hands its events over to a program while watching goes
// on.
//
// The events of a request are in the state file before the first of them is handed over; what was
// taken is struck out there, one by one, or a hundredth of those that wait at once, which spares
// writing all of a long list as many times. So each one is handed over, in order, whatever ends
// this program; one, or that hundredth, may be handed over a second time, with the same ids.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_EVENTVIEW_H
#define QORCTL_WATCH_EVENTVIEW_H

#include <cstdint>

#include "watch/EventProgram.h"
#include "watch/Watch.h"
#include "watch/WatchFile.h"

namespace qorctl {

class CEventView final : public IWatchView {
public:
    // The references must outlive the object. `view` needs no terminal.
    CEventView(IWatchView& view, CWatchFile& file, CEventProgram& program, IWatchClock& clock)
        : m_View(view), m_File(file), m_Program(program), m_Clock(clock) {}

    bool Show(const CTick& tick) override;
    bool Refresh(EWake why, const CMoment& moment) override;
    bool IsLive() const override { return !m_IsSaved || !m_File.State().Outbox().IsEmpty(); }
    pollfd Terminal() const override;
    // Hands over what is left, until nothing is, an event was not taken or somebody wants an end.
    // False, after a message, when something is left.
    bool End(const CMoment& moment) override;

private:
    void Advance(int64_t now);
    void TakeResult(bool isTaken, int64_t now);
    bool IsWaitedFor(int64_t now);
    void Save();
    void SaveStruck();

    IWatchView& m_View;
    CWatchFile& m_File;
    CEventProgram& m_Program;
    IWatchClock& m_Clock;
    bool m_IsSaved = true;
    size_t m_Struck = 0;    // events that were taken, and still are in the file
    int m_Failures = 0;     // of the first event, one after the other
    int64_t m_NextTry = 0;  // when it may be handed over again
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_EVENTVIEW_H
