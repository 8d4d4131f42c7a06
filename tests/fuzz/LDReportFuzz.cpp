// "krzcli -ldpdinfo -aN": the RAID groups and logical drives, and the group of each drive.
#include "Depth.h"
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "Server.h"
#include "getters/CMSRAID_LDInfoGetter.h"

namespace {

using namespace qorfuzz;

constexpr const char* COMMAND = "krzcli -ldpdinfo -a0";

void DemandGroups(const std::string& report) {
    LetToolPrint({{COMMAND, report}});
    const CLeavesNothing check;
    CMSRAID_LDInfoGetter getter;
    std::map<long, std::string> groups;
    const bool result = getter.GetPDRGNo(0, groups);
    Demand(result != IsToolError(report), "only the tool's error is a failure");
    Demand(result || groups.empty(), "a failure has no groups");
    for (const auto& [drive, group] : groups) {
        Demand(!group.empty(), "a drive's group has a name", std::to_string(drive));
        Demand(report.find(group) != std::string::npos, "the name comes from the report", group);
    }
}

void Fuzz(const std::string& report) {
    CMSRAID_LDInfoGetter getter;
    FuzzGetter(getter, [&](ItemList& items) { return getter.GetInfo(0, items); },
               {{COMMAND, report}}, {.root = "Logical Drive Information"});
    DemandGroups(report);
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(LD_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
