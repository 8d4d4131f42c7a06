#include "watch/Flapping.h"

#include <algorithm>
#include <utility>

namespace qorctl {
namespace {

void KeepRecent(std::vector<int64_t>& times, int64_t now) {
    std::erase_if(times, [now](int64_t time) {
        return time <= now - CFlapping::WINDOW || time > now;  // the clock was set back
    });
    if (times.size() > CFlapping::MOST_CHANGES) {
        times.erase(times.begin());
    }
}

void Hold(CFlapping::CHeld& held, const CJson& event, const CJson& before, const CJson& after) {
    if (held.count == 0) {
        held.before = before;
    }
    CountOn(held.count);
    held.after = after;
    held.last = event;
}

// What the last one of held changes is looked at for.
void DemandEvent(const CJson& event) {
    for (const char* name : {"event", "object", "severity"}) {
        static_cast<void>(event.at(name).get_ref<const std::string&>());
    }
    static_cast<void>(event.value("what", ""));
}

}  // namespace

CFlapping::CVerdict CFlapping::Take(const std::string& key, const CJson& event, const CJson& before,
                                    const CJson& after, int64_t now) {
    if (m_Records.size() >= MOST_THINGS && !m_Records.contains(key)) {
        return {};
    }
    CRecord& record = m_Records[key];
    KeepRecent(record.times, now);
    record.times.push_back(now);
    if (!record.isDamped && record.times.size() <= MOST_CHANGES) {
        return {};
    }
    Hold(record.held, event, before, after);
    if (record.isDamped) {
        return {.isTold = false};
    }
    record.isDamped = true;
    record.toldAt = now;
    return {.isTold = false, .held = std::exchange(record.held, CHeld())};
}

std::vector<CFlapping::CHeld> CFlapping::Due(int64_t now) {
    std::vector<CHeld> due;
    for (auto each = m_Records.begin(); each != m_Records.end();) {
        CRecord& record = each->second;
        KeepRecent(record.times, now);
        record.toldAt = std::clamp(record.toldAt, int64_t{0}, now);
        const bool isSettled = record.times.empty();
        if (record.held.count > 0 && (isSettled || now - record.toldAt >= TELL_AFTER)) {
            record.held.isSettled = isSettled;
            due.push_back(std::exchange(record.held, CHeld()));
            record.toldAt = now;
        }
        each = isSettled ? m_Records.erase(each) : std::next(each);
    }
    return due;
}

CJson CFlapping::ToJson() const {
    CJson json = CJson::array();
    for (const auto& [key, record] : m_Records) {
        json.push_back({{"key", key},
                        {"times", record.times},
                        {"damped", record.isDamped},
                        {"told", record.toldAt},
                        {"count", record.held.count},
                        {"before", record.held.before},
                        {"after", record.held.after},
                        {"last", record.held.last}});
    }
    return json;
}

CFlapping CFlapping::FromJson(const CJson& json) {
    CFlapping flapping;
    for (const CJson& each : json) {
        CRecord record;
        record.times.reserve(each.at("times").size());
        for (const CJson& time : each.at("times")) {
            record.times.push_back(WholeNumber(time));
        }
        record.isDamped = each.at("damped").get<bool>();
        record.toldAt = WholeNumber(each.at("told"));
        record.held = {.before = each.at("before"),
                       .after = each.at("after"),
                       .last = each.at("last"),
                       .count = CountOf(each.at("count"))};
        if (record.held.count > 0) {
            DemandEvent(record.held.last);
        }
        flapping.m_Records[each.at("key").get<std::string>()] = std::move(record);
    }
    return flapping;
}

}  // namespace qorctl
