#include "GetterRun.h"

#include <fstream>

#include "getters/CMSRAID_CtrlInfoGetter.h"
#include "getters/CMSRAID_LDInfoGetter.h"
#include "getters/CMSRAID_PCIeSSDInfoGetter.h"
#include "getters/CMSRAID_PDInfoGetter.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"

namespace {

template <class Getter>
class CProbe : public Getter {
public:
    bool Run(const char* path, ItemList& out) {
        std::ifstream stream(path);
        const bool result = this->Parse(stream, "");
        out.splice(out.end(), this->m_RaidList);
        return result;
    }
};

template <class Getter>
bool RunGetter(const char* path, ItemList& out) {
    return CProbe<Getter>().Run(path, out);
}

}  // namespace

bool QorBenchParse(qorbench::EReport kind, const char* path, ItemList* out) {
    using Run = bool (*)(const char*, ItemList&);
    static constexpr Run RUNS[] = {RunGetter<CMSRAID_CtrlInfoGetter>,
                                   RunGetter<CMSRAID_LDInfoGetter>, RunGetter<CMSRAID_PDInfoGetter>,
                                   RunGetter<CMSRAID_PDSMInfoGetter>,
                                   RunGetter<CMSRAID_PCIeSSDInfoGetter>};
    return RUNS[static_cast<std::size_t>(kind)](path, *out);
}

void QorBenchFree(ItemList* items) {
    DeleteItems(*items);
}
