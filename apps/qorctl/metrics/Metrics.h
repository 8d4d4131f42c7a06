// An answer as metrics: docs/metrics.md lists the families.
//
// What the tool did not say, or said in a way that is no number, has no series. An answer that is
// none has families of the collection, the programs and the server's health, and none of a device.
#ifndef QORCTL_METRICS_METRICS_H
#define QORCTL_METRICS_METRICS_H

#include <cstddef>
#include <optional>
#include <string>

#include "host/Answer.h"

namespace qorctl {

// What became of the drives' SMART requests; what they told is in the drives of the answer.
struct CSmartRequests {
    size_t failures = 0;
    size_t toolRuns = 0;
};

struct CCollection {
    CAnswer answer;
    std::optional<CSmartRequests> smart = {};  // none: not asked for
    double seconds = 0;                        // that it took
    double time = 0;                           // when it ended, in seconds since 1970
    std::string version = {};                  // of this program
};

std::string FormatMetrics(const CCollection& collection);

}  // namespace qorctl

#endif  // QORCTL_METRICS_METRICS_H
