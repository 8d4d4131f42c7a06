// "krzcli -pssdinfo -aAll": the PCIe SSDs.
#include "Depth.h"
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "getters/CMSRAID_PCIeSSDInfoGetter.h"

namespace {

using namespace qorfuzz;

void Fuzz(const std::string& report) {
    CMSRAID_PCIeSSDInfoGetter getter;
    FuzzGetter(getter, [&](ItemList& items) { return getter.GetInfo(items); },
               {{"krzcli -pssdinfo -aAll", report}}, {.root = "PCIe SSD Information"});
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(SSD_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
