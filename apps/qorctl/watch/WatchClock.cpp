#include "watch/WatchClock.h"

#include <array>
#include <ctime>

namespace qorctl {

std::string FormatTime(int64_t wallTime) {
    const auto time = static_cast<time_t>(wallTime);
    std::tm parts = {};
    if (gmtime_r(&time, &parts) == nullptr) {
        return "?";  // a year beyond what an int holds
    }
    std::array<char, 64> text = {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

int64_t NextTime(int64_t start, int64_t interval, int64_t now) {
    return start + ((now - start) / interval + 1) * interval;
}

}  // namespace qorctl
