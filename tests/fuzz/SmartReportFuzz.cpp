// "krzcli -pdinfo -pd[E:S] -aN": one drive with its SMART table. The same text is the report on the
// groups.
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "Server.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"

namespace {

// A table is read only of a drive of these two interface types.
bool HoldsTable(const std::string& report) {
    return report.find("### SMART Information ###") != std::string::npos &&
           report.find("Attribute") != std::string::npos &&
           (report.find("SATA") != std::string::npos || report.find("SAS") != std::string::npos);
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(PD_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorfuzz;
    const std::string report = InputText(data, size);
    LetToolPrint({{"", report}});
    CMSRAID_PDSMInfoGetter getter;
    FuzzGetter(getter, [&](ItemList& items) { return getter.GetInfo(0, 252, 3, items); },
               {.root = "Physical Drive Information", .mayBeOutOfRange = HoldsTable(report)});
    return 0;
}
