// What the targets of the getters share: one run of a getter on a report, and what must hold then.
#ifndef QORFUZZ_REPORTFUZZ_H
#define QORFUZZ_REPORTFUZZ_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Server.h"
#include "getters/CMSRAID_InfoGetter.h"

namespace qorfuzz {

using CGetterRun = std::function<bool(ItemList&)>;

struct CReportRules {
    const char* root;               // name of the report's root items
    std::string_view retired = {};  // of titles that leave the list, see DemandItemTree()
    bool isOutOfRange = false;      // the report holds what std::out_of_range is documented for
};

// Lets `getter`, which is new, by `run` read `reports`: what the tool prints for the commands that
// the getter runs, in their order. Demands that
//   - it fails with the code "01" and the command where a report begins with "Error - ", or
//   - it fails with the code "04" and no command, or
//   - it throws std::out_of_range where the rules say so, or
//   - it gives items as `rules` say, which are fit for the document and the form,
// that only the last gives items, that no other command is run, and that nothing is left behind.
void FuzzGetter(CMSRAID_InfoGetter& getter, const CGetterRun& run,
                const std::vector<CToolReport>& reports, const CReportRules& rules);

// Whether the tool reports an error in the first line of `report`.
bool IsToolError(std::string_view report);

}  // namespace qorfuzz

#endif  // QORFUZZ_REPORTFUZZ_H
