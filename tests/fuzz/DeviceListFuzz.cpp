// The list of the host's PCI devices, held against supported ones.
#include <algorithm>

#include "Depth.h"
#include "Fuzz.h"
#include "Server.h"
#include "presence/CMSRAID_PCICard.h"

namespace {

using namespace qorfuzz;

constexpr const char* DEVICE_LIST = "/opt/tarmica/qor/kam/work/devices.tmp";
constexpr size_t SHORTEST_DEVICE = 17;

const std::list<DevicePCIID>& Supported() {
    static const std::list<DevicePCIID> devices = {
        {"VEN_1000", "DEV_005D"}, {"VEN_1000", "DEV_0"}, {"VEN_", "DEV_"}, {"1AED", "2001"}};
    return devices;
}

std::string IdentifierOf(std::string word) {
    for (char& c : word) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return "VEN_" + word.substr(8, 4) + "&DEV_" + word.substr(13, 4);
}

// Every word between white space, wherever it stands, that is long enough.
std::list<std::string> IdentifiersIn(std::string_view text) {
    static constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";
    std::list<std::string> identifiers;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of(WHITE_SPACE), text.size());
        if (end >= SHORTEST_DEVICE) {
            identifiers.push_back(IdentifierOf(std::string(text.substr(0, end))));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return identifiers;
}

size_t MatchesOf(const std::list<std::string>& identifiers) {
    size_t matches = 0;
    for (const std::string& identifier : identifiers) {
        for (const DevicePCIID& device : Supported()) {
            const bool fits = identifier.find(device.vendor) != std::string::npos &&
                              identifier.find(device.device) != std::string::npos;
            matches += fits ? 1 : 0;
        }
    }
    return matches;
}

void Fuzz(const std::string& text) {
    WriteServerFile(DEVICE_LIST, text);
    const CLeavesNothing check;
    const std::list<std::string> expected = IdentifiersIn(text);
    std::list<std::string> present;
    Demand(CMSRAID_PCICard::GetPresentPCIList(&present), "the list can be read");
    Demand(present == expected, "every word of 17 characters or more is a device");
    std::list<DevicePCIID> found = {{"of an earlier", "call"}};
    const bool result = CMSRAID_PCICard::IsPresentSupportDevice(Supported(), &found);
    Demand(found.size() == MatchesOf(expected), "every match is found once");
    Demand(result == !found.empty(), "present means found");
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {"02:00.0_1000:005d_0000_02", "02:00.0_1000:005d",  "02:00.0_1000:005",
            "81:00.0_1aed:2001_0000_00", "                  ", ""};
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
