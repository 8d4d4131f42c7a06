// "krzcli -pssdinfo -aAll": the PCIe SSDs.
#include "Fuzz.h"
#include "ReportFuzz.h"
#include "ReportVocabulary.h"
#include "getters/CMSRAID_PCIeSSDInfoGetter.h"

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return WithCommonLines(SSD_LINES);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorfuzz;
    const std::string report = InputText(data, size);
    CMSRAID_PCIeSSDInfoGetter getter;
    FuzzGetter(getter, [&](ItemList& items) { return getter.GetInfo(items); },
               {{"krzcli -pssdinfo -aAll", report}}, {.root = "PCIe SSD Information"});
    return 0;
}
