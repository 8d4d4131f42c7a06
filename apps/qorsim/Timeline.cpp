#include "Timeline.h"

#include <fmt/format.h>

#include <array>
#include <utility>
#include <vector>

#include "HostProfile.h"
#include "JsonText.h"
#include "ProfileReader.h"

namespace qorsim {
namespace {

using nlohmann::json;

constexpr long MAX_SECONDS = 4294967295;
// After each event the whole host is checked: so many values in all.
constexpr size_t MAX_CHECKED = 2000000;

// What is laid out when the server starts, or read before, and what no event can thus change.
constexpr std::array<const char*, 5> FIXED = {"/pciDevices", "/tool/missing", "/events", "/extends",
                                              "/patch"};

// Takes the events out of a profile.
json TakeEvents(json& profile) {
    json events = json::array();
    if (profile.is_object() && profile.contains("events")) {
        events = std::move(profile["events"]);
        profile.erase("events");
    }
    return events;
}

std::vector<CProfileReader> EventsOf(const json& events, std::string& problem) {
    return CProfileReader(events, "/events", problem).Elements();
}

json ValueAt(const json& document, const char* pointer) {
    const json::json_pointer place(pointer);
    return document.contains(place) ? document.at(place) : json();
}

// Reads an event and returns its second.
long ReadEvent(const CProfileReader& event) {
    event.DemandKeys({"after_s", "note", "patch"});
    event.TextOf("note", "");
    return event.Member("after_s").Number(0, MAX_SECONDS);
}

void CheckState(const CProfileReader& patch, const json& start, const json& state) {
    std::string problem;
    if (!ReadHostProfile(state, problem)) {
        patch.Reject("leaves no host: " + problem);
    }
    for (const char* pointer : FIXED) {
        if (ValueAt(state, pointer) != ValueAt(start, pointer)) {
            patch.Reject(fmt::format("changes {}, which stays as it is at the start", pointer));
        }
    }
}

}  // namespace

void CheckEvents(const json& profile, CPatcher& patcher, std::string& problem) {
    json start = profile;
    const json events = TakeEvents(start);
    json state = start;
    long previous = 0;
    size_t checked = 0;
    for (const CProfileReader& event : EventsOf(events, problem)) {
        const long second = ReadEvent(event);
        if (second < previous) {
            event.Reject(fmt::format("\"after_s\" is {}, before the event above it", second));
        }
        previous = second;
        const CProfileReader patch = event.Member("patch");
        patcher.Apply(patch, state);
        checked += CountValues(state);
        if (checked > MAX_CHECKED) {
            event.Reject("there are too many events for a host of this size");
        }
        if (problem.empty()) {
            CheckState(patch, start, state);
        }
        if (!problem.empty()) {
            return;
        }
    }
}

std::optional<json> ProfileAt(json profile, long seconds, std::string& problem) {
    problem.clear();
    const json events = TakeEvents(profile);
    CPatcher patcher;
    for (const CProfileReader& event : EventsOf(events, problem)) {
        if (ReadEvent(event) > seconds || !problem.empty()) {
            break;
        }
        patcher.Apply(event.Member("patch"), profile);
    }
    if (!problem.empty()) {
        return std::nullopt;
    }
    return profile;
}

}  // namespace qorsim
