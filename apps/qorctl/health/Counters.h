// What is remembered of the drives' error counters from check to check, so that growth alarms and
// a counter that stands still does not.
//
// The form, JSON; times are seconds since 1970:
//
//     {"format":"qorctl-health-state","version":1,
//      "drives":{"serial K4H1R1QC":{"seen":1795170000,"counters":{
//          "mediaErrors":{"baseline":0,"value":2,"grownAt":1795169940}, ...}}}}
#ifndef QORCTL_HEALTH_COUNTERS_H
#define QORCTL_HEALTH_COUNTERS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace qorctl {

inline constexpr int64_t SECONDS_PER_HOUR = 3600;
// A drive that was not seen for so long is forgotten.
inline constexpr int64_t FORGET_AFTER = 30L * 24 * SECONDS_PER_HOUR;

struct CCounterRecord {
    uint64_t baseline = 0;  // growth is counted from here
    uint64_t value = 0;     // the last one seen
    int64_t grownAt = 0;    // when it last grew; 0: not since the baseline
};

struct CDriveRecord {
    int64_t seen = 0;
    std::map<std::string, CCounterRecord> counters;  // by the counter's name
};

struct CCounterVerdict {
    bool firstSeen = false;
    uint64_t growth = 0;  // since the baseline; 0: no alarm
};

class CCounterHistory {
public:
    // Nothing when `text` is not what Format() writes.
    static std::optional<CCounterHistory> Parse(const std::string& text);

    // Takes a counter's value of now into the record of `drive`. Its growth stays in the verdict
    // until it has stood still for `hold` seconds; then what it reached becomes the baseline. A
    // lower value than before makes a new baseline at once.
    CCounterVerdict Take(const std::string& drive, const std::string& counter, uint64_t value,
                         int64_t now, int64_t hold);

    // Forgets the drives that were not seen for FORGET_AFTER.
    void ForgetOld(int64_t now);

    // Forgets the drives that Take() did not see at `now`.
    void ForgetUnseen(int64_t now);

    std::string Format() const;

    const std::map<std::string, CDriveRecord>& Drives() const { return m_Drives; }

private:
    std::map<std::string, CDriveRecord> m_Drives;
};

}  // namespace qorctl

#endif  // QORCTL_HEALTH_COUNTERS_H
