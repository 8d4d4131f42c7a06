#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "RunnerDouble.h"
#include "cli/ExecForeignModule.h"
#include "plugin/ComLib.h"
#include "plugin/MngSrv_QorLibIF.h"

using namespace qortest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* RAID_AND_SSD = "02:00.0_1000:005d_0000_02\n03:00.0_1aed:2001_0000_00\n";
constexpr const char* SSD_ONLY = "03:00.0_1aed:2001_0000_00\n";
constexpr const char* DRIVE =
    "PD3(LD0)\n### General Information ###\nInterface Type : SAS\n\n"
    "### SMART Information ###\nTemperature : 31C\n";

const CRun TIMED_OUT = {EXEC_TIMEOUT, 255, "half a rep"};

CRun Answered(const std::string& report) {
    return {EXEC_OK, 0, report};
}

// Drives and storage are asked for through the plug-in object, as a host does.
class DriveAndStorageTimeout : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        RunnerDouble() = CRunnerDouble();
        WriteFile("/opt/tarmica/krz/cli/krzcli", "");
    }
    void TearDown() override {
        EXPECT_THAT(RunnerDouble().runs.size(), 0U) << "runs that never came";
        CPrivateServerFixture::TearDown();
    }

    static void PutHost(const char* devices) {
        PutRaidCard();
        WriteFile(DEVICE_LIST, devices);
    }
    int Drive() {
        return m_Object.GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail);
    }
    int Storage() {
        return m_Object.GetStorageInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail);
    }
    std::string Texts() const {
        return "'" + m_ErrorCode + "' '" + m_NoticeCode + "' '" + m_ErrorDetail + "'";
    }
    static std::vector<std::string> Commands() {
        std::vector<std::string> commands = RunnerDouble().commands;
        for (std::string& command : commands) {
            command.erase(0, std::string("/opt/tarmica/krz/cli/krzcli ").size());
        }
        return commands;
    }
    static std::vector<std::string> Failures() {
        return FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE);
    }

    CMngSrv_QorLibIF m_Object;
    CItems m_Items;
    std::string m_ErrorCode;
    std::string m_NoticeCode;
    std::string m_ErrorDetail;
};

// --- one drive ---

TEST_F(DriveAndStorageTimeout, DriveThatIsNotAnsweredInTimeFails) {
    AddItem(m_Items, "", "before", "");
    RunnerDouble().runs = {Answered(GroupReport(0)), TIMED_OUT};
    EXPECT_EQ(Drive(), 0);
    EXPECT_EQ(Texts(), "'05' '' 'krzcli -pdinfo -pd[2:3] -a1'");
    EXPECT_EQ(m_Items.Text(), "");
    EXPECT_THAT(Commands(), ElementsAre("-ldpdinfo -a1", "-pdinfo -pd[2:3] -a1"));
    EXPECT_THAT(Failures(), ElementsAre("krzcli command timeout.(krzcli -pdinfo -pd[2:3] -a1)",
                                        "Failed to execute krzcli command ret=00000004.",
                                        "CMSRAID_PDInfoGetter::GetInfo is FAILED (ret=00000000)."));
}

TEST_F(DriveAndStorageTimeout, GroupLookUpOfADriveThatTimesOutFailsTheDrive) {
    AddItem(m_Items, "", "before", "");
    RunnerDouble().runs = {TIMED_OUT};
    EXPECT_EQ(Drive(), 0);
    EXPECT_EQ(Texts(), "'05' '' 'krzcli -ldpdinfo -a1'");
    EXPECT_EQ(m_Items.Text(), "");
    EXPECT_THAT(Commands(), ElementsAre("-ldpdinfo -a1"));
    EXPECT_THAT(Failures(), ElementsAre("krzcli command timeout.(krzcli -ldpdinfo -a1)",
                                        "Failed to execute krzcli command 00000004.",
                                        "CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (ret=00000000).",
                                        "CMSRAID_PDInfoGetter::GetInfo is FAILED (ret=00000000)."));
}

TEST_F(DriveAndStorageTimeout, ShortFormOfADriveTellsTheTimeOutToo) {
    RunnerDouble().runs = {Answered(GroupReport(0)), TIMED_OUT};
    EXPECT_EQ(m_Object.GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode), 0);
    EXPECT_EQ(Texts(), "'05' '' ''");
}

TEST_F(DriveAndStorageTimeout, NextDriveIsAnsweredAsIfNothingHadBeen) {
    RunnerDouble().runs = {TIMED_OUT, Answered(GroupReport(0)), Answered(DRIVE)};
    EXPECT_EQ(Drive(), 0);
    EXPECT_EQ(Drive(), 1);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_FALSE(m_Items.empty());
}

// --- storage ---

TEST_F(DriveAndStorageTimeout, RAIDCommandThatTimesOutEndsTheStorageRequest) {
    PutHost(RAID_AND_SSD);
    RunnerDouble().runs = {Answered(VersionReport("7.0")), Answered(ControllerList(1)),
                           Answered(ControllerReport(0)), TIMED_OUT};
    EXPECT_EQ(Storage(), 0);
    EXPECT_EQ(Texts(), "'05' '' 'krzcli -ldpdinfo -a0'");
    EXPECT_EQ(m_Items.Text(), "");
    EXPECT_THAT(Commands(), ElementsAre("-v", "-ctrlinfo -aAll", "-ctrlinfo -a0", "-ldpdinfo -a0"));
}

TEST_F(DriveAndStorageTimeout, SSDsThatAreNotAnsweredInTimeFailTheWholeRequest) {
    PutHost(RAID_AND_SSD);
    const CRun version = Answered(VersionReport("7.0"));
    const CRun group = Answered(GroupReport(0));
    RunnerDouble().runs = {version,
                           Answered(ControllerList(1)),
                           Answered(ControllerReport(0)),
                           group,
                           group,
                           Answered(DriveReport()),
                           version,
                           TIMED_OUT};
    EXPECT_EQ(Storage(), 0);
    EXPECT_EQ(Texts(), "'05' '' 'krzcli -pssdinfo -aAll'");
    EXPECT_EQ(m_Items.Text(), "") << "the RAID information goes as well";
    EXPECT_THAT(Failures(),
                ElementsAre("krzcli command timeout.(krzcli -pssdinfo -aAll)",
                            "Failed to execute krzcli command ret=00000004.",
                            "CMSRAID_PCIeSSDInfoGetter::GetInfo is FAILED (ret=00000000)."));
}

TEST_F(DriveAndStorageTimeout, VersionThatTimesOutLeavesTheSSDsOut) {
    PutHost(SSD_ONLY);
    RunnerDouble().runs = {TIMED_OUT};
    EXPECT_EQ(Storage(), 1);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_EQ(m_Items.Text(), "");
    EXPECT_THAT(Commands(), ElementsAre("-v"));
}

// --- the service processor's form ---

TEST_F(DriveAndStorageTimeout, FormThatTimesOutIsTheEmptyOne) {
    PutHost(RAID_AND_SSD);
    RunnerDouble().runs = {Answered(VersionReport("7.0")), TIMED_OUT};
    std::string binary;
    EXPECT_EQ(m_Object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 0);
    EXPECT_EQ(binary, "00000000000000001000000000000000");
    EXPECT_EQ(Texts(), "'05' '' ''");
}

// --- slot 10 ---

TEST_F(DriveAndStorageTimeout, CommandOfTheHostTellsTheTimeOutByItsResult) {
    RunnerDouble().runs = {TIMED_OUT};
    unsigned long exitCode = 7;
    EXPECT_EQ(m_Object.KRZExecCli("krzcli -x", &exitCode, "/opt/tarmica/out.txt"), 4U);
    EXPECT_EQ(exitCode, 255U);
    EXPECT_THAT(Failures(), ElementsAre("krzcli command timeout.(krzcli -x)"));
}

}  // namespace
