// The file in which `qorctl watch --exec` keeps what it saw and what is to be handed over.
#include <nlohmann/json.hpp>

#include "Depth.h"
#include "Fuzz.h"
#include "model/InventoryDiff.h"
#include "watch/WatchState.h"

namespace {

using namespace qorfuzz;
using qorctl::CJson;
using qorctl::COutbox;
using qorctl::CWatchState;

constexpr const char* HOST = "server";
constexpr int64_t NOW = 1'795'170'000;

// The first event as a program gets it.
void DemandEvent(const std::string& line) {
    Demand(line.find('\n') + 1 == line.size(), "an event is one line", line);
    const CJson event = CJson::parse(line, nullptr, false);
    Demand(event.is_object(), "an event is an object", line);
    for (const char* name : {"id", "severity", "object", "summary"}) {
        Demand(event.contains(name) && event[name].is_string(), "an event has its facts", line);
    }
    Demand(event.value("host", CJson("")).is_string(), "a host is a name", line);
}

void DemandWritten(const CWatchState& state) {
    const std::string text = state.Format();
    CWatchState again({}, HOST);
    Demand(again.Parse(text) == CWatchState::EParse::DONE, "what is written can be read", text);
    Demand(again.Format() == text, "what is written is what is read", text);
}

// A request without an answer, or with one that is empty, an hour later.
void DemandTaken(CWatchState state, bool isAnswered) {
    const size_t before = state.Outbox().Size();
    qorctl::CInventory nothing;
    qorctl::CTick tick;
    tick.wallTime = NOW;
    if (isAnswered) {
        tick.answer.outcome = qorctl::EOutcome::ANSWERED;
        tick.seen = &nothing;
        tick.isFirstAnswer = true;
        if (state.Past().inventory) {
            tick.changes = CompareInventories(*state.Past().inventory, nothing);
        }
    }
    state.Take(tick);
    Demand(state.Outbox().Size() >= before || before >= COutbox::MOST_EVENTS - 1,
           "no event is forgotten");
    Demand(state.Past().answered == isAnswered, "the answer is remembered");
    DemandWritten(state);
    while (!state.Outbox().IsEmpty()) {
        DemandEvent(state.Outbox().Head());
        state.Outbox().Strike();
    }
}

void Fuzz(const std::string& text) {
    CWatchState state({}, HOST);
    const std::string fresh = state.Format();
    if (state.Parse(text) != CWatchState::EParse::DONE) {
        Demand(state.Format() == fresh, "what cannot be read changes nothing");
        return;
    }
    DemandWritten(state);
    DemandTaken(state, false);
    DemandTaken(std::move(state), true);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
