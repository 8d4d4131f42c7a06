#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "SlotOf.h"
#include "StandInTool.h"
#include "TraceText.h"
#include "orchestration/CMSRAID_InterFace.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* FOUND_LINE =
    "1: Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_005D)\n";
constexpr const char* STORCLI = "/opt/tarmica/qor/provider/RAID/tool/storcli";
constexpr const char* STORCLI_LINE =
    "1: Execute LSI RAID Utilty command. "
    "\"/opt/tarmica/qor/provider/RAID/tool/storcli\" /call show\n";
constexpr const char* REMOVE_RESULT_FILES = "rm -f /opt/tarmica/qor/provider/tmp/MSRAID/*";

// One request, with texts that hold something before.
struct CRequest {
    explicit CRequest() {
        CMSRAID_InterFace interFace;
        result = interFace.GetRAIDInfo(&items, &errCode, &notice, &detail);
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

class InterFace : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        PutRaidCard();
    }

    static void PlayStart(CStandInTool& tool, int controllers, const std::string& version = "7.2") {
        tool.Play("-v", {.out = VersionReport(version)});
        tool.Play("-ctrlinfo -aAll", {.out = ControllerList(controllers)});
    }
};

std::string ControllerItems(int number) {
    const std::string text = std::to_string(number);
    return " | Controller Information |  | TRUE\n"
           "Controller Information | ### General Information ### |  | TRUE\n"
           "### General Information ### | Controller No. | " +
           text +
           " | TRUE\n"
           "### General Information ### | Product Name | Card " +
           text + " | TRUE\n";
}

std::string GroupItems(int number) {
    return " | Logical Drive Information |  | TRUE\n"
           "Logical Drive Information | ### General Information ### |  | TRUE\n"
           "### General Information ### | RG No. | RG" +
           std::to_string(number) +
           " | TRUE\n"
           "### General Information ### | LD No. | LD0 | TRUE\n"
           "### General Information ### | Associated CacheCade LD |  | FALSE\n";
}

std::string DriveItems(int number) {
    return " | Physical Drive Information |  | TRUE\n"
           "Physical Drive Information | ### General Information ### |  | TRUE\n"
           "### General Information ### | PD No. | PD3 | TRUE\n"
           "### General Information ### | RG No. | RG" +
           std::to_string(number) +
           " | TRUE\n"
           "### General Information ### | LD No. | LD0 | TRUE\n"
           "### General Information ### | PD Status | NO ERROR | TRUE\n"
           "### General Information ### | PD Status(Detail) | ONLINE | TRUE\n"
           "### General Information ### | Temperature | 31C | TRUE\n";
}

// --- nothing to report ---

TEST_F(InterFace, HostWithoutARAIDCardHasNothingToReport) {
    WriteFile(DEVICE_LIST, "");
    const CStandInTool toolThatIsNotAsked;
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), "");
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InterFace::CMSRAID_InterFace [START]\n"
              "4: CMSRAID_InterFace::CMSRAID_InterFace [END]\n"
              "4: CMSRAID_InterFace::GetRAIDInfo [START]\n"
              "4: CMSRAID_PCICard::IsPresentRAID [START]\n"
              "1: RAID Card is not present.\n"
              "4: CMSRAID_PCICard::IsPresentRAID [END]\n"
              "4: CMSRAID_InterFace::FreeItemList [START]\n"
              "4: CMSRAID_InterFace::FreeItemList [END]\n"
              "4: CMSRAID_InterFace::GetRAIDInfo [END]\n"
              "4: CMSRAID_InterFace::~CMSRAID_InterFace [START]\n"
              "4: CMSRAID_InterFace::~CMSRAID_InterFace [END]\n");
}

TEST_F(InterFace, NoControllerIsSuccessWithNothing) {
    CStandInTool tool;
    PlayStart(tool, 0);
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), "");
}

TEST_F(InterFace, ToolThatFindsNoControllerIsSuccessWithNothing) {
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("7.2")});
    tool.Play("-ctrlinfo -aAll", {.out = "Error - No RAID controller is found.\n"});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), "");
}

// --- the tool is missing ---

TEST_F(InterFace, MissingToolWithoutDisksIsSuccessWithANotice) {
    CStandInTool utility(STORCLI);
    utility.Play("/call show", {.out = "Physical Drives = 0\n"});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '02' '02' 'none'");
    EXPECT_EQ(request.items.Text(), "");
    EXPECT_EQ(TraceTextWithoutFlow(),
              std::string(FOUND_LINE) + "16: KRZ is not installed.\n" + STORCLI_LINE +
                  "1: CMSRAID_InterFace::IsPresentRAIDPhysDisk diskNum=0\n");
}

TEST_F(InterFace, MissingToolWithDisksIsAFailure) {
    CStandInTool utility(STORCLI);
    utility.Play("/call show", {.out = "Physical Drives = 4\n"});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '02' '' 'none'");
    EXPECT_EQ(request.items.Text(), "");
    EXPECT_EQ(TraceTextWithoutFlow(),
              std::string(FOUND_LINE) + "16: KRZ is not installed.\n" + STORCLI_LINE +
                  "1: CMSRAID_InterFace::IsPresentRAIDPhysDisk diskNum=4\n");
}

TEST_F(InterFace, MissingToolAndUtilityIsSuccessWithANotice) {
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '02' '02' 'none'");
}

TEST_F(InterFace, OlderCardsThatArePresentAreAskedAboutWithMegaCli) {
    WriteFile(RAID_INI,
              "[SuportDevice]\nSuportDeviceNum=2\nVendor1=VEN_1000\nDevice1=DEV_005D\n"
              "Vendor2=VEN_1000\nDevice2=DEV_0073\n");
    WriteFile(DEVICE_LIST, "02:00.0_1000:0073\n");
    CStandInTool utility("/opt/tarmica/qor/provider/RAID/tool/MegaCli");
    utility.Play("-AdpAllInfo -aALL", {.out = "  Disks           : 1\n"});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '02' '' 'none'");
}

// --- the tool's version ---

TEST_F(InterFace, OldOrUnreadableVersionGivesANoticeAndGoesOn) {
    const std::string old = "16: KRZ CLI Version is old.(tsKRZver=%)\n";
    const std::string invalid = "2: KRZ CLI Version is invalid.(tsKRZver=%)\n";
    struct CRow {
        std::string version;
        std::string trace;
    };
    const std::vector<CRow> rows = {
        {"3.9", old},      {"4.0", old},         {"4.3", old},     {"4.4", ""},
        {"4.10", ""},      {"5.0", ""},          {"12.5", ""},     {"3.99", old},
        {"4.", old},       {".4", old},          {"a.b", old},     {"5.x", ""},
        {"4", invalid},    {"10.2.3", invalid},  {"", invalid},    {"4..", invalid},
        {"text", invalid}, {"7.02.00", invalid}, {"4.3beta", old}, {"4.4beta", ""},
    };
    for (const CRow& row : rows) {
        fs::remove_all(TOOL_DIR);
        ResetFakeComLib();
        CStandInTool tool;
        PlayStart(tool, 0, row.version);
        const CRequest request;
        EXPECT_EQ(request.Answer(), row.trace.empty() ? "1 '' '' 'none'" : "1 '' '01' 'none'")
            << row.version;
        std::string trace = row.trace;
        if (const size_t place = trace.find('%'); place != std::string::npos) {
            trace.replace(place, 1, row.version);
        }
        EXPECT_EQ(TraceTextWithoutFlow(),
                  FOUND_LINE +
                      std::string("1: execute krzcli command.(krzcli -v)\n"
                                  "1: KRZ Version is ") +
                      row.version + ".\n" + trace +
                      "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n")
            << row.version;
    }
}

TEST_F(InterFace, VersionThatCannotBeAskedGivesANotice) {
    CStandInTool tool;
    for (int i = 0; i < 3; ++i) {
        tool.Play("-v", {.out = VersionReport("7.2"), .status = 1});
    }
    tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
    PlayController(tool, 0, "-pdinfo");
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '01' 'none'");
    EXPECT_EQ(request.items.Text(), ControllerItems(0) + GroupItems(0) + DriveItems(0));
}

TEST_F(InterFace, OldToolIsAskedWithSmart) {
    CStandInTool tool;
    PlayStart(tool, 1, "3.9");
    PlayController(tool, 0, "-pdinfo");
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '01' 'none'");
    EXPECT_EQ(request.items.Text(), ControllerItems(0) + GroupItems(0) + DriveItems(0));
}

TEST_F(InterFace, VersionLineThatEndsAtItsColonThrowsAndLeavesNothing) {
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version :\n"});
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode = "before";
    std::string notice = "before";
    std::string detail = "before";
    EXPECT_THROW(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), std::out_of_range);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(errCode, "");
    EXPECT_EQ(notice, "");
    EXPECT_EQ(detail, "none");
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
}

// --- the getters ---

TEST_F(InterFace, ControllersFollowOneAnotherEachWithItsDrives) {
    CStandInTool tool;
    PlayStart(tool, 2);
    PlayController(tool, 0);
    PlayController(tool, 1);
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), ControllerItems(0) + GroupItems(0) + DriveItems(0) +
                                        ControllerItems(1) + GroupItems(1) + DriveItems(1));
    EXPECT_EQ(TraceTextWithoutFlow(),
              std::string(FOUND_LINE) +
                  "1: execute krzcli command.(krzcli -v)\n"
                  "1: KRZ Version is 7.2.\n"
                  "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n"
                  "1: execute krzcli command.(krzcli -ctrlinfo -a0)\n"
                  "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
                  "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
                  "1: execute krzcli command.(krzcli -pdinfo -nosmart -a0)\n"
                  "1: execute krzcli command.(krzcli -ctrlinfo -a1)\n"
                  "1: execute krzcli command.(krzcli -ldpdinfo -a1)\n"
                  "1: execute krzcli command.(krzcli -ldpdinfo -a1)\n"
                  "1: execute krzcli command.(krzcli -pdinfo -nosmart -a1)\n");
}

TEST_F(InterFace, GettersLiveFromTheVersionToTheEndOfTheRequest) {
    CStandInTool tool;
    PlayStart(tool, 0);
    { const CRequest request; }
    std::erase_if(FakeComLib().traces, [](const CTraceLine& line) {
        return line.text.find("CMSRAID_InfoGetter::") != std::string::npos;
    });
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InterFace::CMSRAID_InterFace [START]\n"
              "4: CMSRAID_InterFace::CMSRAID_InterFace [END]\n"
              "4: CMSRAID_InterFace::GetRAIDInfo [START]\n"
              "4: CMSRAID_PCICard::IsPresentRAID [START]\n"
              "1: Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_005D)\n"
              "4: CMSRAID_PCICard::IsPresentRAID [END]\n"
              "1: execute krzcli command.(krzcli -v)\n"
              "4: CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter [START]\n"
              "4: CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter [END]\n"
              "4: CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]\n"
              "4: CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]\n"
              "4: CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [START]\n"
              "1: KRZ Version is 7.2.\n"
              "4: CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [END]\n"
              "4: CMSRAID_CtrlInfoGetter::GetCtrlNum [START]\n"
              "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n"
              "4: CMSRAID_CtrlInfoGetter::GetCtrlNum [END]\n"
              "4: CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [START]\n"
              "4: CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [END]\n"
              "4: CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]\n"
              "4: CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]\n"
              "4: CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [START]\n"
              "4: CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [END]\n"
              "4: CMSRAID_InterFace::FreeItemList [START]\n"
              "4: CMSRAID_InterFace::FreeItemList [END]\n"
              "4: CMSRAID_InterFace::GetRAIDInfo [END]\n"
              "4: CMSRAID_InterFace::~CMSRAID_InterFace [START]\n"
              "4: CMSRAID_InterFace::~CMSRAID_InterFace [END]\n");
}

TEST_F(InterFace, ItemsAreAppendedBehindTheCallers) {
    CStandInTool tool;
    PlayStart(tool, 1);
    PlayController(tool, 0);
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), 1);
    EXPECT_EQ(items.Text(),
              " | before |  | TRUE\n" + ControllerItems(0) + GroupItems(0) + DriveItems(0));
}

TEST_F(InterFace, CountOfControllersIsASignedByte) {
    for (const int count : {128, 200, 255, 256}) {
        fs::remove_all(TOOL_DIR);
        CStandInTool tool;
        PlayStart(tool, count);
        const CRequest request;
        EXPECT_EQ(request.Answer(), "1 '' '' 'none'") << count;
        EXPECT_EQ(request.items.Text(), "") << count;
    }
    fs::remove_all(TOOL_DIR);
    CStandInTool tool;
    PlayStart(tool, 257);
    PlayController(tool, 0);
    const CRequest request;
    EXPECT_EQ(request.items.Text(), ControllerItems(0) + GroupItems(0) + DriveItems(0));
}

// --- failures ---

TEST_F(InterFace, CountThatFailsFailsTheRequest) {
    struct CRow {
        CToolStep step;
        const char* answer;
        const char* trace;
    };
    const std::vector<CRow> rows = {
        {{.out = "Error - broken\n"},
         "0 '01' '' 'krzcli -ctrlinfo -aAll'",
         "2: KRZ CLI has an error(krzcli -ctrlinfo -aAll).\n"
         "2: Failed to execute krzcli command 00000001.\n"},
        {{.status = 1},
         "0 '01' '' 'krzcli -ctrlinfo -aAll'",
         "2: Failed to execute krzcli command.(krzcli -ctrlinfo -aAll,cliRtn=1)\n"
         "2: Failed to execute krzcli command 00000001.\n"},
        {{.run = KILL_TOOL},
         "0 '01' '' 'krzcli -ctrlinfo -aAll'",
         "2: ExecForeignModule WEXITSTATUS Error 00000009.\n"
         "2: Failed to execute krzcli command.(krzcli -ctrlinfo -aAll,cliRtn=255)\n"
         "2: Failed to execute krzcli command 00000002.\n"},
        {{.run = REMOVE_RESULT_FILES},
         "0 '03' '' ''",
         "2: Failed to open file output by krzcli(RESULTFILE).\n"
         "2: Failed to delete file(RESULTFILE).\n"},
    };
    for (const CRow& row : rows) {
        fs::remove_all(TOOL_DIR);
        ResetFakeComLib();
        CStandInTool tool;
        tool.Play("-v", {.out = VersionReport("7.2")});
        tool.Play("-ctrlinfo -aAll", row.step);
        const CRequest request;
        EXPECT_EQ(request.Answer(), row.answer);
        EXPECT_EQ(request.items.Text(), "");
        EXPECT_EQ(TraceTextWithoutFlow(),
                  std::string(FOUND_LINE) +
                      "1: execute krzcli command.(krzcli -v)\n"
                      "1: KRZ Version is 7.2.\n"
                      "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n" +
                      row.trace + "2: CMSRAID_InterFace::GetCtrlNum is FAILED (ret=00000000).\n");
    }
}

// The commands about one controller, and whose failure each one's failure is.
struct CCommandRow {
    const char* command;
    std::string (*report)(int number);
    const char* getter;
    const char* runFailure;    // traced for a run that failed with code 1
    const char* innerFailure;  // traced before the getter's
};

const std::vector<CCommandRow> COMMANDS = {
    {"-ctrlinfo", ControllerReport, "CMSRAID_CtrlInfoGetter",
     "2: Failed to execute krzcli command ret=00000001.\n", ""},
    {"-ldpdinfo", GroupReport, "CMSRAID_LDInfoGetter",
     "2: Failed to execute krzcli command ret=00000001.\n", ""},
    {"-ldpdinfo", GroupReport, "CMSRAID_PDInfoGetter",
     "2: Failed to execute krzcli command 00000001.\n",
     "2: CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (ret=00000000).\n"},
    {"-pdinfo -nosmart", [](int) { return DriveReport(); }, "CMSRAID_PDInfoGetter",
     "2: Failed to execute krzcli command ret=00000001.\n", ""},
};

class InterFaceFailure : public InterFace,
                         public testing::WithParamInterface<std::tuple<int, size_t>> {
protected:
    int Controller() const { return std::get<0>(GetParam()); }
    const CCommandRow& Command() const { return COMMANDS[std::get<1>(GetParam())]; }
    std::string Argument() const { return " -a" + std::to_string(Controller()); }
    std::string CommandLine() const {
        return std::string("krzcli ") + Command().command + Argument();
    }

    // Everything up to the command, which is played as `step`.
    void PlayUpTo(CStandInTool& tool, const CToolStep& step) const {
        PlayStart(tool, 3, "4.3");
        for (int i = 0; i < Controller(); ++i) {
            PlayController(tool, i);
        }
        for (size_t i = 0; i < std::get<1>(GetParam()); ++i) {
            tool.Play(COMMANDS[i].command + Argument(), {.out = COMMANDS[i].report(Controller())});
        }
        tool.Play(Command().command + Argument(), step);
    }

    void ExpectFailure(const CToolStep& step, const std::string& answer,
                       const std::string& failureTrace) const {
        CStandInTool tool;
        PlayUpTo(tool, step);
        const CRequest request;
        EXPECT_EQ(request.Answer(), answer);
        EXPECT_EQ(request.items.Text(), "");
        std::erase_if(FakeComLib().traces, [](const CTraceLine& line) { return line.level != 2; });
        EXPECT_EQ(TraceText(), failureTrace + Command().innerFailure + "2: " + Command().getter +
                                   "::GetInfo is FAILED (ret=00000000).\n");
        EXPECT_TRUE(fs::is_empty(RESULT_DIR));
    }
};

TEST_P(InterFaceFailure, ToolErrorFailsTheRequest) {
    ExpectFailure({.out = "Error - broken\n"}, "0 '01' '01' '" + CommandLine() + "'",
                  "2: KRZ CLI has an error(" + CommandLine() + ").\n" + Command().runFailure);
}

TEST_P(InterFaceFailure, ReportThatIsGoneFailsTheRequest) {
    ExpectFailure({.run = REMOVE_RESULT_FILES}, "0 '03' '01' ''",
                  "2: Failed to open file output by krzcli(RESULTFILE).\n"
                  "2: Failed to delete file(RESULTFILE).\n");
}

// The look-up of the groups rejects no report: it only searches for the lines that it knows.
class InterFaceRejection : public InterFaceFailure {};

TEST_P(InterFaceRejection, ReportThatIsNotUnderstoodFailsTheRequest) {
    ExpectFailure({.out = "### Title before any header ###\n"}, "0 '04' '01' ''",
                  "2: m_RaidList size is zero.\n"
                  "2: CreateRAIDItem is FAILED (ret=00000000).\n"
                  "2: Failed to parse RAID Information ret=00000000.\n");
}

INSTANTIATE_TEST_SUITE_P(EveryCommandOfTwoControllers, InterFaceFailure,
                         testing::Combine(testing::Values(0, 1),
                                          testing::Range(size_t{0}, COMMANDS.size())));
INSTANTIATE_TEST_SUITE_P(EveryGetterOfTwoControllers, InterFaceRejection,
                         testing::Combine(testing::Values(0, 1), testing::Values(0, 1, 3)));

TEST_F(InterFace, FailureEmptiesTheCallersOwnItemsToo) {
    CStandInTool tool;
    PlayStart(tool, 1);
    tool.Play("-ctrlinfo -a0", {.out = "Error - broken\n"});
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), 0);
    EXPECT_TRUE(items.empty());
    std::erase_if(FakeComLib().traces, [](const CTraceLine& line) {
        return line.text.find("CMSRAID_InterFace::FreeItemList") == std::string::npos;
    });
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InterFace::FreeItemList [START]\n"
              "4: CMSRAID_InterFace::FreeItemList [END]\n"
              "4: CMSRAID_InterFace::FreeItemList [START]\n"
              "4: CMSRAID_InterFace::FreeItemList [END]\n");
}

class CNotingFreedLists : public CMSRAID_InterFace {
public:
    void FreeItemList(std::list<CItemDisp*>* list) override {
        freed.push_back(list);
        CMSRAID_InterFace::FreeItemList(list);
    }
    std::vector<std::list<CItemDisp*>*> freed;
};

TEST_F(InterFace, FailureFreesItsOwnListAndThenTheCallers) {
    CStandInTool utility(STORCLI);
    utility.Play("/call show", {.out = "Physical Drives = 4\n"});
    CNotingFreedLists interFace;
    CItems items;
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetRAIDInfo(&items, &errCode, &notice, &detail), 0);
    ASSERT_EQ(interFace.freed.size(), 2U);
    EXPECT_NE(interFace.freed[0], &items);
    EXPECT_EQ(interFace.freed[1], &items);
}

// --- one text in several places ---

TEST_F(InterFace, CodesArePutInFrontOfWhatTheTextHolds) {
    CMSRAID_InterFace interFace;
    CItems items;
    std::string text = "before";
    EXPECT_EQ(interFace.GetRAIDInfo(&items, &text, &text, &text), 1);
    EXPECT_EQ(text, "0202none") << "neither tool nor disk";
    EXPECT_EQ(interFace.GetPDInfo(0, 252, 3, &items, &text, &text, &text), 0);
    EXPECT_EQ(text, "02none");
    for (const char* version : {"4.3", "unreadable"}) {
        fs::remove_all(TOOL_DIR);
        CStandInTool tool;
        PlayStart(tool, 0, version);
        EXPECT_EQ(interFace.GetRAIDInfo(&items, &text, &text, &text), 1);
        EXPECT_EQ(text, "01none") << version;
    }
}

// --- the table ---

TEST_F(InterFace, OperationsStandInTheirSlots) {
    EXPECT_EQ(SlotOf(&CMSRAID_InterFace::GetRAIDInfo), 2U);
    EXPECT_EQ(SlotOf(&CMSRAID_InterFace::GetPDInfo), 3U);
    EXPECT_EQ(SlotOf(&CMSRAID_InterFace::GetStorageInfo), 4U);
    EXPECT_EQ(SlotOf(&CMSRAID_InterFace::FreeItemList), 5U);
}

// --- freeing ---

TEST_F(InterFace, FreeItemListEmptiesTheList) {
    CItems items;
    AddItem(items, "", "one", "");
    AddItem(items, "", "two", "");
    CMSRAID_InterFace interFace;
    interFace.FreeItemList(&items);
    EXPECT_TRUE(items.empty());
    interFace.FreeItemList(&items);
    EXPECT_TRUE(items.empty());
}

}  // namespace
