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

CJson StartEvent(const CTick& tick);
CJson NoAnswerEvent(const CTick& tick);
CJson AnswersAgainEvent(const CTick& tick);
CJson ChangeEvent(const CTick& tick, const CChange& change);

}  // namespace qorctl

#endif  // QORCTL_WATCH_TICKEVENTS_H
