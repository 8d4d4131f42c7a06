// The device list: there, younger than the machine's start, and true.
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "base/ServerPaths.h"
#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"

namespace qorctl::doctor {
namespace {

constexpr size_t MOST_PLACES = 5;

std::string MakeAgain() {
    return fmt::format("delete {}: the next request makes it again", DEVICE_LIST_PATH);
}

// Seconds since the epoch; 0 when it is not known.
long BootTime() {
    std::ifstream file("/proc/stat");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("btime ")) {
            return std::strtol(line.c_str() + 6, nullptr, 10);
        }
    }
    return 0;
}

std::vector<std::string> SortedPlaces(const std::vector<CDeviceWord>& words) {
    std::vector<std::string> places;
    std::transform(words.begin(), words.end(), std::back_inserter(places),
                   [](const CDeviceWord& word) { return word.place; });
    std::sort(places.begin(), places.end());
    return places;
}

// The places of `words` that `others` has not.
std::vector<std::string> OnlyIn(const std::vector<CDeviceWord>& words,
                                const std::vector<CDeviceWord>& others) {
    const std::vector<std::string> left = SortedPlaces(words);
    const std::vector<std::string> right = SortedPlaces(others);
    std::vector<std::string> difference;
    std::set_difference(left.begin(), left.end(), right.begin(), right.end(),
                        std::back_inserter(difference));
    return difference;
}

bool IsSupported(const std::string& place, const CServerFacts& facts) {
    const std::string identifier = ReadDeviceWords(place).at(0).identifier;
    const auto matches = [&](const CSupportedDevice& device) {
        return Matches(device, identifier);
    };
    const auto isIn = [&](const CSupportedList& list) {
        return std::any_of(list.devices.begin(), list.devices.end(), matches);
    };
    return isIn(facts.RaidList()) || isIn(facts.SsdList());
}

std::string Places(const std::vector<std::string>& places) {
    const auto shown = places.begin() + static_cast<long>(std::min(places.size(), MOST_PLACES));
    return fmt::format("{} ({}{})", places.size(), fmt::join(places.begin(), shown, ", "),
                       places.size() > MOST_PLACES ? ", ..." : "");
}

CFinding JudgeDifference(const std::vector<CDeviceWord>& listed,
                         const std::vector<CDeviceWord>& live, const CServerFacts& facts) {
    const std::vector<std::string> unlisted = OnlyIn(live, listed);
    const std::vector<std::string> gone = OnlyIn(listed, live);
    const auto invisible =
        std::find_if(unlisted.begin(), unlisted.end(),
                     [&](const std::string& place) { return IsSupported(place, facts); });
    if (invisible != unlisted.end()) {
        return Fail("a supported device of the server is not in the list: " + *invisible,
                    MakeAgain());
    }
    if (unlisted.empty() && gone.empty()) {
        return Ok(fmt::format("{} devices, all of them in the list", live.size()));
    }
    return Warn(fmt::format("devices that are only in the list: {}; only on the bus: {}",
                            Places(gone), Places(unlisted)),
                MakeAgain());
}

}  // namespace

CFinding ExamineDeviceList(CServerFacts&) {
    struct stat status = {};
    if (stat(DEVICE_LIST_PATH, &status) != 0) {
        return Warn(fmt::format("{} is missing", DEVICE_LIST_PATH),
                    "nothing: the next request makes it");
    }
    const auto words = S_ISREG(status.st_mode) ? ReadDeviceList() : std::nullopt;
    if (!words || words->empty()) {
        return Fail(fmt::format("{} holds no device, or may not be read", DEVICE_LIST_PATH),
                    MakeAgain());
    }
    if (status.st_mtime < BootTime()) {
        return Warn(fmt::format("{}, {} devices, is older than the start of the machine",
                                DEVICE_LIST_PATH, words->size()),
                    MakeAgain());
    }
    return Ok(fmt::format("{}, {} devices", DEVICE_LIST_PATH, words->size()));
}

CFinding ExamineLiveBus(CServerFacts& facts) {
    const auto listed = ReadDeviceList();
    if (!listed) {
        return NotExamined("there is no device list");
    }
    const auto live = ReadLiveBus();
    if (!live) {
        return Warn("the devices of /sys/bus/pci/devices cannot be read",
                    "mount sysfs; without it a device list cannot be made either");
    }
    return JudgeDifference(*listed, *live, facts);
}

}  // namespace qorctl::doctor
