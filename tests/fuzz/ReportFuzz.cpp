#include "ReportFuzz.h"

#include <stdexcept>

#include "Fuzz.h"
#include "ItemProperties.h"
#include "Server.h"

namespace qorfuzz {
namespace {

constexpr unsigned int XML_CHECK = 0x03F00000;
constexpr unsigned int XML_OUT_OF_ORDER = 0x03100000;

void DemandItems(ItemList& items, const CReportRules& rules) {
    DemandItemTree(items, rules.root, rules.retired);
    const unsigned int xml = DemandXml(items);
    Demand((xml & XML_CHECK) != XML_OUT_OF_ORDER || !rules.retired.empty(),
           "the items are in the order of the tree", std::to_string(xml));
    DemandForm(items);
}

void DemandFailure(const CMSRAID_InfoGetter& getter, const std::string& codesBefore,
                   const ItemList& items) {
    const std::string& codes = getter.ErrCode();
    Demand(codes == "04" + codesBefore || codes == "01" + codesBefore, "a failure has its code",
           codes);
    Demand(codes.starts_with("04") == getter.ErrDetail().empty(), "the command is the detail",
           getter.ErrDetail());
    Demand(items.empty(), "a failure has no items");
}

}  // namespace

void FuzzGetter(CMSRAID_InfoGetter& getter, const CGetterRun& run, const CReportRules& rules) {
    const CLeavesNothing check;
    const std::string codesBefore = getter.ErrCode();
    CItemListOwner items;
    try {
        if (run(items)) {
            Demand(getter.ErrCode() == codesBefore, "success has no code", getter.ErrCode());
            DemandItems(items, rules);
        } else {
            DemandFailure(getter, codesBefore, items);
        }
    } catch (const std::out_of_range&) {
        Demand(rules.mayBeOutOfRange, "no exception but the documented ones comes out");
        Demand(items.empty(), "an exception leaves no items");
    }
}

bool IsToolError(std::string_view report) {
    return report.starts_with("Error - ");
}

}  // namespace qorfuzz
