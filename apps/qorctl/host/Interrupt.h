// A clean end on Ctrl-C, SIGTERM or SIGHUP while the plug-in runs the RAID tool.
//
// The plug-in starts the tool in a process group of its own, so the terminal's Ctrl-C does not
// reach it, and nothing would end it but its time-out.
#ifndef QORCTL_HOST_INTERRUPT_H
#define QORCTL_HOST_INTERRUPT_H

#include <signal.h>

#include <array>

namespace qorctl {

inline constexpr std::array<int, 3> INTERRUPT_SIGNALS = {SIGINT, SIGTERM, SIGHUP};

// While there is an object, one of these signals kills the children of the thread that made it with
// their process groups, reaps them, removes the result files that they were writing, clears a
// progress line, and ends the process with 128 and the signal's number: 130 after Ctrl-C. A signal
// that was ignored before stays ignored (nohup).
// One object at a time. Other threads must block these signals; only the thread that made the
// object may start processes.
class CInterruptGuard {
public:
    // `last`, unless null, is called in the signal handler before the process ends.
    explicit CInterruptGuard(void (*last)() = nullptr);
    ~CInterruptGuard();
    CInterruptGuard(const CInterruptGuard&) = delete;  // it owns the process's dispositions
    CInterruptGuard& operator=(const CInterruptGuard&) = delete;

private:
    std::array<struct sigaction, INTERRUPT_SIGNALS.size()> m_Before = {};
};

}  // namespace qorctl

#endif  // QORCTL_HOST_INTERRUPT_H
