// `qorctl watch` and its surroundings: the real clock, signals, and the terminal.
//
// SIGINT, SIGTERM and SIGHUP want an end: while waiting, the loop ends; during a request, the RAID
// tool is ended too. Either way the screen as it was comes back. SIGWINCH
// redraws.
//
// Thread rule: one object of each class in a process, one thread.
#ifndef QORCTL_WATCH_WATCHTERMINAL_H
#define QORCTL_WATCH_WATCHTERMINAL_H

#include <array>
#include <csignal>
#include <cstddef>
#include <optional>

#include "host/RequestProcess.h"
#include "watch/Watch.h"
#include "watch/WatchClock.h"
#include "watch/WatchScreen.h"

namespace qorctl {

class CSignalClock final : public IWatchClock {
public:
    // Takes the signals over that are not ignored, and holds them back but in WaitUntil() and
    // Await().
    CSignalClock();
    // Gives them back as they were.
    ~CSignalClock() override;
    CSignalClock(const CSignalClock&) = delete;  // one owner of the signals
    CSignalClock& operator=(const CSignalClock&) = delete;

    int64_t Now() override;
    int64_t WallTime() override;
    EWake WaitUntil(int64_t time) override;

    // Waits for a request, which may take minutes: a signal that wants an end ends it, and then
    // this process.
    CAnswer Await(CRequestProcess& process);

    // The exit status of a program that such a signal ended; nothing when there was none.
    std::optional<int> StopStatus() const;

private:
    static constexpr size_t SIGNALS = 4;

    sigset_t OpenMask() const;

    sigset_t m_Mask = {};
    std::array<struct sigaction, SIGNALS> m_Actions = {};
};

// The alternate screen of the terminal at standard output.
class CTerminalView final : public IWatchView {
public:
    explicit CTerminalView(int64_t interval);
    ~CTerminalView() override;
    CTerminalView(const CTerminalView&) = delete;  // one owner of the screen
    CTerminalView& operator=(const CTerminalView&) = delete;

    bool Show(const CTick& tick) override;
    bool Redraw() override;

private:
    CWatchScreen m_Screen;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHTERMINAL_H
