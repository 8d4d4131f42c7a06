// Fixture: the built plug-in, loaded with dlopen into a private server with one supported RAID
// controller, its trace going to a file.
#ifndef QORTEST_LOADEDPLUGINFIXTURE_H
#define QORTEST_LOADEDPLUGINFIXTURE_H

#include <dlfcn.h>

#include <list>
#include <string>

#include "PrivateServerFixture.h"
#include "StandInTool.h"
#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace qortest {

inline constexpr const char* TRACE_FILE = "/opt/tarmica/trace.log";

// One loaded copy of the plug-in with one object; unloads on the way out.
class CLoadedPlugin {
public:
    // `visibility` is RTLD_LOCAL, as hosts should have it, or RTLD_GLOBAL.
    explicit CLoadedPlugin(const char* path = QOR_PLUGIN_PATH, int visibility = RTLD_LOCAL);
    ~CLoadedPlugin();
    CLoadedPlugin(const CLoadedPlugin&) = delete;
    CLoadedPlugin& operator=(const CLoadedPlugin&) = delete;

    CMngSrv_QorLibIF* operator->() const { return m_Object; }

private:
    void* Function(const char* name) const;

    void* m_Library;
    CMngSrv_QorLibIF* m_Object;
};

struct CAnswer {
    int result = -1;
    std::list<CItemDisp*> items;
    std::string errorCode;
    std::string noticeCode;
    std::string errorDetail;
};

class CLoadedPluginFixture : public CPrivateServerFixture {
protected:
    void SetUp() override;

    // GetRAIDInfo of slot 4; the test frees the items with the plug-in's FreeItemList.
    static CAnswer GetRAIDInfo(const CLoadedPlugin& plugin);
    // The same with slot 8, and with slot 6 for the drive in slot 5 of enclosure 252 at controller
    // 0.
    static CAnswer GetStorageInfo(const CLoadedPlugin& plugin);
    static CAnswer GetPDInfo(const CLoadedPlugin& plugin);
    // The reports of one small controller, in the order in which the plug-in asks for them.
    static void PlayOneController(CStandInTool& tool);
    // True if the trace file has a line that holds `text`.
    static bool Traced(const std::string& text);
};

}  // namespace qortest

#endif  // QORTEST_LOADEDPLUGINFIXTURE_H
