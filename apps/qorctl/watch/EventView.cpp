#include "watch/EventView.h"

#include <fmt/format.h>

#include <algorithm>

#include "terminal/Output.h"

namespace qorctl {
namespace {

constexpr int64_t LONGEST_PAUSE = 60;  // seconds
constexpr int MOST_DOUBLINGS = 6;      // 1, 2, 4 ... 64
constexpr int NO_INPUT = -1;
constexpr size_t SHARE_TWICE = 100;  // of those that wait, one of so many may come twice

int64_t PauseAfter(int failures) {
    return std::min(int64_t{1} << std::min(failures - 1, MOST_DOUBLINGS), LONGEST_PAUSE);
}

}  // namespace

bool CEventView::Show(const CTick& tick) {
    m_File.State().Take(tick);
    Save();
    Advance(m_Clock.Now());
    return m_View.Show(tick);
}

void CEventView::Save() {
    m_IsSaved = m_File.Save();
    m_Struck = m_IsSaved ? 0 : m_Struck;
}

void CEventView::SaveStruck() {
    if (!m_IsSaved || m_Struck > 0) {
        Save();
    }
}

bool CEventView::Refresh(EWake why, const CMoment& moment) {
    Advance(moment.now);
    return m_View.Refresh(why, moment);
}

pollfd CEventView::Terminal() const {
    return {m_Program.IsRunning() ? m_Program.Descriptor() : NO_INPUT, POLLIN, 0};
}

void CEventView::Advance(int64_t now) {
    COutbox& outbox = m_File.State().Outbox();
    if (m_Program.IsRunning()) {
        const std::optional<bool> isTaken = m_Program.Advance(now);
        if (!isTaken) {
            return;
        }
        TakeResult(*isTaken, now);
    }
    if (!m_IsSaved || m_Struck * SHARE_TWICE > outbox.Size()) {
        Save();
    }
    if (outbox.IsHeadKept() && now >= m_NextTry) {
        if (m_Program.Start(outbox.Head(), now)) {
            outbox.Hold(true);
        } else {
            TakeResult(false, now);
        }
    }
}

void CEventView::TakeResult(bool isTaken, int64_t now) {
    COutbox& outbox = m_File.State().Outbox();
    outbox.Hold(false);
    if (isTaken) {
        outbox.Strike();
        ++m_Struck;
        m_Failures = 0;
        m_NextTry = now;
        return;
    }
    SaveStruck();
    const int64_t pause = PauseAfter(++m_Failures);
    m_NextTry = now + pause * MILLISECONDS;
    Report(fmt::format("the program for events {}; the same event comes again in {} s",
                       m_Program.Problem(), pause));
}

// False when nothing more is to be awaited at the end.
bool CEventView::IsWaitedFor(int64_t now) {
    const COutbox& outbox = m_File.State().Outbox();
    if (m_Program.IsRunning()) {
        const int64_t time = std::min(m_Program.Deadline(), now + MILLISECONDS);
        const EWake wake = m_Clock.WaitUntil(time, NO_INPUT, Terminal());
        if (wake == EWake::PAUSE) {
            m_Clock.Pause();
        }
        return wake != EWake::STOP;
    }
    return outbox.IsHeadKept() && m_Failures == 0;
}

bool CEventView::End(const CMoment& moment) {
    const COutbox& outbox = m_File.State().Outbox();
    // The time that is over already: a look at whether somebody wants an end.
    bool goesOn = m_Clock.WaitUntil(moment.now, NO_INPUT, {NO_INPUT, 0, 0}) != EWake::STOP;
    while (goesOn && (m_Program.IsRunning() || !outbox.IsEmpty())) {
        const int64_t now = m_Clock.Now();
        if (m_Program.IsRunning() || m_Failures == 0) {
            Advance(now);
        }
        goesOn = IsWaitedFor(now);
    }
    SaveStruck();
    if (!outbox.IsEmpty()) {
        Report(fmt::format("{} events are left, which the next start hands over", outbox.Size()));
    }
    return m_View.End(moment) && outbox.IsEmpty();
}

}  // namespace qorctl
