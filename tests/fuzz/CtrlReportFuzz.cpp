// "krzcli -ctrlinfo -aN": the report on one controller, and the number of controllers in it.
#include <algorithm>

#include "Depth.h"
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "Server.h"
#include "getters/CMSRAID_CtrlInfoGetter.h"

namespace {

using namespace qorfuzz;

bool IsHeader(std::string_view line) {
    return line.starts_with("RAID Controller") && line.find(':') != std::string_view::npos;
}

// The count is one signed byte.
void DemandCount(const std::string& report) {
    LetToolPrint({{"krzcli -ctrlinfo -aAll", report}});
    const CLeavesNothing check;
    CMSRAID_CtrlInfoGetter getter;
    char count = 1;
    const bool result = getter.GetCtrlNum(&count);
    const std::vector<std::string_view> lines = LinesOf(report);
    const auto headers = std::count_if(lines.begin(), lines.end(), IsHeader);
    const bool noController = report.starts_with("Error - No RAID controller is found.");
    Demand(result == (!IsToolError(report) || noController), "only the tool's error is a failure");
    Demand(count == (IsToolError(report) ? 0 : static_cast<char>(headers & 0xFF)),
           "every header is counted", std::to_string(count));
}

void Fuzz(const std::string& report) {
    CMSRAID_CtrlInfoGetter getter;
    FuzzGetter(getter, [&](ItemList& items) { return getter.GetInfo(0, items); },
               {{"krzcli -ctrlinfo -a0", report}}, {.root = "Controller Information"});
    DemandCount(report);
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(CTRL_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
