#include "health/Counters.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace qorctl {
namespace {

using CJson = nlohmann::json;

constexpr const char* FORMAT = "qorctl-health-state";
constexpr int VERSION = 1;

// Stops the parser at what no state has, which would take a hundred times its size in memory.
class CStateShape {
public:
    static bool null() { return true; }
    static bool boolean(bool) { return true; }
    static bool number_integer(CJson::number_integer_t) { return true; }
    static bool number_unsigned(CJson::number_unsigned_t) { return true; }
    static bool number_float(CJson::number_float_t, const std::string&) { return true; }
    static bool string(const std::string&) { return true; }
    static bool binary(const CJson::binary_t&) { return true; }
    static bool key(const std::string&) { return true; }
    static bool start_array(size_t) { return false; }
    static bool end_array() { return false; }
    static bool parse_error(size_t, const std::string&, const CJson::exception&) { return false; }
    bool start_object(size_t) { return ++m_Depth <= DEEPEST; }
    bool end_object() { return m_Depth-- > 0; }

private:
    static constexpr int DEEPEST = 5;  // a counter of the counters of a drive of the drives

    int m_Depth = 0;
};

// The member's value when it is a whole number that is not negative; nothing otherwise.
std::optional<uint64_t> Number(const CJson& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number_unsigned()) {
        return std::nullopt;
    }
    return found->get<uint64_t>();
}

std::optional<int64_t> Time(const CJson& object, const char* name) {
    const std::optional<uint64_t> number = Number(object, name);
    if (!number || *number > static_cast<uint64_t>(INT64_MAX)) {
        return std::nullopt;
    }
    return static_cast<int64_t>(*number);
}

// The member when it is an object; null otherwise.
const CJson* Object(const CJson& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_object() ? &*found : nullptr;
}

std::optional<CCounterRecord> ReadCounter(const CJson& json) {
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto baseline = Number(json, "baseline");
    const auto value = Number(json, "value");
    const auto grownAt = Time(json, "grownAt");
    if (!baseline || !value || !grownAt || *baseline > *value) {
        return std::nullopt;
    }
    return CCounterRecord{*baseline, *value, *grownAt};
}

std::optional<CDriveRecord> ReadDrive(const CJson& json) {
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto seen = Time(json, "seen");
    const CJson* counters = Object(json, "counters");
    if (!seen || counters == nullptr) {
        return std::nullopt;
    }
    CDriveRecord drive{.seen = *seen, .counters = {}};
    for (const auto& [name, each] : counters->items()) {
        const std::optional<CCounterRecord> counter = ReadCounter(each);
        if (!counter) {
            return std::nullopt;
        }
        drive.counters[name] = *counter;
    }
    return drive;
}

bool IsOurForm(const CJson& json) {
    return json.is_object() && json.value("format", CJson()) == FORMAT &&
           json.value("version", CJson()) == VERSION;
}

CJson FormatCounter(const CCounterRecord& counter) {
    return {{"baseline", counter.baseline}, {"value", counter.value}, {"grownAt", counter.grownAt}};
}

}  // namespace

std::optional<CCounterHistory> CCounterHistory::Parse(const std::string& text) {
    CStateShape shape;
    if (!CJson::sax_parse(text, &shape)) {
        return std::nullopt;
    }
    const CJson json = CJson::parse(text, nullptr, false);
    const CJson* drives = IsOurForm(json) ? Object(json, "drives") : nullptr;
    if (drives == nullptr) {
        return std::nullopt;
    }
    CCounterHistory state;
    for (const auto& [key, each] : drives->items()) {
        std::optional<CDriveRecord> drive = ReadDrive(each);
        if (!drive) {
            return std::nullopt;
        }
        state.m_Drives[key] = std::move(*drive);
    }
    return state;
}

CCounterVerdict CCounterHistory::Take(const std::string& drive, const std::string& counter,
                                      uint64_t value, int64_t now, int64_t hold) {
    CDriveRecord& known = m_Drives[drive];
    known.seen = now;
    const auto [found, isNew] = known.counters.try_emplace(counter);
    CCounterRecord& record = found->second;
    if (isNew || value < record.value) {
        record = {.baseline = value, .value = value, .grownAt = 0};
        return {.firstSeen = isNew, .growth = 0};
    }
    // A clock that was set back must not keep an alarm alive for years.
    record.grownAt = std::min(record.grownAt, now);
    if (record.grownAt != 0 && now - record.grownAt >= hold) {
        record.baseline = record.value;
        record.grownAt = 0;
    }
    if (value > record.value) {
        record.value = value;
        record.grownAt = now;
    }
    return {.firstSeen = false, .growth = record.value - record.baseline};
}

void CCounterHistory::ForgetOld(int64_t now) {
    std::erase_if(m_Drives,
                  [now](const auto& drive) { return now - drive.second.seen >= FORGET_AFTER; });
}

void CCounterHistory::ForgetUnseen(int64_t now) {
    std::erase_if(m_Drives, [now](const auto& drive) { return drive.second.seen != now; });
}

std::string CCounterHistory::Format() const {
    CJson drives = CJson::object();
    for (const auto& [key, drive] : m_Drives) {
        CJson counters = CJson::object();
        for (const auto& [name, counter] : drive.counters) {
            counters[name] = FormatCounter(counter);
        }
        drives[key] = {{"seen", drive.seen}, {"counters", std::move(counters)}};
    }
    const CJson json = {{"format", FORMAT}, {"version", VERSION}, {"drives", std::move(drives)}};
    return json.dump(1) + '\n';
}

}  // namespace qorctl
