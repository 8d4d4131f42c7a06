// "krzcli -pdinfo -aN": the physical drives. The same text is the report on their groups: it may
// hold the lines of both.
#include "Depth.h"
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "getters/CMSRAID_PDInfoGetter.h"

namespace {

using namespace qorfuzz;

// The title of the SMART section leaves the list. A line that begins with "PD", but not as a
// drive's header does, ends the section all the same; the key/value lines behind it name that
// title.
void Fuzz(const std::string& report) {
    CMSRAID_PDInfoGetter getter;
    FuzzGetter(getter, [&](ItemList& items) { return getter.GetInfo(0, items); },
               {{"krzcli -ldpdinfo -a0", report}, {"krzcli -pdinfo -a0", report}},
               {.root = "Physical Drive Information", .retired = "### SMART Information ###"});
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(PD_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
