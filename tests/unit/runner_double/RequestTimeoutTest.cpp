#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "RunnerDouble.h"
#include "cli/ExecForeignModule.h"
#include "orchestration/CMSRAID_InterFace.h"

using namespace qortest;

namespace {

CRun Answered(const std::string& report) {
    return {EXEC_OK, 0, report};
}

struct CRow {
    const char* command;              // the one that runs into its limit
    std::vector<CRun> answered;       // the runs before it, from the version on
    std::vector<const char*> traces;  // who fails, one by one
};

std::vector<CRow> Rows() {
    const CRun version = Answered(VersionReport("7.2"));
    const CRun list = Answered(ControllerList(1));
    const CRun controller = Answered(ControllerReport(0));
    const CRun group = Answered(GroupReport(0));
    return {
        {"krzcli -ctrlinfo -aAll", {version}, {"CMSRAID_InterFace::GetCtrlNum"}},
        {"krzcli -ctrlinfo -a0", {version, list}, {"CMSRAID_CtrlInfoGetter::GetInfo"}},
        {"krzcli -ldpdinfo -a0", {version, list, controller}, {"CMSRAID_LDInfoGetter::GetInfo"}},
        {"krzcli -ldpdinfo -a0",
         {version, list, controller, group},
         {"CMSRAID_LDInfoGetter::GetPDRGNo", "CMSRAID_PDInfoGetter::GetInfo"}},
        {"krzcli -pdinfo -nosmart -a0",
         {version, list, controller, group, group},
         {"CMSRAID_PDInfoGetter::GetInfo"}},
    };
}

class RequestTimeout : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        RunnerDouble() = CRunnerDouble();
        PutRaidCard();
        WriteFile("/opt/tarmica/krz/cli/krzcli", "");
    }
};

TEST_F(RequestTimeout, AnyCommandThatTimesOutFailsTheRequest) {
    for (const CRow& row : Rows()) {
        ResetFakeComLib();
        RunnerDouble() = CRunnerDouble();
        RunnerDouble().runs.assign(row.answered.begin(), row.answered.end());
        RunnerDouble().runs.push_back({EXEC_TIMEOUT, 255, "half a rep"});
        CMSRAID_InterFace interFace;
        CItems items;
        std::string errCode;
        std::string notice;
        std::string detail;
        EXPECT_EQ(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), 0) << row.command;
        EXPECT_EQ(items.Text(), "") << row.command;
        EXPECT_EQ(errCode, "05") << row.command;
        EXPECT_EQ(notice, "") << row.command;
        EXPECT_EQ(detail, row.command);
        EXPECT_TRUE(RunnerDouble().runs.empty()) << row.command;
        const std::vector<std::string> failures = FakeComLib().Traces(2);
        ASSERT_EQ(failures.size(), 2 + row.traces.size()) << row.command;
        EXPECT_EQ(failures[0], "krzcli command timeout.(" + std::string(row.command) + ")");
        for (size_t i = 0; i < row.traces.size(); ++i) {
            EXPECT_EQ(failures[2 + i], std::string(row.traces[i]) + " is FAILED (ret=00000000).");
        }
    }
}

TEST_F(RequestTimeout, CountThatTimesOutFailsWhateverTheToolSaidFirst) {
    RunnerDouble().runs = {Answered(VersionReport("7.2")),
                           {EXEC_TIMEOUT, 255, "Error - No RAID controller is found.\n"}};
    CMSRAID_InterFace interFace;
    CItems items;
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), 0);
    EXPECT_EQ(errCode, "05");
    EXPECT_EQ(detail, "krzcli -ctrlinfo -aAll");
}

TEST_F(RequestTimeout, VersionThatTimesOutGivesANotice) {
    RunnerDouble().runs = {{EXEC_TIMEOUT, 255, "half a rep"}, Answered(ControllerList(0))};
    CMSRAID_InterFace interFace;
    CItems items;
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), 1);
    EXPECT_EQ(errCode, "");
    EXPECT_EQ(notice, "01");
    EXPECT_EQ(detail, "none");
}

}  // namespace
