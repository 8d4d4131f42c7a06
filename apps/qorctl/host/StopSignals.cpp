#include "host/StopSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

namespace qorctl {

CStopSignals::CStopSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : STOP_SIGNALS) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&set, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &set, &m_Before);
    m_Fd = util::CUniqueFd(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
}

CStopSignals::~CStopSignals() {
    pthread_sigmask(SIG_SETMASK, &m_Before, nullptr);
}

std::optional<int> CStopSignals::Take() const {
    signalfd_siginfo info = {};
    return read(m_Fd.Get(), &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info))
               ? std::make_optional(static_cast<int>(info.ssi_signo))
               : std::nullopt;
}

}  // namespace qorctl
