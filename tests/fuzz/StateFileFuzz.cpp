// The file in which `qorctl check` keeps the error counters.
#include <sys/stat.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "Depth.h"
#include "Fuzz.h"
#include "health/Counters.h"
#include "health/StateFile.h"

namespace {

using namespace qorfuzz;
using qorctl::CCounterHistory;
using CJson = nlohmann::json;

constexpr const char* DIRECTORY = "/opt/tarmica/state";
constexpr const char* PATH = "/opt/tarmica/state/health.json";
constexpr const char* DRIVE = "serial K4H1R1QC";
constexpr const char* COUNTER = "mediaErrors";
constexpr int64_t NOW = 1'795'170'000;
constexpr int64_t HOLD = 24 * qorctl::SECONDS_PER_HOUR;

bool IsCount(const CJson& object, const char* name, uint64_t most) {
    return object.contains(name) && object[name].is_number_unsigned() &&
           object[name].get<uint64_t>() <= most;
}

bool IsCounter(const CJson& json) {
    return json.is_object() && IsCount(json, "value", UINT64_MAX) &&
           IsCount(json, "baseline", json["value"].get<uint64_t>()) &&
           IsCount(json, "grownAt", INT64_MAX);
}

bool IsDrive(const CJson& json) {
    return json.is_object() && IsCount(json, "seen", INT64_MAX) && json.contains("counters") &&
           json["counters"].is_object() &&
           std::all_of(json["counters"].begin(), json["counters"].end(), IsCounter);
}

bool IsState(const CJson& json) {
    return json.is_object() && json.value("format", CJson()) == "qorctl-health-state" &&
           json.value("version", CJson()) == 1 && json.contains("drives") &&
           json["drives"].is_object() &&
           std::all_of(json["drives"].begin(), json["drives"].end(), IsDrive);
}

// Nested as no state is, where the text is JSON: in an array, or more than five objects deep.
bool IsNestedOtherwise(const std::string& text) {
    bool inString = false;
    int depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (inString && text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            inString = !inString;
        } else if (!inString) {
            depth += text[i] == '{' ? 1 : text[i] == '}' ? -1 : 0;
            if (text[i] == '[' || depth > 5) {
                return true;
            }
        }
    }
    return false;
}

bool IsSame(const CCounterHistory& one, const CCounterHistory& other) {
    return one.Format() == other.Format() && one.Drives().size() == other.Drives().size();
}

void DemandWritten(const CCounterHistory& state) {
    const auto again = CCounterHistory::Parse(state.Format());
    Demand(again.has_value(), "what is written can be read");
    Demand(IsSame(*again, state), "what is written is what is read");
}

// A drive that is seen with `value`.
void DemandTaken(CCounterHistory state, uint64_t value) {
    const size_t drives = state.Drives().size() + (state.Drives().contains(DRIVE) ? 0 : 1);
    const qorctl::CCounterVerdict verdict = state.Take(DRIVE, COUNTER, value, NOW, HOLD);
    Demand(state.Drives().size() == drives, "no other drive is forgotten");
    const qorctl::CDriveRecord& drive = state.Drives().at(DRIVE);
    const qorctl::CCounterRecord& counter = drive.counters.at(COUNTER);
    Demand(drive.seen == NOW, "a drive was seen now");
    Demand(counter.value == value, "the value is that of now");
    Demand(counter.baseline <= value && verdict.growth == value - counter.baseline,
           "growth is counted from the baseline");
    Demand(counter.grownAt <= NOW, "nothing grows in the future");
    Demand(!verdict.firstSeen || verdict.growth == 0, "the first value is no growth");
    Demand(state.Take(DRIVE, COUNTER, value, NOW, HOLD).growth == verdict.growth,
           "the same value says the same");
    DemandWritten(state);
}

void DemandForgotten(CCounterHistory state) {
    const auto all = state.Drives();
    state.ForgetOld(NOW);
    for (const auto& [name, drive] : all) {
        const bool isOld = drive.seen <= NOW - qorctl::FORGET_AFTER;
        Demand(state.Drives().contains(name) != isOld, "old drives are forgotten", name);
    }
}

// Through the file, as the check does it.
void DemandFile(const std::string& text) {
    mkdir(DIRECTORY, S_IRWXU);
    qorctl::CStateFile file(PATH);
    Demand(file.Lock() == qorctl::CStateFile::ELock::TAKEN, "the file can be locked",
           file.Problem());
    if (!file.Write(text)) {
        Demand(text.size() > qorctl::CStateFile::MAX_SIZE, "a text can be written", file.Problem());
        return;
    }
    std::string again;
    Demand(file.Read(again) == qorctl::CStateFile::ERead::DONE, "the file can be read",
           file.Problem());
    Demand(again == text, "the file holds what was written");
}

void Fuzz(const std::string& text) {
    const auto state = CCounterHistory::Parse(text);
    const bool isState = IsState(CJson::parse(text, nullptr, false)) && !IsNestedOtherwise(text);
    Demand(state.has_value() == isState, "a state file, and nothing else, is read");
    if (Depth() == EDepth::WHOLE) {
        DemandFile(text);
    }
    if (!state) {
        return;
    }
    DemandWritten(*state);
    for (const uint64_t value : {uint64_t{0}, uint64_t{2}, uint64_t{INT64_MAX}, UINT64_MAX}) {
        DemandTaken(*state, value);
    }
    DemandForgotten(*state);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
