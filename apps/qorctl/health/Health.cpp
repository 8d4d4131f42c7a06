#include "health/Health.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <span>

#include "model/ObjectNames.h"

namespace qorctl {
namespace {

struct CHealthName {
    EHealth health;
    int rank;
    std::string_view name;
};

constexpr CHealthName HEALTH_NAMES[] = {
    {EHealth::OK, 0, "OK"},
    {EHealth::WARNING, 1, "WARNING"},
    {EHealth::CRITICAL, 3, "CRITICAL"},
    {EHealth::UNKNOWN, 2, "UNKNOWN"},
};

// A text that the tool prints for the state of something.
struct CState {
    std::string_view text;
    EHealth health;
    std::string_view rule;
    std::string_view label;  // in performance data
};

constexpr std::string_view UNKNOWN_LABEL = "unknown";

constexpr CState DRIVE_STATES[] = {
    {"ONLINE", EHealth::OK, "drive-state", "online"},
    {"HOT SPARE", EHealth::OK, "drive-state", "hot_spare"},
    {"Unconfig GOOD", EHealth::OK, "drive-state", "unassigned"},
    {"JBOD", EHealth::OK, "drive-state", "jbod"},
    {"REBUILD", EHealth::WARNING, "drive-rebuild", "rebuild"},
    {"COPYBACK", EHealth::WARNING, "drive-copyback", "copyback"},
    {"Foreign", EHealth::WARNING, "drive-foreign", "foreign"},
    {"Unconfig BAD", EHealth::WARNING, "drive-bad", "bad"},
    {"OFFLINE", EHealth::CRITICAL, "drive-offline", "offline"},
    {"FAILED", EHealth::CRITICAL, "drive-failed", "failed"},
};

constexpr CState LOGICAL_DRIVE_STATES[] = {
    {"Optimal", EHealth::OK, "logical-drive-state", "optimal"},
    {"Partially Degraded", EHealth::WARNING, "logical-drive-degraded", "degraded"},
    {"Degraded", EHealth::CRITICAL, "logical-drive-degraded", "degraded"},
    {"Offline", EHealth::CRITICAL, "logical-drive-offline", "offline"},
};

constexpr CState BATTERY_STATES[] = {
    {"Normal", EHealth::OK, "battery-status", ""},
    {"Optimal", EHealth::OK, "battery-status", ""},
    {"Charging", EHealth::WARNING, "battery-status", ""},
    {"Discharging", EHealth::WARNING, "battery-status", ""},
    {"Learning", EHealth::WARNING, "battery-status", ""},
    {"Degraded", EHealth::WARNING, "battery-status", ""},
    {"Failed", EHealth::WARNING, "battery-status", ""},
    {"Low", EHealth::WARNING, "battery-status", ""},
    {"Missing", EHealth::WARNING, "battery-status", ""},
    {"Replace", EHealth::WARNING, "battery-status", ""},
};

constexpr CState SSD_STATES[] = {
    {"Healthy", EHealth::OK, "ssd-status", ""},
    {"Warning", EHealth::WARNING, "ssd-status", ""},
    {"Critical", EHealth::CRITICAL, "ssd-status", ""},
    {"Failed", EHealth::CRITICAL, "ssd-status", ""},
};

// The keys of reports that tell a state.
struct CStateKey {
    std::string_view key;
    std::span<const CState> states;
};

constexpr CStateKey STATE_KEYS[] = {
    {"PD Status(Detail)", DRIVE_STATES},
    {"State", LOGICAL_DRIVE_STATES},
    {"BBU Status", BATTERY_STATES},
    {"Status", SSD_STATES},
};

// None for a key that tells no state.
std::span<const CState> StatesOf(std::string_view key) {
    const auto* row = std::find_if(std::begin(STATE_KEYS), std::end(STATE_KEYS),
                                   [key](const CStateKey& each) { return each.key == key; });
    return row == std::end(STATE_KEYS) ? std::span<const CState>() : row->states;
}

// What is judged and measured of an error counter.
struct CCounterRule {
    CCounter counter;
    std::string_view name;  // in the state file
    std::string_view rule;
    std::string_view label;  // in performance data
};

constexpr CCounterRule COUNTER_RULES[] = {
    {COUNTERS[0], "mediaErrors", "drive-media-errors", "media_errors"},
    {COUNTERS[1], "otherErrors", "drive-other-errors", "other_errors"},
    {COUNTERS[2], "predictiveFailures", "drive-predictive-failure", "predictive_failures"},
};
static_assert(std::size(COUNTER_RULES) == std::size(COUNTERS));

// The row of `text`; null when it has no known meaning.
const CState* FindState(const CText& text, std::span<const CState> states) {
    const auto found = std::find_if(states.begin(), states.end(), [&text](const CState& state) {
        return text && state.text == *text;
    });
    return found == states.end() ? nullptr : &*found;
}

class CJudge {
public:
    explicit CJudge(const CHealthOptions& options) : m_Options(options) {}

    void Judge(const CController& controller);
    void Judge(const CLogicalDrive& drive);
    void Judge(const CPhysicalDrive& drive);
    void Judge(const CPcieSsd& ssd);

    CHealth m_Health;

private:
    void Add(EHealth health, std::string_view rule, const CSubject& subject, std::string message);
    void JudgeState(const CText& text, std::span<const CState> states, const CSubject& subject,
                    const CMeasure& progress = std::nullopt);
    void JudgeBattery(const CController& controller);
    void JudgeStated(const CMeasure& stated, std::string_view what, const CController& controller);
    void AddUnreadable(std::string_view what, const CQuantity& value, const CSubject& subject);
    void JudgeMeasure(const CMeasure& measure, const CThresholds& limits, std::string_view rule,
                      std::string_view what, const CSubject& subject);

    const CHealthOptions& m_Options;
};

CHealthFinding MakeFinding(EHealth health, std::string_view rule, const CSubject& subject,
                           std::string message) {
    return {health, rule, subject.name, std::move(message), subject.drive};
}

std::string UnknownStateText(const CText& text) {
    return text ? "unknown state \"" + *text + '"' : "the tool reports no state";
}

void CJudge::Add(EHealth health, std::string_view rule, const CSubject& subject,
                 std::string message) {
    if (health != EHealth::OK) {
        m_Health.findings.push_back(MakeFinding(health, rule, subject, std::move(message)));
    }
}

void CJudge::JudgeState(const CText& text, std::span<const CState> states, const CSubject& subject,
                        const CMeasure& progress) {
    const CState* state = FindState(text, states);
    Add(state == nullptr ? EHealth::UNKNOWN : state->health,
        state == nullptr ? states.front().rule : state->rule, subject,
        (state == nullptr ? UnknownStateText(text) : *text) + ProgressText(progress));
}

void CJudge::AddUnreadable(std::string_view what, const CQuantity& value, const CSubject& subject) {
    Add(EHealth::UNKNOWN, "unreadable-value", subject,
        fmt::format("unreadable {} \"{}\"", what, value.text));
}

void CJudge::JudgeMeasure(const CMeasure& measure, const CThresholds& limits, std::string_view rule,
                          std::string_view what, const CSubject& subject) {
    if (!measure) {
        m_Health.notReported.push_back({subject.name, what, subject.drive});
        return;
    }
    if (!measure->number) {
        AddUnreadable(what, *measure, subject);
        return;
    }
    const bool critical = *measure->number > limits.critical;
    if (critical || *measure->number > limits.warning) {
        Add(critical ? EHealth::CRITICAL : EHealth::WARNING, rule, subject,
            fmt::format("{} {}, above {}", what, measure->text,
                        critical ? limits.critical : limits.warning));
    }
}

void CJudge::Judge(const CController& controller) {
    JudgeBattery(controller);
    JudgeStated(controller.logicalDriveCount, "logical drives", controller);
    JudgeStated(controller.physicalDriveCount, "drives", controller);
}

// Many controllers have no battery by design; one that is said to be there must have a status. What
// else is said of its presence than that is judged in its place.
void CJudge::JudgeBattery(const CController& controller) {
    const CText& presence = controller.batteryPresence;
    const CText& status = controller.batteryStatus;
    if (!status && (!presence || presence == "Absent")) {
        return;
    }
    JudgeState(!status && presence != "Present" ? presence : status, BATTERY_STATES,
               {.name = BatteryName(controller)});
}

// What cannot be read cannot be compared with what is reported either.
void CJudge::JudgeStated(const CMeasure& stated, std::string_view what,
                         const CController& controller) {
    if (stated && !stated->number) {
        AddUnreadable(fmt::format("number of {}", what), *stated, {.name = ObjectName(controller)});
    }
}

void CJudge::Judge(const CLogicalDrive& drive) {
    if (drive.state == "Degraded") {
        Add(m_Options.degraded, "logical-drive-degraded", SubjectOf(drive), *drive.state);
        return;
    }
    JudgeState(drive.state, LOGICAL_DRIVE_STATES, SubjectOf(drive));
}

void CJudge::Judge(const CPhysicalDrive& drive) {
    const CSubject subject = SubjectOf(drive);
    const bool holdsNoData = drive.role == EDriveRole::GLOBAL_SPARE ||
                             drive.role == EDriveRole::DEDICATED_SPARE ||
                             drive.role == EDriveRole::UNASSIGNED;
    if (drive.statusDetail == "OFFLINE" && holdsNoData) {
        Add(EHealth::WARNING, "drive-offline", subject, *drive.statusDetail);
    } else {
        JudgeState(drive.statusDetail, DRIVE_STATES, subject, drive.progress);
    }
    JudgeMeasure(drive.temperature, m_Options.driveTemperature, "drive-temperature", "temperature",
                 subject);
}

void CJudge::Judge(const CPcieSsd& ssd) {
    const CSubject subject = SubjectOf(ssd);
    JudgeState(ssd.status, SSD_STATES, subject);
    JudgeMeasure(ssd.temperature, m_Options.ssdTemperature, "ssd-temperature", "temperature",
                 subject);
    JudgeMeasure(ssd.used, m_Options.ssdWear, "ssd-wear", "wear", subject);
}

// "1 media error", "2 media errors"
std::string CountText(long long value, const CCounterRule& row) {
    const size_t length = row.counter.noun.size() - (value == 1 ? 1 : 0);
    return fmt::format("{} {}", value, row.counter.noun.substr(0, length));
}

// Calls `judge` for each counter that is a number; states the others.
using CCounterJudge =
    std::function<void(const CPhysicalDrive&, const CCounterRule&, long long value)>;

void ForEachCounter(const CInventory& inventory, CHealth& health, const CCounterJudge& judge) {
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        for (const CCounterRule& row : COUNTER_RULES) {
            const CMeasure& value = drive.*row.counter.value;
            if (!value) {
                health.notReported.push_back(
                    {ObjectName(drive), row.counter.noun, IdentityOf(drive)});
            } else if (!value->number) {
                health.findings.push_back(MakeFinding(
                    EHealth::UNKNOWN, "unreadable-value", SubjectOf(drive),
                    fmt::format("unreadable number of {} \"{}\"", row.counter.noun, value->text)));
            } else {
                judge(drive, row, *value->number);
            }
        }
    }
}

// The drives' keys in the state: by serial number, unless two drives claim the same one.
class CDriveKeys {
public:
    explicit CDriveKeys(const CInventory& inventory) {
        for (const CPhysicalDrive& drive : inventory.physicalDrives) {
            ++m_Count[drive.serial.value_or("")];
        }
    }

    std::string Of(const CPhysicalDrive& drive) const {
        const bool isKnown = drive.serial && m_Count.at(*drive.serial) == 1;
        return MonitoringText(isKnown ? "serial " + *drive.serial : DriveKey(drive));
    }

private:
    std::map<std::string, size_t> m_Count;
};

using CValues = std::vector<CPerformanceValue>;

void AddCount(CValues& values, std::string label, size_t count) {
    values.push_back({std::move(label), static_cast<long long>(count), "", "", ""});
}

template <typename DEVICE>
void AddStateCounts(CValues& values, const std::string& head, const std::vector<DEVICE>& devices,
                    CText DEVICE::*state, std::span<const CState> states) {
    std::map<std::string_view, size_t> counts;
    for (const DEVICE& device : devices) {
        const CState* found = FindState(device.*state, states);
        ++counts[found == nullptr ? UNKNOWN_LABEL : found->label];
    }
    std::string_view previous;
    for (const CState& row : states) {
        if (row.label != previous) {
            AddCount(values, fmt::format("{}_{}", head, row.label), counts[row.label]);
        }
        previous = row.label;
    }
    AddCount(values, fmt::format("{}_{}", head, UNKNOWN_LABEL), counts[UNKNOWN_LABEL]);
}

void AddMeasure(CValues& values, std::string label, const CMeasure& measure,
                const std::string& unit, const CThresholds& limits) {
    if (measure && measure->number) {
        values.push_back({std::move(label), *measure->number, unit, std::to_string(limits.warning),
                          std::to_string(limits.critical)});
    }
}

void AddDrive(CValues& values, const CPhysicalDrive& drive, const CHealthOptions& options) {
    const std::string head =
        fmt::format("c{}_PD{}_", NumberText(drive.controller), NumberText(drive.number));
    AddMeasure(values, head + "temperature", drive.temperature, "", options.driveTemperature);
    for (const CCounterRule& row : COUNTER_RULES) {
        const CMeasure& value = drive.*row.counter.value;
        if (value && value->number) {
            values.push_back({head + std::string(row.label), *value->number, "c", "", ""});
        }
    }
}

void AddSsd(CValues& values, const CPcieSsd& ssd, const CHealthOptions& options) {
    const std::string head = fmt::format("ssd{}_", NumberText(ssd.bus));
    AddMeasure(values, head + "temperature", ssd.temperature, "", options.ssdTemperature);
    AddMeasure(values, head + "wear", ssd.used, "%", options.ssdWear);
}

void AddCounts(CValues& values, const CInventory& inventory) {
    AddCount(values, "controllers", inventory.controllers.size());
    AddCount(values, "logical_drives", inventory.logicalDrives.size());
    AddCount(values, "drives", inventory.physicalDrives.size());
    AddCount(values, "pcie_ssds", inventory.pcieSsds.size());
    AddStateCounts(values, "logical_drives", inventory.logicalDrives, &CLogicalDrive::state,
                   LOGICAL_DRIVE_STATES);
    AddStateCounts(values, "drives", inventory.physicalDrives, &CPhysicalDrive::statusDetail,
                   DRIVE_STATES);
}

const CHealthName& NameRow(EHealth health) {
    return *std::find_if(std::begin(HEALTH_NAMES), std::end(HEALTH_NAMES),
                         [health](const CHealthName& row) { return row.health == health; });
}

}  // namespace

std::string_view HealthName(EHealth health) {
    return NameRow(health).name;
}

EHealth Worse(EHealth one, EHealth other) {
    return NameRow(one).rank >= NameRow(other).rank ? one : other;
}

std::string FindingText(const CHealthFinding& finding, ENameForm form) {
    const std::string name = CSubject{finding.object, finding.drive}.Name(form);
    return name.empty() ? finding.message : name + ": " + finding.message;
}

EHealth CHealth::Overall() const {
    EHealth worst = EHealth::OK;
    for (const CHealthFinding& finding : findings) {
        worst = Worse(worst, finding.health);
    }
    return worst;
}

EHealth JudgeState(std::string_view key, const std::string& value) {
    const std::span<const CState> states = StatesOf(key);
    if (states.empty()) {
        return EHealth::OK;
    }
    const CState* state = FindState(value, states);
    return state == nullptr ? EHealth::UNKNOWN : state->health;
}

std::vector<std::string_view> KnownStates(std::string_view key) {
    std::vector<std::string_view> texts;
    for (const CState& state : StatesOf(key)) {
        texts.push_back(state.text);
    }
    return texts;
}

CHealth JudgeHealth(const CInventory& inventory, const CHealthOptions& options) {
    CJudge judge(options);
    for (const CController& controller : inventory.controllers) {
        judge.Judge(controller);
    }
    for (const CLogicalDrive& drive : inventory.logicalDrives) {
        judge.Judge(drive);
    }
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        judge.Judge(drive);
    }
    for (const CPcieSsd& ssd : inventory.pcieSsds) {
        judge.Judge(ssd);
    }
    return std::move(judge.m_Health);
}

void JudgeGaps(const std::vector<CGap>& gaps, CHealth& health) {
    for (const CGap& gap : gaps) {
        health.findings.push_back({EHealth::UNKNOWN, gap.rule, gap.object, gap.text});
    }
}

void JudgeCounters(const CInventory& inventory, CHealth& health) {
    ForEachCounter(
        inventory, health,
        [&](const CPhysicalDrive& drive, const CCounterRule& row, long long value) {
            if (value != 0) {
                health.findings.push_back(MakeFinding(EHealth::WARNING, row.rule, SubjectOf(drive),
                                                      CountText(value, row)));
            }
        });
}

void JudgeCountersByGrowth(const CInventory& inventory, CCounterHistory& state, int64_t now,
                           int64_t hold, CHealth& health) {
    const CDriveKeys keys(inventory);
    ForEachCounter(inventory, health,
                   [&](const CPhysicalDrive& drive, const CCounterRule& row, long long value) {
                       const CCounterVerdict verdict =
                           state.Take(keys.Of(drive), std::string(row.name),
                                      static_cast<uint64_t>(value), now, hold);
                       if (verdict.growth != 0) {
                           health.findings.push_back(MakeFinding(
                               EHealth::WARNING, row.rule, SubjectOf(drive),
                               fmt::format("{}, {} more", CountText(value, row), verdict.growth)));
                       } else if (verdict.firstSeen && value != 0) {
                           health.notes.push_back(fmt::format(
                               "{}: first seen with {}", ObjectName(drive), CountText(value, row)));
                       }
                   });
}

std::vector<CPerformanceValue> MeasureInventory(const CInventory& inventory,
                                                const CHealthOptions& options, EPerformance which) {
    CValues values;
    if (which != EPerformance::NONE) {
        AddCounts(values, inventory);
    }
    if (which != EPerformance::ALL) {
        return values;
    }
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        AddDrive(values, drive, options);
    }
    for (const CPcieSsd& ssd : inventory.pcieSsds) {
        AddSsd(values, ssd, options);
    }
    return values;
}

}  // namespace qorctl
