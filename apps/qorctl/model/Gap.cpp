#include "model/Gap.h"

#include <fmt/format.h>

#include <map>

#include "model/ObjectNames.h"

namespace qorctl {
namespace {

constexpr std::string_view REMEDY =
    "Run \"qorctl doctor\": is the disk of the result files full? Then ask the tool by hand:\n"
    "LD_LIBRARY_PATH=/opt/tarmica/krz/lib /opt/tarmica/krz/cli/krzcli -ldpdinfo -aAll";

template <typename TDrive>
std::map<CNumber, long long> CountByController(const std::vector<TDrive>& drives) {
    std::map<CNumber, long long> counts;
    for (const TDrive& drive : drives) {
        ++counts[drive.controller];
    }
    return counts;
}

void AddGap(std::vector<CGap>& gaps, const CController& controller, const CMeasure& stated,
            long long reported, std::string_view what) {
    if (stated && stated->number.value_or(0) > reported) {
        gaps.push_back(
            {.rule = "report-incomplete",
             .object = ObjectName(controller),
             .text = fmt::format("states {} {}, {} reported", stated->text, what, reported),
             .remedy = std::string(REMEDY)});
    }
}

}  // namespace

std::string GapText(const CGap& gap) {
    return gap.object.empty() ? gap.text : gap.object + ' ' + gap.text;
}

std::vector<CGap> FindMissingDrives(const CInventory& inventory) {
    std::map<CNumber, long long> logicalDrives = CountByController(inventory.logicalDrives);
    std::map<CNumber, long long> drives = CountByController(inventory.physicalDrives);
    std::vector<CGap> gaps;
    for (const CController& controller : inventory.controllers) {
        AddGap(gaps, controller, controller.logicalDriveCount, logicalDrives[controller.number],
               "logical drives");
        AddGap(gaps, controller, controller.physicalDriveCount, drives[controller.number],
               "drives");
    }
    return gaps;
}

}  // namespace qorctl
