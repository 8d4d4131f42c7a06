#include "watch/Outbox.h"

#include <fmt/format.h>
#include <sys/random.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace qorctl {
namespace {

// Room is made for so many at once, so that it is seldom made.
constexpr size_t ROOM = COutbox::MOST_EVENTS / 10;

std::string RandomSource() {
    uint64_t number = 0;
    if (getrandom(&number, sizeof(number), GRND_NONBLOCK) != sizeof(number)) {
        // A kernel that has nothing random yet has a time that no other start of it had.
        number = static_cast<uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    }
    return fmt::format("{:016x}", number);
}

CJson LostEvent(uint64_t count, const CJson& host, int64_t wallTime) {
    CJson json = NewEvent(wallTime, "lost");
    json["severity"] = HealthName(EHealth::UNKNOWN);
    json["object"] = "server";
    json["summary"] = fmt::format(
        "{} events were not taken in time and are lost: look at the server itself", count);
    json["count"] = count;
    json["host"] = host;
    return json;
}

}  // namespace

COutbox::COutbox() : COutbox(RandomSource()) {}

COutbox::CEntry COutbox::MakeEntry(CJson event, uint64_t lost) {
    event["id"] = fmt::format("{}-{}", m_Source, m_Next);
    CountOn(m_Next);
    CEntry entry = {.line = JsonText(event, NO_INDENTATION), .lost = lost};
    m_Bytes += entry.line.size();
    return entry;
}

void COutbox::Add(CJson event, int64_t wallTime) {
    const CJson host = event.value("host", "");
    m_Entries.push_back(MakeEntry(std::move(event), 0));
    MakeRoom(host, wallTime);
}

void COutbox::MakeRoom(const CJson& host, int64_t wallTime) {
    if (m_Entries.size() <= MOST_EVENTS && m_Bytes <= MOST_BYTES) {
        return;
    }
    const auto first = m_Entries.begin() + (m_IsHeld ? 1 : 0);
    auto last = first;
    uint64_t lost = 0;
    // The newest one stays whatever its size.
    while (last + 1 < m_Entries.end() &&
           (static_cast<size_t>(m_Entries.end() - last) > MOST_EVENTS - ROOM ||
            m_Bytes > MOST_BYTES - MOST_BYTES / 10)) {
        CountOn(lost, std::max<uint64_t>(last->lost, 1));
        m_Bytes -= last->line.size();
        ++last;
    }
    if (lost > 0) {
        const auto place = m_Entries.erase(first, last);
        m_Entries.insert(place, MakeEntry(LostEvent(lost, host, wallTime), lost));
    }
}

void COutbox::Strike() {
    m_Bytes -= m_Entries.front().line.size();
    m_Entries.pop_front();
    m_IsHeld = false;
}

void COutbox::MarkKept() {
    for (CEntry& entry : m_Entries) {
        entry.isKept = true;
    }
}

// The events are lines of JSON already.
std::string COutbox::Members() const {
    std::string text =
        fmt::format("\"source\":{},\n\"next\":{},\n\"outbox\":[", CJson(m_Source).dump(), m_Next);
    const char* separator = "\n";
    for (const CEntry& entry : m_Entries) {
        text += separator + entry.line.substr(0, entry.line.size() - 1);
        separator = ",\n";
    }
    return text + "]";
}

COutbox COutbox::FromJson(const CJson& json) {
    COutbox outbox(json.at("source").get<std::string>());
    outbox.m_Next = CountOf(json.at("next"));
    for (const CJson& event : json.at("outbox")) {
        for (const char* name : {"id", "severity", "object", "summary"}) {
            static_cast<void>(event.at(name).get_ref<const std::string&>());
        }
        static_cast<void>(event.value("host", ""));
        CEntry entry = {.line = JsonText(event, NO_INDENTATION), .isKept = true};
        if (event.at("event") == "lost") {
            entry.lost = CountOf(event.at("count"));
        }
        outbox.m_Bytes += entry.line.size();
        outbox.m_Entries.push_back(std::move(entry));
    }
    return outbox;
}

}  // namespace qorctl
