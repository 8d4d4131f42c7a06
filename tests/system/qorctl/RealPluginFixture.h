// Fixture: qorctl with the plug-in that is shipped, and a RAID tool that plays a small controller.
#ifndef QORTEST_REALPLUGINFIXTURE_H
#define QORTEST_REALPLUGINFIXTURE_H

#include <string>
#include <vector>

#include "QorctlFixture.h"
#include "RaidHost.h"

namespace qortest {

class CRealPluginFixture : public CQorctlFixture {
protected:
    void SetUp() override {
        CQorctlFixture::SetUp();
        m_Environment = {{"LC_ALL", "C.UTF-8"},
                         {"PATH", "/usr/bin:/bin"},
                         {"QOR_TRACE", "none"},
                         {"QOR_PLUGIN", REAL_PLUGIN}};
    }

    CEnd RunOnWholeController(const std::vector<std::string>& arguments) const {
        PutRaidCard();
        CStandInTool tool;
        tool.Play("-v", {.out = VersionReport("7.0")});
        tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
        tool.Play("-ctrlinfo -a0", {.out = Golden("whole/ctrlinfo.txt")});
        tool.Play("-ldpdinfo -a0", {.out = Golden("whole/ldpdinfo.txt")});
        tool.Play("-ldpdinfo -a0", {.out = Golden("whole/ldpdinfo.txt")});
        tool.Play("-pdinfo -nosmart -a0", {.out = Golden("whole/pdinfo.txt")});
        return Run(arguments);
    }
};

}  // namespace qortest

#endif  // QORTEST_REALPLUGINFIXTURE_H
