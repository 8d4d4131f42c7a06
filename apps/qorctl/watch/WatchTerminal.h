// `qorctl watch` and its surroundings: the real clock, signals, and the terminal.
//
// SIGINT, SIGTERM and SIGHUP want an end, of a request and of the RAID tool too. SIGTSTP (Ctrl-Z)
// pauses: the terminal is as it was meanwhile, the RAID tool runs on. SIGWINCH and SIGCONT redraw.
//
// Thread rule: one object of each class in a process, one thread.
#ifndef QORCTL_WATCH_WATCHTERMINAL_H
#define QORCTL_WATCH_WATCHTERMINAL_H

#include <array>
#include <csignal>
#include <cstddef>
#include <memory>
#include <optional>

#include "watch/Watch.h"
#include "watch/WatchClock.h"
#include "watch/WatchScreen.h"

namespace qorctl {

class CSignalClock final : public IWatchClock {
public:
    // Takes the signals over that are not ignored, and holds them back but in WaitUntil().
    CSignalClock();
    // Gives them back as they were.
    ~CSignalClock() override;
    CSignalClock(const CSignalClock&) = delete;  // one owner of the signals
    CSignalClock& operator=(const CSignalClock&) = delete;

    int64_t Now() override;
    int64_t WallTime() override;
    EWake WaitUntil(int64_t time, int input, const pollfd& terminal) override;
    void Pause() override;

    // The exit status of a program that such a signal ended; nothing when there was none.
    std::optional<int> StopStatus() const;

private:
    static constexpr size_t SIGNALS = 6;

    sigset_t m_Mask = {};
    sigset_t m_Open = {};  // while something is waited for
    std::array<struct sigaction, SIGNALS> m_Actions = {};
};

// The whole screen of the terminal at standard output, and the keys of one at standard input. An
// end that is none of ours (SIGQUIT, a crash) gives the terminal back, too.
//
// A CSignalClock must be there before: the library that draws takes over signals that nobody has.
class CTerminalView final : public IWatchView {
public:
    // Null when the terminal is of a kind that this system does not describe, or that cannot move
    // its cursor.
    static std::unique_ptr<CTerminalView> Open(int64_t interval);
    ~CTerminalView() override;
    CTerminalView(const CTerminalView&) = delete;  // one owner of the screen
    CTerminalView& operator=(const CTerminalView&) = delete;

    bool Show(const CTick& tick) override;
    bool Refresh(EWake why, const CMoment& moment) override;
    bool IsLive() const override { return true; }
    pollfd Terminal() const override;
    void Leave() override;
    // Gives the terminal back, and leaves the last words on it.
    bool End(const CMoment& moment) override;

private:
    explicit CTerminalView(int64_t interval);

    bool IsGone() const;
    bool TakeKeys();
    void Draw(const CMoment& moment);

    CWatchScreen m_Screen;
    CTextStyle m_Style;
    bool m_HasKeys = false;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHTERMINAL_H
