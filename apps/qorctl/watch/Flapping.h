// What changes again and again, and is told seldom.
//
// The first changes of a thing are told as they come. More than MOST_CHANGES within WINDOW seconds
// are flapping: that is told at once, with the change that was one too many; from then on changes
// are counted, and told together each hour and when there was none for WINDOW seconds. Then each
// one is told again.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_FLAPPING_H
#define QORCTL_WATCH_FLAPPING_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "format/JsonDocument.h"
#include "watch/TickEvents.h"

namespace qorctl {

class CFlapping {
public:
    static constexpr size_t MOST_CHANGES = 5;
    static constexpr int64_t WINDOW = 600;       // seconds
    static constexpr int64_t TELL_AFTER = 3600;  // seconds
    // What changes beyond these is told each time: what is remembered must fit into its file.
    static constexpr size_t MOST_THINGS = 5000;

    // Changes that were held back, or the first one of them.
    // The end of a nested value needs memory. NOLINTNEXTLINE(bugprone-exception-escape)
    struct CHeld {
        CJson before;  // the value before the first one
        CJson after;   // the value after the last one
        CJson last;    // the last one as an event
        uint64_t count = 0;
        bool isSettled = false;  // each one is told again
    };

    // What becomes of a change.
    struct CVerdict {
        bool isTold = true;                        // by itself
        std::optional<CHeld> held = std::nullopt;  // to be told: the flapping begins
    };

    // Takes a change of the thing `key` from `before` to `after`, told as `event`, at `now`,
    // seconds since 1970. A clock that was set back does no harm.
    CVerdict Take(const std::string& key, const CJson& event, const CJson& before,
                  const CJson& after, int64_t now);

    // What is to be told by now.
    std::vector<CHeld> Due(int64_t now);

    // For the state file.
    CJson ToJson() const;
    // Throws nlohmann::json::exception for anything else than what ToJson() returns.
    static CFlapping FromJson(const CJson& json);

private:
    // Likewise, of what it holds. NOLINTNEXTLINE(bugprone-exception-escape)
    struct CRecord {
        std::vector<int64_t> times;  // of the last changes, MOST_CHANGES + 1 at most
        bool isDamped = false;
        int64_t toldAt = 0;
        CHeld held = {};
    };

    std::map<std::string, CRecord> m_Records;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_FLAPPING_H
