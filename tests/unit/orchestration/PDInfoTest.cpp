// Information about one physical drive, SMART data included.
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "StandInTool.h"
#include "orchestration/CMSRAID_InterFace.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* REMOVE_RESULT_FILES = "rm -f /opt/tarmica/qor/provider/tmp/MSRAID/*";
constexpr const char* LD_COMMAND = "-ldpdinfo -a0";
constexpr const char* PD_COMMAND = "-pdinfo -pd[252:3] -a0";
constexpr const char* REPORT =
    "PD3(LD0)\n### General Information ###\nInterface Type : SAS\nTemperature : 31C\n\n"
    "### SMART Information ###\nTemperature : 31C\n";
constexpr const char* ITEMS =
    " | Physical Drive Information |  | TRUE\n"
    "Physical Drive Information | ### General Information ### |  | TRUE\n"
    "### General Information ### | PD No. | PD3 | TRUE\n"
    "### General Information ### | RG No. | RG0 | TRUE\n"
    "### General Information ### | LD No. | LD0 | TRUE\n"
    "### General Information ### | Interface Type | SAS | TRUE\n"
    "### General Information ### | Temperature | 31C | TRUE\n"
    "Physical Drive Information | ### SMART Information ### |  | TRUE\n"
    "### SMART Information ### | Temperature | 31C | TRUE\n"
    "### SMART Information ### | Power-On Time |  | FALSE\n"
    "### SMART Information ### | SMART Detail(SAS) |  | FALSE\n";

// One request, with texts that hold something before.
struct CRequest {
    explicit CRequest(long ctrlNo = 0, long enclosure = 252, long slot = 3) {
        CMSRAID_InterFace interFace;
        result = interFace.GetPDInfo(ctrlNo, enclosure, slot, &items, &errCode, &notice, &detail);
    }
    // All of the answer but the items.
    std::string Answer() const {
        return std::to_string(result) + " '" + errCode + "' '" + notice + "' '" + detail + "'";
    }

    CItems items;
    std::string errCode = "before";
    std::string notice = "before";
    std::string detail = "before";
    int result = -1;
};

// The host has no device list and no supported device: nobody asks for them.
class PDInfo : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }

    static void PlayGroups(CStandInTool& tool) {
        tool.Play(LD_COMMAND, {.out = "RG No. : RG0\n>>PD3(LD0)\n"});
    }
};

TEST_F(PDInfo, ShowsTheDriveWithoutAnyPresenceCheck) {
    CStandInTool tool;
    PlayGroups(tool);
    tool.Play(PD_COMMAND, {.out = REPORT});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), ITEMS);
    EXPECT_EQ(
        FakeComLib().TracesWithoutFlow(),
        (std::vector<CTraceLine>{{1, "execute krzcli command.(krzcli -ldpdinfo -a0)"},
                                 {1, "execute krzcli command.(krzcli -pdinfo -pd[252:3] -a0)"}}));
    EXPECT_EQ(FakeComLib().deviceListsMade, 0);
}

TEST_F(PDInfo, NumbersGoToTheToolInTheirOrder) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a-1", {});
    tool.Play("-pdinfo -pd[-2:5] -a-1", {});
    tool.Play("-ldpdinfo -a4294967296", {});
    tool.Play("-pdinfo -pd[1:-1] -a4294967296", {});
    EXPECT_EQ(CRequest(-1, -2, 5).Answer(), "1 '' '' 'none'");
    EXPECT_EQ(CRequest(4294967296, 4294967297, 4294967295).Answer(), "1 '' '' 'none'");
}

TEST_F(PDInfo, ItemsAreAppendedBehindTheCallers) {
    CStandInTool tool;
    PlayGroups(tool);
    tool.Play(PD_COMMAND, {.out = REPORT});
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetPDInfo(0, 252, 3, &items, &errCode, &notice, &detail), 1);
    EXPECT_EQ(items.Text(), std::string(" | before |  | TRUE\n") + ITEMS);
}

TEST_F(PDInfo, MissingToolIsAFailure) {
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '02' '' 'none'");
    EXPECT_EQ(request.items.Text(), "");
    EXPECT_EQ(FakeComLib().traces,
              (std::vector<CTraceLine>{{4, "CMSRAID_InterFace::CMSRAID_InterFace [START]"},
                                       {4, "CMSRAID_InterFace::CMSRAID_InterFace [END]"},
                                       {4, "CMSRAID_InterFace::GetPDInfo [START]"},
                                       {2, "KRZ is not installed."},
                                       {4, "CMSRAID_InterFace::FreeItemList [START]"},
                                       {4, "CMSRAID_InterFace::FreeItemList [END]"},
                                       {4, "CMSRAID_InterFace::GetPDInfo [END]"},
                                       {4, "CMSRAID_InterFace::~CMSRAID_InterFace [START]"},
                                       {4, "CMSRAID_InterFace::~CMSRAID_InterFace [END]"}}));
}

struct CFailureRow {
    CToolStep groups;  // the answer about the RAID groups
    bool asksForDrive;
    CToolStep drive;  // the answer about the drive
    const char* answer;
};

// "05", the time-out of 150 seconds, is the runner's to test.
TEST_F(PDInfo, FailureOfEitherCommandFailsTheRequest) {
    const std::vector<CFailureRow> rows = {
        {{.out = "Error - broken\n"}, false, {}, "0 '01' '' 'krzcli -ldpdinfo -a0'"},
        {{.run = REMOVE_RESULT_FILES}, false, {}, "0 '03' '' ''"},
        {{}, true, {.out = "Error - broken\n"}, "0 '01' '' 'krzcli -pdinfo -pd[252:3] -a0'"},
        {{}, true, {.run = REMOVE_RESULT_FILES}, "0 '03' '' ''"},
        {{}, true, {.out = "PD3\n"}, "0 '04' '' ''"},
        {{}, true, {.out = "### Title before any drive ###\n"}, "0 '04' '' ''"},
        {{}, true, {.out = GoldenBad("smart/sata_row_with_too_few_cells.txt")}, "0 '04' '' ''"},
    };
    for (const CFailureRow& row : rows) {
        fs::remove_all(TOOL_DIR);
        ResetFakeComLib();
        CStandInTool tool;
        tool.Play(LD_COMMAND, row.groups);
        if (row.asksForDrive) {
            tool.Play(PD_COMMAND, row.drive);
        }
        const CRequest request;
        EXPECT_EQ(request.Answer(), row.answer);
        EXPECT_EQ(request.items.Text(), "");
        EXPECT_TRUE(fs::is_empty(RESULT_DIR));
        EXPECT_EQ(FakeComLib().Traces(2).back(),
                  "CMSRAID_PDInfoGetter::GetInfo is FAILED (ret=00000000).")
            << "the base getter's name, which support tools know";
    }
}

TEST_F(PDInfo, CommandThatTheToolRefusesIsNotRepeated) {
    CStandInTool tool;
    PlayGroups(tool);
    tool.Play(PD_COMMAND, {.out = "Error - Invalid input at or near token -pd\n", .status = 1});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '01' '' 'krzcli -pdinfo -pd[252:3] -a0'");
    EXPECT_TRUE(FakeComLib().sleeps.empty());
}

TEST_F(PDInfo, FailureEmptiesTheCallersOwnItemsToo) {
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetPDInfo(0, 252, 3, &items, &errCode, &notice, &detail), 0);
    EXPECT_TRUE(items.empty());
}

TEST_F(PDInfo, TableOutOfRangeThrowsAndLeavesNothing) {
    for (const char* name :
         {"smart/sata_row_ends_in_name.txt", "smart/sata_header_ends_with_raw_data.txt",
          "smart/sas_row_too_short.txt"}) {
        fs::remove_all(TOOL_DIR);
        CStandInTool tool;
        PlayGroups(tool);
        tool.Play(PD_COMMAND, {.out = GoldenBad(name)});
        CMSRAID_InterFace interFace;
        CItems items;
        AddItem(items, "", "before", "");
        std::string errCode = "before";
        std::string notice = "before";
        std::string detail = "before";
        EXPECT_THROW(interFace.GetPDInfo(0, 252, 3, &items, &errCode, &notice, &detail),
                     std::out_of_range)
            << name;
        EXPECT_TRUE(items.empty());
        EXPECT_EQ(errCode + notice + detail, "none");
        EXPECT_TRUE(fs::is_empty(RESULT_DIR));
    }
}

}  // namespace
