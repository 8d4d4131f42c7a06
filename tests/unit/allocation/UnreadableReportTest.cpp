// A report that can be read to its middle only: what it said so far is not handed over.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "ReadFault.h"
#include "StandInTool.h"
#include "getters/CMSRAID_CtrlInfoGetter.h"
#include "getters/CMSRAID_LDInfoGetter.h"

using namespace qortest;

namespace {

// More than is read at once.
const std::string FILLER(100'000, '\n');
constexpr long FIRST_PART = 1;

class UnreadableReport : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }
};

TEST_F(UnreadableReport, CountsNoController) {
    CStandInTool tool;
    const std::string report = "RAID Controller : 0\nRAID Controller : 1\n" + FILLER;
    CMSRAID_CtrlInfoGetter getter;
    char count = 4;
    tool.Play("-ctrlinfo -aAll", {.out = report});
    FailReadAfter(FIRST_PART);
    EXPECT_FALSE(getter.GetCtrlNum(&count));
    DisarmReadFault();
    EXPECT_EQ(count, 0);
    EXPECT_EQ(getter.ErrCode(), "03");
    tool.Play("-ctrlinfo -aAll", {.out = report});
    EXPECT_TRUE(getter.GetCtrlNum(&count));
    EXPECT_EQ(count, 2);
}

TEST_F(UnreadableReport, LeavesTheMapAsItWas) {
    CStandInTool tool;
    const std::string report = "RG No. : RG0\n>>PD1 (x)\n>>PD2 (x)\n" + FILLER;
    CMSRAID_LDInfoGetter getter;
    std::map<long, std::string> groups = {{1, "before"}};
    tool.Play("-ldpdinfo -a0", {.out = report});
    FailReadAfter(FIRST_PART);
    EXPECT_FALSE(getter.GetPDRGNo(0, groups));
    DisarmReadFault();
    EXPECT_EQ(groups, (std::map<long, std::string>{{1, "before"}}));
    EXPECT_EQ(getter.ErrCode(), "03");
    tool.Play("-ldpdinfo -a0", {.out = report});
    EXPECT_TRUE(getter.GetPDRGNo(0, groups));
    EXPECT_EQ(groups, (std::map<long, std::string>{{1, "before"}, {2, "RG0"}}));
}

}  // namespace
