// What a request told, as events: the objects that `watch --format json` writes.
//
// Thread rule: any thread at any time.
#ifndef QORCTL_WATCH_TICKEVENTS_H
#define QORCTL_WATCH_TICKEVENTS_H

#include <cstdint>
#include <nlohmann/json.hpp>

#include "format/JsonDocument.h"
#include "watch/Watch.h"

namespace qorctl {

// An event of that name with nothing but its head.
CJson NewEvent(int64_t wallTime, const char* event);

// A whole number of a state file. Throws nlohmann::json::exception for anything else.
int64_t WholeNumber(const CJson& json);
// A count of a state file, at most what every reader of JSON has exactly. Throws
// nlohmann::json::exception for anything else.
uint64_t CountOf(const CJson& json);
// Counts on to that and no further: only a file that somebody made gets there.
void CountOn(uint64_t& count, uint64_t by = 1);

CJson StartEvent(const CTick& tick);
CJson NoAnswerEvent(const CTick& tick);
CJson AnswersAgainEvent(const CTick& tick);
CJson ChangeEvent(const CTick& tick, const CChange& change);

}  // namespace qorctl

#endif  // QORCTL_WATCH_TICKEVENTS_H
