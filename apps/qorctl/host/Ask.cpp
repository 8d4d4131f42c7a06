#include "host/Ask.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>

#include "host/ProgressLine.h"
#include "host/RequestProcess.h"
#include "host/StopSignals.h"

namespace qorctl {
namespace {

constexpr int REDRAWN_EVERY = 250;  // milliseconds

// The sooner of the two; -1 is never.
int Sooner(int one, int other) {
    return one < 0 || other < 0 ? std::max(one, other) : std::min(one, other);
}

}  // namespace

CAnswer Ask(const CPluginChoice& plugin, const CRequest& request, EProgress progress) {
    const CStopSignals signals;
    CRequestProcess process(plugin, request, progress);
    CProgressLine line;
    const bool isDrawn = progress == EProgress::SHOWN && line.CanDraw();
    while (process.Advance()) {
        if (isDrawn) {
            line.Draw(process.Progress());
        }
        std::array<pollfd, 2> entries = {pollfd{process.Descriptor(), POLLIN, 0},
                                         pollfd{signals.Descriptor(), POLLIN, 0}};
        poll(entries.data(), entries.size(),
             Sooner(process.Patience(), isDrawn ? REDRAWN_EVERY : -1));
        if (const std::optional<int> signal = signals.Take()) {
            process.End();
            line.Clear();
            _exit(SIGNAL_STATUS + *signal);
        }
    }
    return process.TakeAnswer();
}

}  // namespace qorctl
