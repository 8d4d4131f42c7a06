// What the targets of the getters share: one run of a getter on a report, and what must hold then.
#ifndef QORFUZZ_REPORTFUZZ_H
#define QORFUZZ_REPORTFUZZ_H

#include <functional>
#include <string>

#include "getters/CMSRAID_InfoGetter.h"

namespace qorfuzz {

using CGetterRun = std::function<bool(ItemList&)>;

struct CReportRules {
    const char* root;               // name of the report's root items
    std::string_view retired = {};  // of titles that leave the list, see DemandItemTree()
    bool mayBeOutOfRange = false;   // std::out_of_range is allowed for this report
};

// Lets `getter`, by `run`, read what the tool prints at present. Demands that
//   - it gives items as `rules` say, which are fit for the document and the form, or
//   - it fails with the code "04" (or "01" where the report begins with "Error - ") and no items,
//   or
//   - it throws std::out_of_range, where the rules allow it, and gives no items,
// and that nothing is left behind.
void FuzzGetter(CMSRAID_InfoGetter& getter, const CGetterRun& run, const CReportRules& rules);

// Whether the tool reports an error in the first line of `report`.
bool IsToolError(std::string_view report);

}  // namespace qorfuzz

#endif  // QORFUZZ_REPORTFUZZ_H
