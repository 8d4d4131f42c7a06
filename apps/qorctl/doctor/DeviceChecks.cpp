// The device list: there, younger than the machine's start, and true.
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "base/ServerPaths.h"
#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"
#include "host/PathTrouble.h"

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

bool IsBefore(const CDeviceWord& one, const CDeviceWord& other) {
    return one.place < other.place;
}

// The devices of `words` whose places `others` has not.
std::vector<CDeviceWord> OnlyIn(std::vector<CDeviceWord> words, std::vector<CDeviceWord> others) {
    std::sort(words.begin(), words.end(), IsBefore);
    std::sort(others.begin(), others.end(), IsBefore);
    std::vector<CDeviceWord> difference;
    std::set_difference(words.begin(), words.end(), others.begin(), others.end(),
                        std::back_inserter(difference), IsBefore);
    return difference;
}

bool IsSupported(const CDeviceWord& word, const CServerFacts& facts) {
    const auto matches = [&](const DevicePCIID& device) {
        return Matches(word.identifier, device);
    };
    const auto isIn = [&](const CSupportedList& list) {
        return std::any_of(list.devices.begin(), list.devices.end(), matches);
    };
    return isIn(facts.RaidList()) || isIn(facts.SsdList());
}

std::string Places(const std::vector<CDeviceWord>& words) {
    std::vector<std::string> shown;
    std::transform(words.begin(),
                   words.begin() + static_cast<long>(std::min(words.size(), MOST_PLACES)),
                   std::back_inserter(shown), [](const CDeviceWord& word) { return word.place; });
    return fmt::format("{} ({}{})", words.size(), fmt::join(shown, ", "),
                       words.size() > MOST_PLACES ? ", ..." : "");
}

CFinding JudgeDifference(const std::vector<CDeviceWord>& listed,
                         const std::vector<CDeviceWord>& live, const CServerFacts& facts) {
    const std::vector<CDeviceWord> unlisted = OnlyIn(live, listed);
    const std::vector<CDeviceWord> gone = OnlyIn(listed, live);
    const auto invisible =
        std::find_if(unlisted.begin(), unlisted.end(),
                     [&](const CDeviceWord& word) { return IsSupported(word, facts); });
    if (invisible != unlisted.end()) {
        return Fail("a supported device of the server is not in the list: " + invisible->place,
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
    const CPathTrouble trouble = ExaminePath(DEVICE_LIST_PATH, EPathKind::FILE, R_OK);
    if (trouble.trouble == ETrouble::MISSING) {
        return Warn(trouble.reason, "nothing: the next request makes it");
    }
    if (trouble.trouble != ETrouble::NONE) {
        return Fail(trouble.reason, trouble.remedy);
    }
    const auto words = ReadDeviceList();
    if (!words || words->empty()) {
        return Fail(fmt::format("{} holds no device", DEVICE_LIST_PATH), MakeAgain());
    }
    struct stat status = {};
    if (stat(DEVICE_LIST_PATH, &status) == 0 && status.st_mtime < BootTime()) {
        return Warn(fmt::format("{}, {} devices, is older than the start of the machine",
                                DEVICE_LIST_PATH, words->size()),
                    MakeAgain());
    }
    return Ok(fmt::format("{}, {} devices", DEVICE_LIST_PATH, words->size()));
}

CFinding ExamineLiveBus(CServerFacts& facts) {
    const auto listed = ReadDeviceList();
    if (!listed) {
        return NotExamined("there is no device list that can be read");
    }
    const auto live = ReadLiveBus();
    if (!live) {
        return Warn("the devices of /sys/bus/pci/devices cannot be read",
                    "mount sysfs; without it a device list cannot be made either");
    }
    return JudgeDifference(*listed, *live, facts);
}

}  // namespace qorctl::doctor
