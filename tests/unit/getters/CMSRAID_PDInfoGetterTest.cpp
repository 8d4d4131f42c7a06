#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

#include "GetterFixture.h"
#include "ReportStress.h"
#include "TraceText.h"
#include "getters/CMSRAID_PDInfoGetter.h"

using namespace qortest;

namespace {

constexpr const char* GROUPS = "RG No. : RG0\n>>PD3(LD0)\n";

class CParser : public CParserOf<CMSRAID_PDInfoGetter> {
public:
    using CParserOf::CParserOf;

    const std::string& CommandFormat() const { return m_CommandFormat; }
    const std::string& IFType() const { return m_IFType; }
};

using CRejectingParser = CRejectingParserOf<CMSRAID_PDInfoGetter>;

class PDInfoGetter : public CGetterFixture {
protected:
    static CRead Run(const std::string& report, const std::string& groups = GROUPS) {
        CStandInTool tool;
        tool.Play("-ldpdinfo -a0", {.out = groups});
        tool.Play("-pdinfo -a0", {.out = report});
        return Run();
    }

    // With the steps that are already played.
    static CRead Run() {
        CMSRAID_PDInfoGetter getter;
        return ReadWith(getter);
    }

    // The items of one drive with this General Information section.
    static std::string General(const std::string& lines) {
        CParser parser;
        EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### General Information ###\n" + lines));
        return ItemText(parser.Items());
    }
};

// What every drive of kind GHS begins with.
const std::string GHS_HEAD =
    " | Physical Drive Information |  | TRUE\n"
    "Physical Drive Information | ### General Information ### |  | TRUE\n"
    "### General Information ### | PD No. | PD3 | TRUE\n"
    "### General Information ### | RG No. | - | TRUE\n"
    "### General Information ### | LD No. | GHS | TRUE\n";

std::string InGeneral(const std::string& name, const std::string& value,
                      const std::string& flag = "TRUE") {
    return "### General Information ### | " + name + " | " + value + " | " + flag + "\n";
}

TEST_F(PDInfoGetter, ShowsEveryKindOfDrive) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = Golden("pd/groups.txt")});
    tool.Play("-pdinfo -a0", {.out = Golden("pd/every_kind.txt")});
    CMSRAID_PDInfoGetter getter;
    CItems items;
    ASSERT_TRUE(getter.GetInfo(0, items));
    ExpectGoldenItems("golden/pd/every_kind.items", items);
    EXPECT_EQ(getter.ErrCode(), "");
    EXPECT_EQ(getter.ErrDetail(), "");
}

TEST_F(PDInfoGetter, ShowsTheSameWithCarriageReturns) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = Golden("pd/groups.txt")});
    tool.Play("-pdinfo -a0", {.out = WithCarriageReturns(Golden("pd/every_kind.txt"))});
    CMSRAID_PDInfoGetter getter;
    CItems items;
    ASSERT_TRUE(getter.GetInfo(0, items));
    ExpectGoldenItems("golden/pd/every_kind.items", items);
}

TEST_F(PDInfoGetter, ShowsTheDocumentedBlock) {
    const CRead run =
        Run("PD3(LD0)\n### General Information ###\nInterface Type : SAS\nPD Status : ONLINE\n"
            "Temperature : 31C\nPower Status : Active\n\n### Slot Information ###\nBay : 7\n\n"
            "### SMART Information ###\nid : value\nPD4(GHS)\n");
    EXPECT_TRUE(run.result);
    EXPECT_EQ(run.items,
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | PD No. | PD3 | TRUE\n"
              "### General Information ### | RG No. | RG0 | TRUE\n"
              "### General Information ### | LD No. | LD0 | TRUE\n"
              "### General Information ### | Interface Type | SAS | TRUE\n"
              "### General Information ### | PD Status | NO ERROR | TRUE\n"
              "### General Information ### | PD Status(Detail) | ONLINE | TRUE\n"
              "### General Information ### | Temperature | 31C | TRUE\n"
              "### General Information ### | Power Status | Active | TRUE\n"
              "Physical Drive Information | ### Enclosure Properties Information ### |  | TRUE\n"
              "### Enclosure Properties Information ### | Enclosure ID |  | FALSE\n"
              "### Enclosure Properties Information ### | Bay | 7 | TRUE\n"
              " | Physical Drive Information |  | TRUE\n");
}

TEST_F(PDInfoGetter, TracesOneRunInOrder) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = GROUPS});
    tool.Play("-pdinfo -nosmart -a0",
              {.out = "PD3(LD0)\n### General Information ###\nPD Status : ONLINE\n\n"
                      "### Slot Information ###\n\n### SMART Information ###\n"});
    {
        CMSRAID_PDInfoGetter getter("4.0");
        CItems items;
        ASSERT_TRUE(getter.GetInfo(0, items));
    }
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]\n"
              "4: CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [START]\n"
              "1: KRZ Version is 4.0.\n"
              "4: CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [END]\n"
              "4: CMSRAID_PDInfoGetter::GetInfo [START]\n"
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]\n"
              "4: CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]\n"
              "4: CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]\n"
              "4: CMSRAID_LDInfoGetter::GetPDRGNo [START]\n"
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "4: CMSRAID_LDInfoGetter::GetPDRGNo [END]\n"
              "4: CMSRAID_InfoGetter::GetInfo [START]\n"
              "1: execute krzcli command.(krzcli -pdinfo -nosmart -a0)\n"
              "4: CMSRAID_InfoGetter::Parse [START]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_PDInfoGetter::AddRootItem [START]\n"
              "4: CMSRAID_PDInfoGetter::AddRootItem [END]\n"
              "4: CMSRAID_PDInfoGetter::ParsePDLDNo [START], PD3(LD0)\n"
              "4: CMSRAID_PDInfoGetter::ParsePDLDNo [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_PDInfoGetter::ParseGeneralnfo [START]\n"
              "4: CMSRAID_PDInfoGetter::ParsePDStatus [START]\n"
              "4: CMSRAID_PDInfoGetter::ParsePDStatus [END]\n"
              "4: CMSRAID_PDInfoGetter::ParseGeneralnfo [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_PDInfoGetter::ParseSlotInfo [START]\n"
              "4: CMSRAID_PDInfoGetter::ParseSlotInfo [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_PDInfoGetter::ParseSMARTInfo [START]\n"
              "4: CMSRAID_PDInfoGetter::ParseSMARTInfo [END]\n"
              "4: CMSRAID_PDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_PDInfoGetter::FreeItemList [START]\n"
              "4: CMSRAID_PDInfoGetter::FreeItemList [END]\n"
              "4: CMSRAID_InfoGetter::Parse [END]\n"
              "4: CMSRAID_InfoGetter::GetInfo [END]\n"
              "4: CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]\n"
              "4: CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]\n"
              "4: CMSRAID_PDInfoGetter::GetInfo [END]\n"
              "4: CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [START]\n"
              "4: CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [END]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]\n");
}

// --- the command ---

TEST_F(PDInfoGetter, ConstantsHaveTheirTexts) {
    using G = CMSRAID_PDInfoGetter;
    const std::vector<std::pair<std::string, std::string>> rows = {
        {G::PD_INFO_ROOT_NAME, "Physical Drive Information"},
        {G::PDLD_NO_NAME_HEAD, "PD"},
        {G::PD_STAT_NAME_HEAD, "PD Status"},
        {G::PD_TEMPERATURE_NAME, "Temperature"},
        {G::PD_ENCL_ID_NAME, "Enclosure ID"},
        {G::PD_STAT_BASIC_NAME, "PD Status"},
        {G::PD_STAT_DETAIL_NAME, "PD Status(Detail)"},
        {G::SLOT_INFO_TITLE_NAME, "### Slot Information ###"},
        {G::ENCL_PROP_TITLE_NAME, "### Enclosure Properties Information ###"},
        {G::SMART_INFO_TITLE_NAME, "### SMART Information ###"},
        {G::PD_STAT_D_ONLINE, "ONLINE"},
        {G::PD_STAT_D_COPYBACK, "COPYBACK"},
        {G::PD_STAT_D_UNCONFIG_GOOD, "Unconfig GOOD"},
        {G::PD_STAT_D_HOT_SPARE, "HOT SPARE"},
        {G::PD_STAT_D_OFFLINE, "OFFLINE"},
        {G::PD_STAT_D_UNCONFIG_BAD, "Unconfig BAD"},
        {G::PD_STAT_D_FAILED, "FAILED"},
        {G::PD_STAT_D_REBUILD, "REBUILD"},
        {G::PD_STAT_B_NO_ERROR, "NO ERROR"},
        {G::PD_STAT_B_ERROR, "ERROR"},
        {G::PD_STAT_B_REBUILD, "REBUILD"},
        {G::PD_STAT_B_UNKNOWN, "UNKNOWN"},
        {G::PD_PD_NO_NAME, "PD No."},
        {G::PD_TYPE_LD, "LD"},
        {G::PD_TYPE_GHS, "GHS"},
        {G::PD_TYPE_DHS, "DHS"},
        {G::PD_TYPE_RLD, "RLD"},
        {G::PD_IFTYPE_NAME, "Interface Type"},
        {G::PD_IFTYPE_SAS, "SAS"},
        {G::PD_IFTYPE_SATA, "SATA"},
        {G::PD_POWER_STAT_NAME, "Power Status"},
    };
    for (const auto& [constant, text] : rows) {
        EXPECT_EQ(constant, text);
    }
}

TEST_F(PDInfoGetter, AsksWithSmartByDefault) {
    EXPECT_EQ(CParser().CommandFormat(), "krzcli -pdinfo -a%s");
}

TEST_F(PDInfoGetter, LeavesSmartOutOnlyForTwoPartVersionsFromFour) {
    const char* const with = "krzcli -pdinfo -a%s";
    const char* const without = "krzcli -pdinfo -nosmart -a%s";
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"3.9", with},        {"4", with},       {"4.0", without},  {"4.3", without},
        {"4.4", without},     {"5.0", without},  {"12.5", without}, {"4.0.1", with},
        {"10.2.3", with},     {"7.02.00", with}, {"", with},        {"a.b", with},
        {"4.", without},      {".4", with},      {".", with},       {"-5.0", with},
        {"4beta.1", without}, {"beta4.1", with}, {"4..", with},     {"0.0", with},
    };
    for (const auto& [version, command] : rows) {
        ResetFakeComLib();
        const CParser parser(version);
        EXPECT_EQ(parser.CommandFormat(), command) << version;
        EXPECT_EQ(TraceTextWithoutFlow(), "1: KRZ Version is " + version + ".\n");
    }
}

TEST_F(PDInfoGetter, AsksAboutTheGivenController) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a12", {});
    tool.Play("-pdinfo -nosmart -a12", {});
    CMSRAID_PDInfoGetter getter("4.0");
    CItems items;
    EXPECT_TRUE(getter.GetInfo(12, items));
    EXPECT_EQ(items.Text(), "");
}

TEST_F(PDInfoGetter, RunsTheCommandAsItStandsWithoutAController) {
    CStandInTool tool;
    tool.Play("-pdinfo -a%s", {.out = "PD3(LD0)\n### General Information ###\n"});
    CMSRAID_PDInfoGetter getter;
    CItems items;
    EXPECT_TRUE(getter.GetInfo(items));
    EXPECT_EQ(items.size(), 6U);
}

TEST_F(PDInfoGetter, EmptyReportGivesNoItems) {
    const CRead run = Run("");
    EXPECT_TRUE(run.result);
    EXPECT_EQ(run.items, "");
}

TEST_F(PDInfoGetter, AppendsBehindWhatTheListHolds) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -a0", {.out = "PD3(GHS)\n"});
    CMSRAID_PDInfoGetter getter;
    CItems items;
    AddItem(items, "", "first", "");
    EXPECT_TRUE(getter.GetInfo(0, items));
    EXPECT_EQ(items.Text(), " | first |  | TRUE\n | Physical Drive Information |  | TRUE\n");
}

TEST_F(PDInfoGetter, ForgetsTheGroupsOfTheRunBefore) {
    CStandInTool tool;
    const std::string report = "PD3(LD0)\n### General Information ###\nTemperature : 1C\n";
    tool.Play("-ldpdinfo -a0", {.out = GROUPS});
    tool.Play("-pdinfo -a0", {.out = report});
    tool.Play("-ldpdinfo -a1", {.out = "RG No. : RG7\n>>PD4(LD0)\n"});
    tool.Play("-pdinfo -a1", {.out = report});
    CMSRAID_PDInfoGetter getter;
    CItems first;
    CItems second;
    ASSERT_TRUE(getter.GetInfo(0, first));
    ASSERT_TRUE(getter.GetInfo(1, second));
    EXPECT_NE(first.Text().find("| RG No. | RG0 |"), std::string::npos);
    EXPECT_NE(second.Text().find("| RG No. | - |"), std::string::npos);
    EXPECT_EQ(second.size(), 6U);
}

// --- failures ---

TEST_F(PDInfoGetter, GroupLookUpThatFailsEndsTheRun) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = "Error - broken\n"});
    const CRead run = Run();
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.items, "");
    EXPECT_EQ(run.errCode, "01");
    EXPECT_EQ(run.errDetail, "krzcli -ldpdinfo -a0");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "2: KRZ CLI has an error(krzcli -ldpdinfo -a0).\n"
              "2: Failed to execute krzcli command 00000001.\n"
              "2: CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (ret=00000000).\n");
}

TEST_F(PDInfoGetter, GroupReportThatIsGoneEndsTheRun) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.run = REMOVE_RESULT_FILES});
    const CRead run = Run();
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.errCode, "03");
    EXPECT_EQ(run.errDetail, "");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "2: Failed to open file output by krzcli(RESULTFILE).\n"
              "2: Failed to delete file(RESULTFILE).\n"
              "2: CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (ret=00000000).\n");
}

TEST_F(PDInfoGetter, LookUpErrorsReplaceThoseOfTheRunBefore) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = "Error - broken\n"});
    tool.Play("-ldpdinfo -a1", {.run = REMOVE_RESULT_FILES});
    CMSRAID_PDInfoGetter getter;
    CItems items;
    EXPECT_FALSE(getter.GetInfo(0, items));
    EXPECT_FALSE(getter.GetInfo(1, items));
    EXPECT_EQ(getter.ErrCode(), "03");
    EXPECT_EQ(getter.ErrDetail(), "");
}

TEST_F(PDInfoGetter, ToolThatKeepsFailingIsTriedThreeTimes) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    for (int i = 0; i < 3; ++i) {
        tool.Play("-pdinfo -a0", {.status = 3});
    }
    const CRead run = Run();
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.items, "");
    EXPECT_EQ(run.errCode, "01");
    EXPECT_EQ(run.errDetail, "krzcli -pdinfo -a0");
    EXPECT_EQ(FakeComLib().sleeps, (std::vector<unsigned long>{1000, 1000}));
    EXPECT_EQ(TraceTextWithoutFlow(),
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "1: execute krzcli command.(krzcli -pdinfo -a0)\n"
              "2: Failed to execute krzcli command.(krzcli -pdinfo -a0,cliRtn=3)\n"
              "2: Failed to execute krzcli command ret=00000001.\n");
}

TEST_F(PDInfoGetter, ReportThatIsGoneFails) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -a0", {.run = REMOVE_RESULT_FILES});
    const CRead run = Run();
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.errCode, "03");
    EXPECT_EQ(run.errDetail, "");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "1: execute krzcli command.(krzcli -pdinfo -a0)\n"
              "2: Failed to open file output by krzcli(RESULTFILE).\n"
              "2: Failed to delete file(RESULTFILE).\n");
}

TEST_F(PDInfoGetter, MissingToolFailsAtTheLookUp) {
    const CRead run = Run();
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.errCode, "01");
    EXPECT_EQ(run.errDetail, "krzcli -ldpdinfo -a0");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "2: KRZ is not installed.\n"
              "2: Failed to execute krzcli command 00000003.\n"
              "2: Failed to delete file(RESULTFILE).\n"
              "2: CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (ret=00000000).\n");
}

TEST_F(PDInfoGetter, BadReportsAreRejectedWithTheirReason) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"header_without_bracket", "ParsePDLDNo format error.(PD0LD0)"},
        {"header_ends_at_bracket", "ParsePDLDNo format error.(PD1()"},
        {"ld_without_closing_bracket", "ParsePDLDNo format error.(PD0(LD0)"},
        {"dedicated_spare_without_group", "ParsePDLDNo is FAILED.(PD0(DHS))"},
        {"title_before_drive", "m_RaidList size is zero."},
    };
    for (const auto& [name, reason] : rows) {
        std::filesystem::remove_all(TOOL_DIR);
        ResetFakeComLib();
        const CRead run = Run(GoldenBad("pd/" + name + ".txt"), "RG No. : RG0\n>>PD0(LD0)\n");
        EXPECT_FALSE(run.result) << name;
        EXPECT_EQ(run.items, "") << name;
        EXPECT_EQ(run.errCode, "04") << name;
        EXPECT_EQ(run.errDetail, "") << name;
        EXPECT_EQ(TraceTextWithoutFlow(),
                  "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
                  "1: execute krzcli command.(krzcli -pdinfo -a0)\n"
                  "2: " +
                      reason +
                      "\n"
                      "2: CreateRAIDItem is FAILED (ret=00000000).\n"
                      "2: Failed to parse RAID Information ret=00000000.\n")
            << name;
    }
}

TEST_F(PDInfoGetter, GetterWorksAgainAfterARejectedReport) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -a0", {.out = "PD0(GHS)\nPD1(GHS)\nPD2\n"});
    tool.Play("-ldpdinfo -a1", {});
    tool.Play("-pdinfo -a1", {.out = "PD3(GHS)\n### General Information ###\n"});
    CMSRAID_PDInfoGetter getter;
    CItems items;
    EXPECT_FALSE(getter.GetInfo(0, items));
    EXPECT_TRUE(getter.GetInfo(1, items));
    EXPECT_EQ(items.Text(), GHS_HEAD + InGeneral("Temperature", "", "FALSE"));
}

TEST_F(PDInfoGetter, FailedStreamIsRejectedAtEverySection) {
    CParser parser;
    parser.AddRootItem();
    std::ifstream failed("/opt/tarmica/none");
    ASSERT_TRUE(failed.fail());
    EXPECT_FALSE(parser.ParseGeneralnfo(failed, ""));
    EXPECT_FALSE(parser.ParseSMARTInfo(failed, ""));
    EXPECT_EQ(ItemText(parser.Items()), " | Physical Drive Information |  | TRUE\n");
    EXPECT_FALSE(parser.ParseSlotInfo(failed, ""));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | Enclosure ID |  | FALSE\n");
    EXPECT_EQ(TraceTextWithoutFlow(), "2: Invalid Arg.\n2: Invalid Arg.\n2: Invalid Arg.\n");
}

TEST_F(PDInfoGetter, RejectedLineRejectsTheReport) {
    const std::string rejected = "CreateRAIDItem is FAILED (ret=00000000).";
    const std::string pair = "ParseKeyValue is FAILED (ret=00000000).";
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
        {"BAD : 1\n", {rejected}},
        {"### BAD ###\n", {rejected}},
        {"### General Information ###\nBAD : 1\n", {pair, rejected}},
        {"### Slot Information ###\nBAD : 1\n", {pair, rejected}},
    };
    for (const auto& [lines, failures] : rows) {
        ResetFakeComLib();
        CRejectingParser parser;
        EXPECT_FALSE(parser.ParseText("PD3(GHS)\n" + lines + "A : 1\n")) << lines;
        EXPECT_EQ(FakeComLib().Traces(2), failures) << lines;
        EXPECT_EQ(ItemText(parser.Items()).find("Temperature"), std::string::npos) << lines;
    }
}

TEST_F(PDInfoGetter, PlaceholdersStandUnderTheCurrentSection) {
    CParser parser;
    parser.AddRootItem();
    std::ifstream stream = StreamOf("PD Status : x\n");
    EXPECT_TRUE(parser.ParseGeneralnfo(stream, ""));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | PD Status | UNKNOWN | TRUE\n"
              "Physical Drive Information | PD Status(Detail) | x | TRUE\n"
              "Physical Drive Information | Temperature |  | FALSE\n");
}

// --- the header line ---

TEST_F(PDInfoGetter, HeaderGivesNumberGroupAndLogicalDriveInTheirOrder) {
    struct CRow {
        std::string header;
        std::vector<std::string> items;  // name | value, below General Information
    };
    const std::vector<CRow> rows = {
        {"PD3(LD0)", {"PD No. | PD3", "RG No. | RG0", "LD No. | LD0"}},
        {"PD3 (LD0)", {"PD No. | PD3", "RG No. | RG0", "LD No. | LD0"}},
        {"PD3\t (LD0) \r", {"PD No. | PD3", "RG No. | RG0", "LD No. | LD0"}},
        {"PD03(LD1, LD2) more)", {"PD No. | PD03", "RG No. | RG0", "LD No. | LD1, LD2"}},
        {"PD3 x(LD)", {"PD No. | PD3 x", "RG No. | RG0", "LD No. | LD"}},
        {"PD3(LD 0 )", {"PD No. | PD3", "RG No. | RG0", "LD No. | LD 0 "}},
        {"PD4(LD0)", {"PD No. | PD4", "RG No. | -", "LD No. | LD0"}},
        {"PD99999999999999999999(LD0)",
         {"PD No. | PD99999999999999999999", "RG No. | -", "LD No. | LD0"}},
        {"PD3(GHS)", {"PD No. | PD3", "RG No. | -", "LD No. | GHS"}},
        {"PD3(GHS for all", {"PD No. | PD3", "RG No. | -", "LD No. | GHS"}},
        {"PD3(RLD7)", {"PD No. | PD3", "RG No. | -", "LD No. | RLD"}},
        {"PD3(DHS RG1)", {"PD No. | PD3", "RG No. | RG1", "LD No. | DHS"}},
        {"PD3(DHSRG12 )", {"PD No. | PD3", "RG No. | RG12", "LD No. | DHS"}},
        {"PD3(DHS for sRG0)", {"PD No. | PD3", "RG No. | sRG0", "LD No. | DHS"}},
        {"PD3(DHS RG2 sRG1)", {"PD No. | PD3", "RG No. | sRG1", "LD No. | DHS"}},
        {"PD3(DHS RG1 RG2)", {"PD No. | PD3", "RG No. | RG1 RG2", "LD No. | DHS"}},
        {"PD3(DHS sRG1 sRG2)", {"PD No. | PD3", "RG No. | sRG1 sRG2", "LD No. | DHS"}},
        {"PD3(DHS RG1) RG2)", {"PD No. | PD3", "RG No. | RG1) RG2", "LD No. | DHS"}},
        {"PD3(DHS RG1", {"PD No. | PD3", "RG No. | RG", "LD No. | DHS"}},
        {"PD3(DHS RG", {"PD No. | PD3", "RG No. | R", "LD No. | DHS"}},
        {"PD3(Unassigned)", {"PD No. | PD3", "LD No. | None", "RG No. | -"}},
        {"PD3()", {"PD No. | PD3", "LD No. | None", "RG No. | -"}},
        {"PD3( LD0)", {"PD No. | PD3", "LD No. | None", "RG No. | -"}},
        {"PD3(ghs)", {"PD No. | PD3", "LD No. | None", "RG No. | -"}},
    };
    for (const CRow& row : rows) {
        std::filesystem::remove_all(TOOL_DIR);
        const CRead run = Run(row.header + "\n### General Information ###\nTemperature : 1C\n");
        std::string expected =
            " | Physical Drive Information |  | TRUE\n"
            "Physical Drive Information | ### General Information ### |  | TRUE\n";
        for (const std::string& item : row.items) {
            expected += "### General Information ### | " + item + " | TRUE\n";
        }
        EXPECT_EQ(run.items, expected + InGeneral("Temperature", "1C")) << row.header;
    }
}

TEST_F(PDInfoGetter, DriveWithoutAGroupIsTracedAndGoesOn) {
    EXPECT_TRUE(Run("PD4(LD0)\r\n").result);
    EXPECT_EQ(FakeComLib().Traces(2),
              (std::vector<std::string>{"m_MapRGNo search error.(PD4(LD0)\r)"}));
}

TEST_F(PDInfoGetter, DriveWithoutAGroupAndBracketIsTracedTwice) {
    EXPECT_EQ(Run("PD4(LD0\n").errCode, "04");
    EXPECT_EQ(FakeComLib().Traces(2),
              (std::vector<std::string>{"m_MapRGNo search error.(PD4(LD0)",
                                        "ParsePDLDNo format error.(PD4(LD0)",
                                        "CreateRAIDItem is FAILED (ret=00000000).",
                                        "Failed to parse RAID Information ret=00000000."}));
}

TEST_F(PDInfoGetter, HeaderNeedsTextBeforeItsBracket) {
    CParser parser;
    parser.AddRootItem();
    std::ifstream stream;
    EXPECT_FALSE(parser.ParsePDLDNo(stream, "PD(LD0)"));
    EXPECT_FALSE(parser.ParsePDLDNo(stream, ""));
    EXPECT_FALSE(parser.ParsePDLDNo(stream, "PD"));
    EXPECT_EQ(TraceTextWithoutFlow(),
              "2: ParsePDLDNo format error.(PD(LD0))\n"
              "2: ParsePDLDNo format error.()\n"
              "2: ParsePDLDNo format error.(PD)\n");
}

TEST_F(PDInfoGetter, HeaderIsTracedAsItStands) {
    for (const std::string header :
         {"PD3 \t\r", "PD3( \r", "PD3(LD0 \r", "PD3(DHS) \r", "PD3(GHS) \r"}) {
        CParser parser;
        ResetFakeComLib();
        const bool result = parser.ParseText(header + "\n");
        EXPECT_EQ(result, header == "PD3(GHS) \r");
        const std::vector<std::string> flow = FakeComLib().Traces(4);
        ASSERT_GT(flow.size(), 4U);
        EXPECT_EQ(flow[4], "CMSRAID_PDInfoGetter::ParsePDLDNo [START], " + header);
        for (const std::string& failure : FakeComLib().Traces(2)) {
            EXPECT_TRUE(failure.starts_with("CreateRAIDItem") ||
                        failure.ends_with(".(" + header + ")"))
                << failure;
        }
    }
}

TEST_F(PDInfoGetter, RejectedHeaderLeavesItsItemsHeld) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"PD3", ""},
        {"PD(LD0)", ""},
        {"PD3(", InGeneral("PD No.", "PD3")},
        {"PD3(LD0", InGeneral("PD No.", "PD3") + InGeneral("RG No.", "-")},
        {"PD3(DHS)", InGeneral("PD No.", "PD3")},
    };
    for (const auto& [header, items] : rows) {
        CParser parser;
        parser.AddRootItem();
        std::ifstream stream = StreamOf("Temperature : 1C\n");
        EXPECT_FALSE(parser.ParsePDLDNo(stream, header));
        EXPECT_TRUE(parser.ParseGeneralnfo(stream, ""));
        EXPECT_EQ(ItemText(parser.Items()),
                  " | Physical Drive Information |  | TRUE\n" + items +
                      "Physical Drive Information | Temperature | 1C | TRUE\n")
            << header;
    }
}

TEST_F(PDInfoGetter, RootsAreMadeByTheVirtualOperation) {
    CRejectingParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\nPD4(GHS)\n"));
    EXPECT_EQ(parser.rootCalls, 2);
}

TEST_F(PDInfoGetter, HeaderNeedsADigitRightBehindItsHead) {
    for (const char* line : {"PD(LD0)", "PD 3(LD0)", "PD", "PDx(LD0)", " PD3(LD0)", "pd3(LD0)"}) {
        CParser parser;
        EXPECT_TRUE(parser.ParseText(std::string(line) + "\n")) << line;
        EXPECT_EQ(ItemText(parser.Items()), "") << line;
    }
}

TEST_F(PDInfoGetter, NoHeaderLineWithAColonIsAnOrdinaryPair) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\nPD(LD0) : x\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | PD(LD0) | x | TRUE\n");
}

TEST_F(PDInfoGetter, HeadersWithoutASectionAddUpToTheNextOne) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD1(GHS)\nPD2(RLD)\n### General Information ###\nTemperature : 1C\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | ### General Information ### |  | TRUE\n" +
                  InGeneral("PD No.", "PD1") + InGeneral("RG No.", "-") +
                  InGeneral("LD No.", "GHS") + InGeneral("PD No.", "PD2") +
                  InGeneral("RG No.", "-") + InGeneral("LD No.", "RLD") +
                  InGeneral("Temperature", "1C"));
}

// --- lines outside the known sections ---

TEST_F(PDInfoGetter, ControllerHeaderIsIgnoredWhereverItStands) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("RAID Controller : 0\nPD3(GHS)\nRAID Controller ID : 1\n"
                         "RAID Controller without\n"));
    EXPECT_EQ(ItemText(parser.Items()), " | Physical Drive Information |  | TRUE\n");
}

TEST_F(PDInfoGetter, PairsBeforeTheFirstDriveAreIgnored) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("Tool : x\n: y\n\nPD3(GHS)\n: y\nKey : value : more\nEnd:\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | Key | value : more | TRUE\n"
              "Physical Drive Information | End |  | TRUE\n");
}

TEST_F(PDInfoGetter, UnknownSectionsAreShownAsTheyAre) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### Other ###  \nA : 1\n\nB : 2\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | ### Other ### |  | TRUE\n"
              "### Other ### | A | 1 | TRUE\n"
              "### Other ### | B | 2 | TRUE\n");
}

TEST_F(PDInfoGetter, TitleBehindABlankIsNoTitle) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n ### Other ###\n"));
    EXPECT_EQ(ItemText(parser.Items()), " | Physical Drive Information |  | TRUE\n");
}

// --- General Information ---

TEST_F(PDInfoGetter, DetailedStatusGivesTheBasicOne) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"ONLINE", "NO ERROR"},        {"COPYBACK", "NO ERROR"}, {"Unconfig GOOD", "NO ERROR"},
        {"HOT SPARE", "NO ERROR"},     {"OFFLINE", "ERROR"},     {"Unconfig BAD", "ERROR"},
        {"FAILED", "ERROR"},           {"REBUILD", "REBUILD"},   {"", "UNKNOWN"},
        {"Online", "UNKNOWN"},         {"ONLINE x", "UNKNOWN"},  {"ONLIN", "UNKNOWN"},
        {"Unconfig  GOOD", "UNKNOWN"},
    };
    for (const auto& [detail, basic] : rows) {
        EXPECT_EQ(General("PD Status : " + detail + "\nTemperature : 1C\n"),
                  GHS_HEAD + InGeneral("PD Status", basic) +
                      InGeneral("PD Status(Detail)", detail) + InGeneral("Temperature", "1C"));
    }
}

TEST_F(PDInfoGetter, EveryStatusLineGivesBothItems) {
    EXPECT_EQ(General("PD Status : ONLINE\nPD Status : FAILED\nTemperature : 1C\n"),
              GHS_HEAD + InGeneral("PD Status", "NO ERROR") +
                  InGeneral("PD Status(Detail)", "ONLINE") + InGeneral("PD Status", "ERROR") +
                  InGeneral("PD Status(Detail)", "FAILED") + InGeneral("Temperature", "1C"));
}

TEST_F(PDInfoGetter, OtherKeysThatBeginLikeTheStatusPassThrough) {
    EXPECT_EQ(General("PD Status(x) : ONLINE\npd status : ONLINE\nTemperature : 1C\n"),
              GHS_HEAD + InGeneral("PD Status(x)", "ONLINE") + InGeneral("pd status", "ONLINE") +
                  InGeneral("Temperature", "1C"));
}

TEST_F(PDInfoGetter, MissingTemperatureStandsBeforeThePowerStatus) {
    EXPECT_EQ(General("A : 1\nPower Status : Active\nB : 2\n"),
              GHS_HEAD + InGeneral("A", "1") + InGeneral("Temperature", "", "FALSE") +
                  InGeneral("Power Status", "Active") + InGeneral("B", "2"));
}

TEST_F(PDInfoGetter, MissingTemperatureStandsBeforeTheLastPowerStatus) {
    EXPECT_EQ(General("Power Status : a\nPower Status : b\n"),
              GHS_HEAD + InGeneral("Power Status", "a") + InGeneral("Temperature", "", "FALSE") +
                  InGeneral("Power Status", "b"));
}

TEST_F(PDInfoGetter, MissingTemperatureAndPowerStatusEndTheSection) {
    EXPECT_EQ(General("A : 1\n\nB : 2\n"), GHS_HEAD + InGeneral("A", "1") +
                                               InGeneral("Temperature", "", "FALSE") +
                                               InGeneral("B", "2"));
}

TEST_F(PDInfoGetter, EmptyTemperatureLineIsATemperature) {
    EXPECT_EQ(General("Temperature :\nPower Status : a\n"),
              GHS_HEAD + InGeneral("Temperature", "") + InGeneral("Power Status", "a"));
}

TEST_F(PDInfoGetter, GeneralSectionSkipsLinesWithoutAKey) {
    EXPECT_EQ(General("------\n: 1\n  : 2\n  Temperature  :\t 31C \t\r\n"),
              GHS_HEAD + InGeneral("Temperature", "31C"));
}

TEST_F(PDInfoGetter, BlankLineOfSpaceEndsTheSection) {
    EXPECT_EQ(General("A : 1\n \t\r\nTemperature : 1C\n"),
              GHS_HEAD + InGeneral("A", "1") + InGeneral("Temperature", "", "FALSE") +
                  InGeneral("Temperature", "1C"));
}

TEST_F(PDInfoGetter, LastLineNeedsNoLineFeed) {
    EXPECT_EQ(General("Temperature : 1C"), GHS_HEAD + InGeneral("Temperature", "1C"));
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### General Information ###"));
    EXPECT_EQ(ItemText(parser.Items()), GHS_HEAD + InGeneral("Temperature", "", "FALSE"));
}

TEST_F(PDInfoGetter, InterfaceTypeOfTheLastDriveIsKept) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### General Information ###\nInterface Type : SAS\n\n"
                         "PD4(GHS)\n### General Information ###\nInterface Type : SATA\n\n"
                         "### Slot Information ###\nInterface Type : other\n"));
    EXPECT_EQ(parser.IFType(), "SATA");
}

TEST_F(PDInfoGetter, InterfaceTypeOutlivesASectionWithoutOne) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### General Information ###\nInterface Type : SAS\n\n"
                         "PD4(GHS)\n### General Information ###\nA : 1\n"));
    EXPECT_EQ(parser.IFType(), "SAS");
}

TEST_F(PDInfoGetter, OnlyTheExactTitlesAreSpecial) {
    for (const std::string title :
         {"### General Information ### x", "### Slot Information ### x"}) {
        CParser parser;
        EXPECT_TRUE(parser.ParseText("PD3(GHS)\n" + title + "\nA : 1\n"));
        EXPECT_EQ(ItemText(parser.Items()),
                  " | Physical Drive Information |  | TRUE\n"
                  "Physical Drive Information | " +
                      title + " |  | TRUE\n" + title + " | A | 1 | TRUE\n");
    }
}

TEST_F(PDInfoGetter, SecondGeneralSectionHasNoHeaderItems) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### General Information ###\nTemperature : 1C\n\n"
                         "### General Information ###\nA : 1\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              GHS_HEAD + InGeneral("Temperature", "1C") +
                  "Physical Drive Information | ### General Information ### |  | TRUE\n" +
                  InGeneral("A", "1") + InGeneral("Temperature", "", "FALSE"));
}

TEST_F(PDInfoGetter, SectionWithoutAnEmptyLineSwallowsTheNext) {
    EXPECT_EQ(General("Temperature : 1C\n### Slot Information ###\nBay : 7\nPD4(GHS)\n"
                      "### General Information ###\nTemperature : 2C\n"),
              GHS_HEAD + InGeneral("Temperature", "1C") + InGeneral("Bay", "7") +
                  InGeneral("Temperature", "2C"));
}

// --- Slot Information ---

TEST_F(PDInfoGetter, SlotSectionIsRenamedAndBeginsWithItsPlaceholder) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### Slot Information ###\r\nSlot : 1\nline\n: x\n"
                         "Enclosure ID : 252\n### Other ###\nA : 1\n\nB : 2\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | ### Enclosure Properties Information ### |  | TRUE\n"
              "### Enclosure Properties Information ### | Enclosure ID |  | FALSE\n"
              "### Enclosure Properties Information ### | Slot | 1 | TRUE\n"
              "### Enclosure Properties Information ### | Enclosure ID | 252 | TRUE\n"
              "### Enclosure Properties Information ### | A | 1 | TRUE\n"
              "### Enclosure Properties Information ### | B | 2 | TRUE\n");
}

TEST_F(PDInfoGetter, SlotTitleAtTheEndOfTheReportGetsItsPlaceholder) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### Slot Information ###"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | ### Enclosure Properties Information ### |  | TRUE\n"
              "### Enclosure Properties Information ### | Enclosure ID |  | FALSE\n");
}

// --- SMART Information ---

const std::string ROOT = " | Physical Drive Information |  | TRUE\n";

TEST_F(PDInfoGetter, SmartSectionShowsNothingUpToTheNextDrive) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### SMART Information ###\nA : 1\n\nB : 2\n"
                         "### Slot Information ###\nC : 3\nPD4(GHS)\nD : 4\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              ROOT + ROOT + "Physical Drive Information | D | 4 | TRUE\n");
}

TEST_F(PDInfoGetter, SmartSectionEndsWithTheReport) {
    for (const char* end : {"### SMART Information ###", "### SMART Information ###\n",
                            "### SMART Information ###\nA : 1", "### SMART Information ###\n\n"}) {
        CParser parser;
        EXPECT_TRUE(parser.ParseText(std::string("PD3(GHS)\n") + end));
        EXPECT_EQ(ItemText(parser.Items()), ROOT) << end;
    }
}

TEST_F(PDInfoGetter, SmartTitleMayHaveMoreText) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### SMART Information ### (SAS)\nA : 1\n"));
    EXPECT_EQ(ItemText(parser.Items()), ROOT);
}

TEST_F(PDInfoGetter, HeaderWithoutALineFeedBehindSmartIsReadAgain) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### SMART Information ###\nA : 1\nPD4(GHS)"));
    EXPECT_EQ(ItemText(parser.Items()), ROOT + ROOT);
    // No line but the drive's own was read again.
    const std::vector<std::string> flow = FakeComLib().Traces(4);
    EXPECT_EQ(std::count(flow.begin(), flow.end(), "CMSRAID_PDInfoGetter::CreateRAIDItem [START]"),
              3);
}

TEST_F(PDInfoGetter, RejectedHeaderBehindSmartIsRejected) {
    for (const char* header : {"PD4", "PD4\n", "PD4(\n", "PD4("}) {
        CParser parser;
        EXPECT_FALSE(
            parser.ParseText(std::string("PD3(GHS)\n### SMART Information ###\n") + header));
    }
}

TEST_F(PDInfoGetter, StatusLineInSmartIsShownUnderTheRemovedTitle) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### SMART Information ###\nA : 1\n"
                         "PD Status : x\nB : 2\n### Other ###\nC : 3\n"));
    EXPECT_EQ(ItemText(parser.Items()), ROOT +
                                            "### SMART Information ### | PD Status | x | TRUE\n"
                                            "### SMART Information ### | B | 2 | TRUE\n"
                                            "Physical Drive Information | ### Other ### |  | TRUE\n"
                                            "### Other ### | C | 3 | TRUE\n");
}

TEST_F(PDInfoGetter, IndentedHeaderEndsSmartButIsNoHeader) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### SMART Information ###\nA : 1\n\t PD4(GHS)\r\n"
                         "B : 2\n"));
    EXPECT_EQ(ItemText(parser.Items()), ROOT + "### SMART Information ### | B | 2 | TRUE\n");
}

TEST_F(PDInfoGetter, ManySmartSectionsInManyRunsLeaveTheirTitlesReadable) {
    CStandInTool tool;
    const std::string report =
        "PD3(GHS)\n### SMART Information ###\nPD Status : x\n### SMART Information ###\nA : 1\n"
        "PD Status : y\n";
    for (const char* number : {"0", "1"}) {
        tool.Play(std::string("-ldpdinfo -a") + number, {});
        tool.Play(std::string("-pdinfo -a") + number, {.out = report});
    }
    CMSRAID_PDInfoGetter getter;
    CItems items;
    const std::string expected = ROOT +
                                 "### SMART Information ### | PD Status | x | TRUE\n"
                                 "### SMART Information ### | PD Status | y | TRUE\n";
    ASSERT_TRUE(getter.GetInfo(0, items));
    ASSERT_TRUE(getter.GetInfo(1, items));
    EXPECT_EQ(items.Text(), expected + expected);
}

// --- robustness ---

// What holds of every list that a getter hands out, whatever the tool printed.
void ExpectSoundTree(std::list<CItemDisp*>& items) {
    for (const CItemDisp* item : items) {
        const bool isRoot = item->ParentName().empty();
        EXPECT_EQ(isRoot, item->ItemName() == CMSRAID_PDInfoGetter::PD_INFO_ROOT_NAME &&
                              item->ItemValue().empty())
            << ItemText(*item);
        EXPECT_TRUE(item->Enable() == "TRUE" ||
                    (item->Enable() == "FALSE" && item->ItemValue().empty()))
            << ItemText(*item);
    }
    EXPECT_TRUE(items.empty() || items.front()->ParentName().empty());
}

TEST_F(PDInfoGetter, ReportCutAnywhereIsReadOrRejected) {
    const std::string report = Golden("pd/every_kind.txt");
    for (size_t size = 0; size <= report.size(); ++size) {
        CParser parser;
        const bool result = parser.ParseText(report.substr(0, size));
        // Only a cut within a header line can be rejected.
        const size_t lineStart = size == 0 ? 0 : report.rfind('\n', size - 1) + 1;
        const bool inHeader = report.compare(lineStart, 2, "PD") == 0 && size > lineStart + 2 &&
                              report[lineStart + 2] != ' ';
        EXPECT_TRUE(result || inHeader) << size;
        ExpectSoundTree(parser.Items());
    }
}

TEST_F(PDInfoGetter, RunOnAReportCutAnywhereIsReadOrFailsCleanly) {
    ExpectEveryBeginningIsHandled(
        [] { return std::make_unique<CMSRAID_PDInfoGetter>("4.0"); },
        "PD3(LD0)\n### General Information ###\nPD Status : ONLINE\n\n"
        "### Slot Information ###\nBay : 7\n\n### SMART Information ###\nA : 1\n"
        "PD4(DHS RG1)\n### General Information ###\n");
}

TEST_F(PDInfoGetter, DamagedReportsAreReadOrRejected) {
    const std::string report = Golden("pd/every_kind.txt");
    CRandom random(20260101);
    for (int round = 0; round < 2000; ++round) {
        CParser parser;
        parser.ParseText(DamagedReport(DamagedReport(report, random), random));
        ExpectSoundTree(parser.Items());
    }
}

TEST_F(PDInfoGetter, TextsEndAtAnEmbeddedNul) {
    using namespace std::string_literals;
    EXPECT_EQ(General("PD Status : ONLINE\0x\nTemperature\0x : 1C\n"s),
              GHS_HEAD + InGeneral("PD Status", "NO ERROR") +
                  InGeneral("PD Status(Detail)", "ONLINE") + InGeneral("Temperature", "1C"));
}

TEST_F(PDInfoGetter, TitleIsComparedAsItsItemShowsIt) {
    using namespace std::string_literals;
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### General Information ###\0 x\nTemperature : 1C\n\n"
                         "### Slot Information ###\0 x\nBay : 7\n\n"
                         "### SMART Information ###\0 x\nA : 1\n"s));
    EXPECT_EQ(
        ItemText(parser.Items()),
        GHS_HEAD + InGeneral("Temperature", "1C") +
            "Physical Drive Information | ### Enclosure Properties Information ### |  | TRUE\n"
            "### Enclosure Properties Information ### | Enclosure ID |  | FALSE\n"
            "### Enclosure Properties Information ### | Bay | 7 | TRUE\n");
}

TEST_F(PDInfoGetter, VeryLongLinesPassThrough) {
    const std::string text(100000, 'x');
    EXPECT_EQ(General(text + " : " + text + "\nTemperature : 1C\n"),
              GHS_HEAD + InGeneral(text, text) + InGeneral("Temperature", "1C"));
}

}  // namespace
