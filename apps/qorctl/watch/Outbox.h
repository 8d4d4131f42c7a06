// Events that are to be handed over, in order, until each one was taken.
//
// Each has an id that no other event of any outbox has: what was handed over twice, since something
// ended in between, is told by it.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_OUTBOX_H
#define QORCTL_WATCH_OUTBOX_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "format/JsonDocument.h"
#include "watch/TickEvents.h"

namespace qorctl {

class COutbox {
public:
    // Beyond either, the oldest events become one that says how many they were.
    static constexpr size_t MOST_EVENTS = 10000;
    static constexpr size_t MOST_BYTES = 8U << 20U;

    // An outbox whose events have ids of their own.
    COutbox();

    // Puts the event at the end, with its id, and makes room at `wallTime`, seconds since 1970,
    // with an event of the same "host".
    void Add(CJson event, int64_t wallTime);

    bool IsEmpty() const { return m_Entries.empty(); }
    size_t Size() const { return m_Entries.size(); }
    // Whether the first one was in the file when it was last written: only then may it be handed
    // over, since after an end it must come again.
    bool IsHeadKept() const { return !IsEmpty() && m_Entries.front().isKept; }
    // The first event as one line of JSON, its end included. Not for an empty outbox.
    const std::string& Head() const { return m_Entries.front().line; }
    // The first one is being handed over, or no more: it stays while others are condensed.
    void Hold(bool isHeld) { m_IsHeld = isHeld; }
    // The first one was taken.
    void Strike();
    // All of them are in the file.
    void MarkKept();

    // For the state file: the members "source", "next" and "outbox" of an object.
    std::string Members() const;
    // Throws nlohmann::json::exception for an object without such members.
    static COutbox FromJson(const CJson& json);

private:
    struct CEntry {
        std::string line;
        uint64_t lost = 0;  // how many it stands for
        bool isKept = false;
    };

    explicit COutbox(std::string source) : m_Source(std::move(source)) {}

    CEntry MakeEntry(CJson event, uint64_t lost);
    void MakeRoom(const CJson& host, int64_t wallTime);

    std::string m_Source;
    uint64_t m_Next = 1;
    std::deque<CEntry> m_Entries;
    size_t m_Bytes = 0;
    bool m_IsHeld = false;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_OUTBOX_H
