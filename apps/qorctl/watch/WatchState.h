// What a watch that hands events over remembers from one run to the next, and how events come of
// what it sees. Nothing is forgotten when this is on disk before an event is handed over.
//
// The form, JSON; times are seconds since 1970:
//
//     {"format":"qorctl-watch-state","version":1,
//      "controller":null,"enclosure":null,
//      "answered":1795170000,"answers":true,"status":"OK","seen":{"controllers":[...], ...},
//      "flapping":[...],
//      "source":"9f86d081884c7d65","next":18,"outbox":[{"schema_version":2, ...}]}
//
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_WATCHSTATE_H
#define QORCTL_WATCH_WATCHSTATE_H

#include <cstdint>
#include <optional>
#include <string>

#include "watch/Flapping.h"
#include "watch/Outbox.h"
#include "watch/Watch.h"

namespace qorctl {

class CWatchState {
public:
    enum class EParse { DONE, CORRUPT, FOREIGN };

    // A state that has seen nothing, of a watch over a part of the server. `host` is its name.
    CWatchState(const CInventoryFilter& filter, std::string host)
        : m_Controller(filter.controller), m_Enclosure(filter.enclosure), m_Host(std::move(host)) {}

    // Takes what Format() returned. FOREIGN: the file is another program's, or a later version's.
    EParse Parse(const std::string& text);
    std::string Format() const;

    // Whether it is that of a watch over the same part of the server.
    bool IsFor(const CInventoryFilter& filter) const {
        return m_Controller == filter.controller && m_Enclosure == filter.enclosure;
    }

    // Makes events of what a request told, and remembers it.
    void Take(const CTick& tick);
    // Makes an event of what stood in this one's place and could not be read.
    void TellCorrupt(const std::string& message, int64_t wallTime);

    const CPast& Past() const { return m_Past; }
    COutbox& Outbox() { return m_Outbox; }
    const COutbox& Outbox() const { return m_Outbox; }

private:
    void Read(const CJson& json);
    void TakeAnswer(const CTick& tick);
    void TakeChanges(const CTick& tick);
    void TellFound(const CTick& tick);
    void TellHeld(const CFlapping::CHeld& held, bool begins, int64_t wallTime);
    void TakeChange(const std::string& key, CJson event, const CJson& before, const CJson& after,
                    int64_t wallTime);
    void Add(CJson event, int64_t wallTime);

    CNumber m_Controller;
    CNumber m_Enclosure;
    std::string m_Host;
    CPast m_Past;
    std::optional<int64_t> m_AnsweredAt;
    CFlapping m_Flapping;
    COutbox m_Outbox;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHSTATE_H
