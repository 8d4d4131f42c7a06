// What an answer comes to: the findings on everything that it tells, and on what it leaves out.
#ifndef QORCTL_HEALTH_VERDICT_H
#define QORCTL_HEALTH_VERDICT_H

#include <functional>

#include "health/Health.h"
#include "host/Answer.h"
#include "model/InventoryFilter.h"

namespace qorctl {

struct CVerdict {
    EHealth status = EHealth::UNKNOWN;  // UNKNOWN, too, without a device to judge
    CHealth health;                     // the findings: the worst first, then as reported
};

// How error counters are judged: JudgeCounters(), or JudgeCountersByGrowth().
using CCountersJudge = std::function<void(const CInventory& inventory, CHealth& health)>;

CVerdict JudgeAnswer(const CAnswer& answer, const CHealthOptions& options = {},
                     const CCountersJudge& judgeCounters = JudgeCounters);

// Leaves of an answer, and of the verdict on it, what the filter asks for. A controller or an
// enclosure that is asked for and not reported is a gap of the answer, and UNKNOWN.
void Narrow(CAnswer& answer, CVerdict& verdict, const CInventoryFilter& filter);

}  // namespace qorctl

#endif  // QORCTL_HEALTH_VERDICT_H
