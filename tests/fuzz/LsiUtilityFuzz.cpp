// "MegaCli -AdpAllInfo -aALL" and "storcli /call show": whether disks are attached.
#include <climits>
#include <cstdlib>

#include "Depth.h"
#include "Fuzz.h"
#include "Server.h"
#include "presence/CMSRAID_MegaStorCLI.h"

namespace {

using namespace qorfuzz;

constexpr const char* MEGACLI_COMMAND =
    R"("/opt/tarmica/qor/provider/RAID/tool/MegaCli" -AdpAllInfo -aALL)";
constexpr const char* STORCLI_COMMAND =
    R"("/opt/tarmica/qor/provider/RAID/tool/storcli" /call show)";
constexpr std::string_view MEGACLI_KEY = "  Disks           :";
constexpr std::string_view STORCLI_KEY = "Physical Drives =";

long AddLimited(long sum, long number) {
    if (number > 0) {
        return sum > LONG_MAX - number ? LONG_MAX : sum + number;
    }
    return sum < LONG_MIN - number ? LONG_MIN : sum + number;
}

// The sum of the counts, limited at every step.
long DisksIn(const std::string& report, std::string_view key) {
    long sum = 0;
    for (const std::string_view line : LinesOf(report)) {
        if (line.find(key) != std::string_view::npos) {
            const std::string behind(line.substr(key.size()));
            sum = AddLimited(sum, std::strtol(behind.c_str(), nullptr, 10));
        }
    }
    return sum;
}

void DemandPresence(const DevicePCIID& controller, const CToolReport& report,
                    std::string_view key) {
    LetUtilityPrint(report);
    const CLeavesNothing check;
    const bool present = CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({controller});
    Demand(present == (DisksIn(report.text, key) > 0),
           "disks are present where more than 0 are counted");
}

void Fuzz(const std::string& report) {
    DemandPresence({"VEN_8086", "DEV_0000"}, {MEGACLI_COMMAND, report}, MEGACLI_KEY);
    DemandPresence({"VEN_1000", "DEV_005D"}, {STORCLI_COMMAND, report}, STORCLI_KEY);
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {"  Disks           : 9",
            "  Disks           : -9",
            "Physical Drives = 9",
            "Physical Drives = 9223372036854775807",
            "Physical Drives = -9223372036854775808",
            "x  Disks           : 1",
            "Physical Drives =",
            ""};
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
