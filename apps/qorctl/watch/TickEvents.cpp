#include "watch/TickEvents.h"

#include <algorithm>

#include "watch/WatchClock.h"

namespace qorctl {
namespace {

constexpr uint64_t LARGEST_COUNT = uint64_t{1} << 53U;

void AddProgress(CJson& json, const CChange& change) {
    if (change.progress && change.progress->number) {
        json["progress_percent"] = *change.progress->number;
    }
}

}  // namespace

CJson NewEvent(int64_t wallTime, const char* event) {
    CJson json = NewDocument("watch");
    json["time"] = FormatTime(wallTime);
    json["event"] = event;
    return json;
}

int64_t WholeNumber(const CJson& json) {
    return json.get_ref<const CJson::number_integer_t&>();
}

uint64_t CountOf(const CJson& json) {
    return std::min(json.get_ref<const CJson::number_unsigned_t&>(), LARGEST_COUNT);
}

void CountOn(uint64_t& count, uint64_t by) {
    count = std::min(count + by, LARGEST_COUNT);
}

CJson StartEvent(const CTick& tick) {
    const CInventory& inventory = tick.answer.inventory;
    CJson json = NewEvent(tick.wallTime, "start");
    json["status"] = HealthName(tick.status);
    json["controllers"] = inventory.controllers.size();
    json["logical_drives"] = inventory.logicalDrives.size();
    json["drives"] = inventory.physicalDrives.size();
    json["pcie_ssds"] = inventory.pcieSsds.size();
    return json;
}

CJson NoAnswerEvent(const CTick& tick) {
    CJson json = NewEvent(tick.wallTime, "no-answer");
    json["reason"] = tick.answer.reason;
    json["message"] = tick.answer.sentence;
    json["failed_command"] = tick.answer.command;
    return json;
}

CJson AnswersAgainEvent(const CTick& tick) {
    return NewEvent(tick.wallTime, "answers-again");
}

CJson ChangeEvent(const CTick& tick, const CChange& change) {
    if (change.kind == EChange::CHANGED) {
        CJson json = NewEvent(tick.wallTime, "change");
        json["object"] = change.object;
        AddDrive(json, change.drive);
        json["what"] = change.what;
        json["before"] = ValueOrNull(change.before);
        json["after"] = ValueOrNull(change.after);
        AddProgress(json, change);
        return json;
    }
    const bool appeared = change.kind == EChange::APPEARED;
    CJson json = NewEvent(tick.wallTime, appeared ? "appeared" : "gone");
    json["object"] = change.object;
    AddDrive(json, change.drive);
    json["state"] = ValueOrNull(appeared ? change.after : change.before);
    AddProgress(json, change);
    return json;
}

}  // namespace qorctl
