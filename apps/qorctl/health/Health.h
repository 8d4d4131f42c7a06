// What is healthy and what is not: the rules of docs/health.md.
#ifndef QORCTL_HEALTH_HEALTH_H
#define QORCTL_HEALTH_HEALTH_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "health/Counters.h"
#include "health/PerformanceData.h"
#include "model/Gap.h"
#include "model/Inventory.h"
#include "model/ObjectNames.h"

namespace qorctl {

// The values are the exit statuses that monitoring servers know.
enum class EHealth { OK = 0, WARNING = 1, CRITICAL = 2, UNKNOWN = 3 };

// "OK", "WARNING", "CRITICAL", "UNKNOWN".
std::string_view HealthName(EHealth health);

// The worse of two: CRITICAL, UNKNOWN, WARNING, OK. Unknown goes before a warning, because what is
// not known may be worse than it.
EHealth Worse(EHealth one, EHealth other);

// Alarmed above the number.
struct CThresholds {
    long long warning = 0;
    long long critical = 0;
};

struct CHealthOptions {
    EHealth degraded = EHealth::CRITICAL;     // of a degraded logical drive
    CThresholds driveTemperature = {50, 60};  // Celsius
    CThresholds ssdTemperature = {70, 80};    // Celsius
    CThresholds ssdWear = {80, 100};          // per cent
};

struct CHealthFinding {
    EHealth health = EHealth::OK;
    std::string_view rule;                               // a stable word for programs
    std::string object;                                  // as ObjectName(); empty: the check itself
    std::string message;                                 // may hold bytes of the plug-in
    std::optional<CDriveIdentity> drive = std::nullopt;  // of a physical drive
};

// "controller 0 drive 252:3 (PD7, serial S123): FAILED"; the message alone without an object.
std::string FindingText(const CHealthFinding& finding, ENameForm form);

// A measurement that the tool did not report.
struct CNotReported {
    std::string object;
    std::string_view what;
    std::optional<CDriveIdentity> drive = std::nullopt;  // of a physical drive
};

struct CHealth {
    std::vector<CHealthFinding> findings;  // what is not OK
    std::vector<CNotReported> notReported;
    std::vector<std::string> notes;  // facts that change no severity

    // The worst finding's.
    EHealth Overall() const;
};

// The health of a state that stands in a report as `value` of the key `key`; OK for a key that
// tells no state, UNKNOWN for a value without a known meaning.
EHealth JudgeState(std::string_view key, const std::string& value);

// The values of such a key that have a meaning, in the order of docs/health.md; none for another
// key.
std::vector<std::string_view> KnownStates(std::string_view key);

// Everything but the counters.
CHealth JudgeHealth(const CInventory& inventory, const CHealthOptions& options);

// What an answer is known to leave out.
void JudgeGaps(const std::vector<CGap>& gaps, CHealth& health);

// The counters by themselves: any other than 0 alarms.
void JudgeCounters(const CInventory& inventory, CHealth& health);

// The counters by what is remembered of them, which takes their values of now (seconds since
// 1970); see CCounterHistory::Take().
void JudgeCountersByGrowth(const CInventory& inventory, CCounterHistory& state, int64_t now,
                           int64_t hold, CHealth& health);

// How much of the inventory becomes performance data: how many of each kind and state, or the
// temperatures, wear and counters of every device too.
enum class EPerformance { NONE, COUNTS, ALL };

// In a fixed order.
std::vector<CPerformanceValue> MeasureInventory(const CInventory& inventory,
                                                const CHealthOptions& options,
                                                EPerformance which = EPerformance::ALL);

}  // namespace qorctl

#endif  // QORCTL_HEALTH_HEALTH_H
