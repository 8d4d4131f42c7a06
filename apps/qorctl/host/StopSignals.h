// The signals that want an end, as something to wait for.
#ifndef QORCTL_HOST_STOPSIGNALS_H
#define QORCTL_HOST_STOPSIGNALS_H

#include <signal.h>

#include <array>
#include <optional>

#include "util/UniqueFd.h"

namespace qorctl {

inline constexpr std::array<int, 3> STOP_SIGNALS = {SIGINT, SIGTERM, SIGHUP};

// The exit status of a program that such a signal ended is this and the signal's number.
inline constexpr int SIGNAL_STATUS = 128;

// While there is an object, they are held back, but for those that whoever started this program has
// it ignore (nohup, a shell's background).
class CStopSignals {
public:
    CStopSignals();
    ~CStopSignals();
    CStopSignals(const CStopSignals&) = delete;  // stands for the state of one thread
    CStopSignals& operator=(const CStopSignals&) = delete;

    // Can be read when there is one.
    int Descriptor() const { return m_Fd.Get(); }
    // Nothing when there is none.
    std::optional<int> Take() const;

private:
    sigset_t m_Before = {};
    util::CUniqueFd m_Fd;
};

}  // namespace qorctl

#endif  // QORCTL_HOST_STOPSIGNALS_H
