#include "ReportFuzz.h"

#include <algorithm>
#include <stdexcept>

#include "Depth.h"
#include "Fuzz.h"
#include "ItemProperties.h"

namespace qorfuzz {
namespace {

constexpr unsigned int XML_CHECK = 0x03F00000;
constexpr unsigned int XML_OUT_OF_ORDER = 0x03100000;

void DemandItems(ItemList& items, const CReportRules& rules) {
    DemandItemTree(items, rules.root, rules.retired);
    if (Depth() == EDepth::QUICK) {
        return;
    }
    const unsigned int xml = DemandXml(items);
    Demand((xml & XML_CHECK) != XML_OUT_OF_ORDER || !rules.retired.empty(),
           "the items are in the order of the tree", std::to_string(xml));
    DemandForm(items);
}

// The command whose report is the tool's error; null where there is none.
const CToolReport* ToolErrorIn(const std::vector<CToolReport>& reports) {
    const auto error = std::find_if(reports.begin(), reports.end(), [](const CToolReport& report) {
        return IsToolError(report.text);
    });
    return error != reports.end() ? &*error : nullptr;
}

void DemandFailure(const CMSRAID_InfoGetter& getter, const CToolReport* toolError) {
    Demand(getter.ErrCode() == (toolError != nullptr ? "01" : "04"), "a failure has its code",
           getter.ErrCode());
    Demand(getter.ErrDetail() == (toolError != nullptr ? toolError->command : ""),
           "the detail of the tool's error is its command", getter.ErrDetail());
}

void DemandSuccess(const CMSRAID_InfoGetter& getter, ItemList& items, const CReportRules& rules) {
    Demand(getter.ErrCode().empty(), "success has no code", getter.ErrCode());
    Demand(!rules.isOutOfRange, "what is out of range is no success");
    DemandItems(items, rules);
}

}  // namespace

void FuzzGetter(CMSRAID_InfoGetter& getter, const CGetterRun& run,
                const std::vector<CToolReport>& reports, const CReportRules& rules) {
    LetToolPrint(reports);
    const CToolReport* const toolError = ToolErrorIn(reports);
    const CLeavesNothing check;
    CItemListOwner items;
    try {
        if (run(items)) {
            Demand(toolError == nullptr, "the tool's error is a failure");
            DemandSuccess(getter, items, rules);
            return;
        }
        DemandFailure(getter, toolError);
    } catch (const std::out_of_range&) {
        Demand(toolError == nullptr, "the tool's error is a failure");
        Demand(rules.isOutOfRange, "no exception but the documented ones comes out");
    }
    Demand(items.empty(), "only success has items");
}

bool IsToolError(std::string_view report) {
    return report.starts_with("Error - ");
}

}  // namespace qorfuzz
