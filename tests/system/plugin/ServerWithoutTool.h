// A server with a RAID card and four disks, but without the RAID tool and without a device list.
#ifndef QORTEST_SERVERWITHOUTTOOL_H
#define QORTEST_SERVERWITHOUTTOOL_H

#include "LoadedPluginFixture.h"

namespace qortest {

// Changes the server of CLoadedPluginFixture and puts a bus with nothing but the card over the
// kernel's; the latter is undone on the way out.
class CServerWithoutTool {
public:
    CServerWithoutTool();
    ~CServerWithoutTool();
    CServerWithoutTool(const CServerWithoutTool&) = delete;  // stands for the mount
    CServerWithoutTool& operator=(const CServerWithoutTool&) = delete;

    // Demands what is due there of GetRAIDInfo, and that the device list was made.
    static void ExpectAnswer(const CAnswer& answer);
};

}  // namespace qortest

#endif  // QORTEST_SERVERWITHOUTTOOL_H
