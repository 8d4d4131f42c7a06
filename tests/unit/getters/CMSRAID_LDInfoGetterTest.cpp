#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "GetterFixture.h"
#include "ReportStress.h"
#include "TraceText.h"
#include "base/Trace.h"
#include "getters/CMSRAID_LDInfoGetter.h"

using qortest::CItems;
using qortest::CRead;
using qortest::FakeComLib;
using qortest::StreamOf;
using qortest::TraceText;

namespace {

using CTexts = std::vector<std::string>;
using CGroups = std::map<long, std::string>;

constexpr int FAILURE = CTraceUtility::TRACE_DBG_FAILURE;

const std::string ROOT = " | Logical Drive Information |  | TRUE\n";
const std::string GENERAL = "Logical Drive Information | ### General Information ### |  | TRUE\n";
const std::string SETTINGS =
    "Logical Drive Information | ### LD Settings Information ### |  | TRUE\n";
const std::string GENERAL_TITLE = "### General Information ###\n";
const std::string SETTINGS_TITLE = "### LD Settings Information ###\n";
// A group without lines of its own, up to the title of its first section.
const std::string GROUP = "RG0\n\n" + GENERAL_TITLE;

std::string Item(const std::string& parent, const std::string& name, const std::string& value) {
    return parent + " | " + name + " | " + value + " | TRUE\n";
}

std::string GeneralItem(const std::string& name, const std::string& value) {
    return Item("### General Information ###", name, value);
}

std::string GeneralPlaceholder(const std::string& name) {
    return "### General Information ### | " + name + " |  | FALSE\n";
}

const std::string NO_ASSOC = GeneralPlaceholder("Associated CacheCade LD");
const std::string POLICY_PLACEHOLDER =
    "### LD Settings Information ### | Default Access Policy |  | FALSE\n";

// The items of one LD in brackets, below `list`.
std::string LDItems(const std::string& list, const std::string& number, const std::string& name,
                    const std::string& capacity, const std::string& state) {
    return GeneralItem(list, "") + Item(list, "LD No.", number) + Item(list, "State", state) +
           Item(list, "Capacity", capacity) + Item(list, "Name", name);
}

using CTestGetter = qortest::CRejectingParserOf<CMSRAID_LDInfoGetter>;

class CMSRAID_LDInfoGetterTest : public qortest::COneReportFixture<CMSRAID_LDInfoGetter> {
protected:
    CMSRAID_LDInfoGetterTest() : COneReportFixture("-ldpdinfo -a0") {}

    // The groups of the drives in a report that must be accepted.
    CGroups GroupsIn(const std::string& report) {
        CMSRAID_LDInfoGetter getter;
        CGroups groups;
        m_Tool->Play("-ldpdinfo -a0", {.out = report});
        EXPECT_TRUE(getter.GetPDRGNo(0, groups));
        EXPECT_EQ(getter.ErrCode(), "");
        return groups;
    }
    // A failed request for the groups, with its code, detail and traces but those of flow.
    void ExpectGroupsFail(const std::string& errCode, const std::string& traces) {
        CMSRAID_LDInfoGetter getter;
        qortest::ResetFakeComLib();
        CGroups groups = {{1, "mine"}};
        EXPECT_FALSE(getter.GetPDRGNo(3, groups));
        EXPECT_EQ(groups, (CGroups{{1, "mine"}}));
        EXPECT_EQ(getter.ErrCode(), errCode);
        EXPECT_EQ(getter.ErrDetail(), errCode == "03" ? "" : "krzcli -ldpdinfo -a3");
        EXPECT_EQ(qortest::TraceTextWithoutFlow(), traces);
    }
};

// --- constants and life cycle

TEST_F(CMSRAID_LDInfoGetterTest, ConstantsAreTheToolsWords) {
    using G = CMSRAID_LDInfoGetter;
    const struct {
        const char* actual;
        const char* expected;
    } rows[] = {
        {G::LD_INFO_ROOT_NAME, "Logical Drive Information"},
        {G::LD_LDLIST_NAME_HEAD, ">LD"},
        {G::LD_PDLIST_NAME_HEAD, ">>PD"},
        {G::LD_ASSOC_CACHE_NAME, "Associated CacheCade LD"},
        {G::PD_NUM_NAME, "# of PD"},
        {G::LD_STRIPE_SIZE_NAME, "Stripe Size"},
        {G::LD_LIST_TITLE_NAME, "LD List"},
        {G::LD_PDLIST_TITLE_NAME, "PD List"},
        {G::LD_NAME_NAME, "Name"},
        {G::LD_CAPACITY_NAME, "Capacity"},
        {G::LD_STATE_NAME, "State"},
        {G::LD_ACCESS_POLICY_NAME_OLD, "Access Policy"},
        {G::LD_ACCESS_POLICY_NAME, "Default Access Policy"},
        {G::LD_SET_INFO_TITLE_NAME, "### LD Settings Information ###"},
        {G::RG_NO_HEAD, "RG"},
        {G::S_RG_NO_HEAD, "sRG"},
        {G::CACHE_RG_NO_HEAD, "scRG"},
        {G::LD_NO_NAME, "LD No."},
        {G::PD_NO_NAME, "PD No."},
        {G::RG_NO_NAME, "RG No."},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.actual, row.expected);
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, LifeIsTracedFromBaseToClassAndBack) {
    { const CMSRAID_LDInfoGetter getter; }
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]\n"
              "4: CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]\n"
              "4: CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]\n"
              "4: CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]\n"
              "4: CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]\n");
}

// --- golden reports

TEST_F(CMSRAID_LDInfoGetterTest, GoldenReportsGiveTheirItems) {
    for (const std::string& name : CTexts{"two_groups", "two_groups_crlf", "cachecade"}) {
        SCOPED_TRACE(name);
        CMSRAID_LDInfoGetter getter;
        m_Tool->Play("-ldpdinfo -a0", {.out = qortest::Golden("ld/" + name + ".txt")});
        CItems items;
        EXPECT_TRUE(getter.GetInfo(0, items));
        qortest::ExpectGoldenItems("golden/ld/" + name + ".items", items);
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, BadGoldenReportsFailWithTheirTraces) {
    ExpectRejected(qortest::GoldenBad("ld/title_first.txt"), {"m_RaidList size is zero."});
    ExpectRejected(qortest::GoldenBad("ld/ld_without_state.txt"),
                   {"Parse LDList Error(>LD0 (system))."});
    ExpectRejected(qortest::GoldenBad("ld/associated_without_capacity.txt"),
                   {"Parse Associated CacheCade LD Error(Associated CacheCade LD).",
                    "ParseAssocLD is FAILED (ret=00000000)."});
    ExpectRejected(qortest::GoldenBad("ld/ends_at_drive.txt"), {"Invalid Arg."});
    ExpectRejected(qortest::GoldenBad("ld/ends_at_group.txt"), {"Invalid Arg."});
}

TEST_F(CMSRAID_LDInfoGetterTest, CarriageReturnsLeaveNoTrace) {
    const std::string report = qortest::Golden("ld/two_groups.txt");
    EXPECT_EQ(Items(qortest::Golden("ld/two_groups_crlf.txt")), Items(report));
}

// --- drive numbers and their groups

TEST_F(CMSRAID_LDInfoGetterTest, DrivesAreMappedToTheirGroups) {
    EXPECT_EQ(GroupsIn(qortest::Golden("ld/two_groups.txt")),
              (CGroups{{0, "RG0"}, {1, "RG0"}, {2, "RG1"}, {3, "RG1"}, {4, "RG1"}}));
    EXPECT_EQ(GroupsIn(qortest::Golden("ld/two_groups_crlf.txt")),
              GroupsIn(qortest::Golden("ld/two_groups.txt")));
}

TEST_F(CMSRAID_LDInfoGetterTest, FirstGroupThatListsADriveWins) {
    EXPECT_EQ(GroupsIn("RG No. : RG0\n>>PD5 (a)\nRG No. : RG1\n>>PD5 (a)\n>>PD6 (a)\n"),
              (CGroups{{5, "RG0"}, {6, "RG1"}}));
}

TEST_F(CMSRAID_LDInfoGetterTest, EntryThatTheCallerHasIsKept) {
    CMSRAID_LDInfoGetter getter;
    CGroups groups = {{5, "mine"}};
    m_Tool->Play("-ldpdinfo -a12", {.out = "RG No. : RG0\n>>PD5 (a)\n>>PD6 (a)"});
    EXPECT_TRUE(getter.GetPDRGNo(12, groups));
    EXPECT_EQ(groups, (CGroups{{5, "mine"}, {6, "RG0"}}));
}

TEST_F(CMSRAID_LDInfoGetterTest, GroupAndDriveLinesAreRecognisedAfterTrimming) {
    const struct {
        std::string line;
        CGroups groups;
    } rows[] = {
        {">>PD1 (a)", {}},                                      // no group yet
        {"RG No. :\n>>PD1 (a)", {}},                            // nor a named one
        {"RG No. RG0\n>>PD1 (a)", {}},                          // no colon
        {"RG No. : RG0\nRG No. RG1\n>>PD1 (a)", {{1, "RG0"}}},  // likewise
        {"RG No. : RG0\nRG No. : \n>>PD1 (a)", {}},             // the group ended
        {" \tRG No. x : sRG1 : y \r\n\t >>PD 1 (a) \r", {{1, "sRG1 : y"}}},
        {"x RG No. : RG0\n>>PD1 (a)", {}},
        {"RG No. : RG0\n>>PD1", {}},
        {"RG No. : RG0\nx >>PD1 (a)", {}},
        {"RG No. : RG0\n>>PD(", {{0, "RG0"}}},
        {"RG No. : RG0\n>>PDx1 (a)", {{0, "RG0"}}},
        {"RG No. : RG0\n>>PD-1x(2 (3)", {{-1, "RG0"}}},
        {"RG No. : RG0\n>>PD99999999999999999999 (a)", {{LONG_MAX, "RG0"}}},
        {"", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(GroupsIn(row.line), row.groups);
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, GroupRequestIsTracedWithItsCommand) {
    CMSRAID_LDInfoGetter getter;
    qortest::ResetFakeComLib();
    CGroups groups;
    m_Tool->Play("-ldpdinfo -a0", {.out = "RG0\n"});
    EXPECT_TRUE(getter.GetPDRGNo(0, groups));
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_LDInfoGetter::GetPDRGNo [START]\n"
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "4: CMSRAID_LDInfoGetter::GetPDRGNo [END]\n");
}

TEST_F(CMSRAID_LDInfoGetterTest, FailingToolFailsTheGroupsAfterThreeAttempts) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        m_Tool->Play("-ldpdinfo -a3", {.out = "RG No. : RG0\n>>PD1 (a)\n", .status = 7});
    }
    ExpectGroupsFail("01",
                     "1: execute krzcli command.(krzcli -ldpdinfo -a3)\n"
                     "2: Failed to execute krzcli command.(krzcli -ldpdinfo -a3,cliRtn=7)\n"
                     "2: Failed to execute krzcli command 00000001.\n");
    EXPECT_EQ(FakeComLib().sleeps, std::vector<unsigned long>({1000, 1000}));
}

TEST_F(CMSRAID_LDInfoGetterTest, MissingToolFailsTheGroups) {
    std::filesystem::remove("/opt/tarmica/krz/cli/krzcli");
    ExpectGroupsFail("01",
                     "2: KRZ is not installed.\n"
                     "2: Failed to execute krzcli command 00000003.\n"
                     "2: Failed to delete file(RESULTFILE).\n");
}

TEST_F(CMSRAID_LDInfoGetterTest, ReportThatVanishedFailsTheGroups) {
    m_Tool->Play("-ldpdinfo -a3", {.run = "rm /opt/tarmica/qor/provider/tmp/MSRAID/*"});
    ExpectGroupsFail("03",
                     "1: execute krzcli command.(krzcli -ldpdinfo -a3)\n"
                     "2: Failed to open file output by krzcli(RESULTFILE).\n"
                     "2: Failed to delete file(RESULTFILE).\n");
}

// --- the run

TEST_F(CMSRAID_LDInfoGetterTest, CommandNamesTheControllerAndItemsAreAppended) {
    CMSRAID_LDInfoGetter getter;
    CItems items;
    m_Tool->Play("-ldpdinfo -a0", {.out = "RG0\n"});
    m_Tool->Play("-ldpdinfo -a127", {.out = "RG1\n"});
    EXPECT_TRUE(getter.GetInfo(0, items));
    EXPECT_TRUE(getter.GetInfo(127, items));
    EXPECT_EQ(items.Text(), ROOT + ROOT);
}

TEST_F(CMSRAID_LDInfoGetterTest, ToolThatReportsAnErrorFailsTheRun) {
    CMSRAID_LDInfoGetter getter;
    const CRead read = Read("Error - No such controller.\nRG0\n", getter);
    EXPECT_FALSE(read.result);
    EXPECT_EQ(read.items, "");
    EXPECT_EQ(read.errCode, "01");
    EXPECT_EQ(read.errDetail, "krzcli -ldpdinfo -a0");
    EXPECT_EQ(FakeComLib().Traces(FAILURE),
              CTexts({"KRZ CLI has an error(krzcli -ldpdinfo -a0).",
                      "Failed to execute krzcli command ret=00000001."}));
}

TEST_F(CMSRAID_LDInfoGetterTest, AcceptedReportIsTracedLineByLine) {
    CMSRAID_LDInfoGetter getter;
    EXPECT_TRUE(Read("RG0 x\n"
                     "a : b\n"
                     ">LD0 (a, b, c)\n"
                     "### General Information ###\n"
                     "Associated CacheCade LD\n"
                     "\n"
                     ">>PD0 (x)\n",
                     getter)
                    .result);
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::GetInfo [START]\n"
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "4: CMSRAID_InfoGetter::Parse [START]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_LDInfoGetter::AddRootItem [START]\n"
              "4: CMSRAID_LDInfoGetter::AddRootItem [END]\n"
              "4: CMSRAID_LDInfoGetter::ParseRAIDlnfo [START], RG0 x\n"
              "4: CMSRAID_LDInfoGetter::ParseRAIDlnfo [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_LDInfoGetter::ParseLDList [START], >LD0 (a, b, c)\n"
              "4: CMSRAID_LDInfoGetter::ParseLDList [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_LDInfoGetter::ParseGeneralnfo [START]\n"
              "4: CMSRAID_LDInfoGetter::ParseAssocLD [START]\n"
              "4: CMSRAID_LDInfoGetter::ParseAssocLD [END]\n"
              "4: CMSRAID_LDInfoGetter::ParseGeneralnfo [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_LDInfoGetter::ParseLDList [START], >>PD0 (x)\n"
              "4: CMSRAID_LDInfoGetter::ParseLDList [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_LDInfoGetter::FreeItemList [START]\n"
              "4: CMSRAID_LDInfoGetter::FreeItemList [END]\n"
              "4: CMSRAID_InfoGetter::Parse [END]\n"
              "4: CMSRAID_InfoGetter::GetInfo [END]\n");
}

TEST_F(CMSRAID_LDInfoGetterTest, RejectedReportIsTracedWhereItFailed) {
    CMSRAID_LDInfoGetter getter;
    EXPECT_FALSE(Read(">LD (\nRG0\n", getter).result);
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::GetInfo [START]\n"
              "1: execute krzcli command.(krzcli -ldpdinfo -a0)\n"
              "4: CMSRAID_InfoGetter::Parse [START]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_LDInfoGetter::ParseLDList [START], >LD (\n"
              "2: Parse LDList Error(>LD ().\n"
              "4: CMSRAID_LDInfoGetter::ParseLDList [END]\n"
              "4: CMSRAID_LDInfoGetter::CreateRAIDItem [END]\n"
              "2: CreateRAIDItem is FAILED (ret=00000000).\n"
              "4: CMSRAID_LDInfoGetter::FreeItemList [START]\n"
              "4: CMSRAID_LDInfoGetter::FreeItemList [END]\n"
              "4: CMSRAID_InfoGetter::Parse [END]\n"
              "2: Failed to parse RAID Information ret=00000000.\n"
              "4: CMSRAID_InfoGetter::GetInfo [END]\n");
}

TEST_F(CMSRAID_LDInfoGetterTest, GetterWorksAgainAfterAFailure) {
    CMSRAID_LDInfoGetter getter;
    const std::string good = qortest::Golden("ld/cachecade.txt");
    const std::string items = Items(good);
    EXPECT_FALSE(Read("RG0\na : b\n>LD0 (a, b, c)\n>LD1 (\n", getter).result);
    const CRead again = Read(good, getter);
    EXPECT_TRUE(again.result);
    EXPECT_EQ(again.items, items);
    EXPECT_EQ(again.errCode, "04");
}

// --- group headers

TEST_F(CMSRAID_LDInfoGetterTest, HeaderIsAGroupHeadAndADigit) {
    for (const std::string& line : CTexts{"RG0", "RG9x", "sRG1", "scRG0", "RG1 : a", "RG0\r"}) {
        EXPECT_EQ(Items(line + "\n"), ROOT) << line;
    }
    for (const std::string& line :
         CTexts{"RG", "RG ", "RG 0", "RGx", "RG No. : RG0", "sRG", "sRGa", "scRG ", "cRG0", "ssRG0",
                "rg0", " RG0", "\tsRG0", "RG/", "RG:"}) {
        EXPECT_EQ(Items(line + "\n"), "") << line;
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, EveryGroupHasARootOfItsOwn) {
    EXPECT_EQ(Items("RG0\nsRG1\nscRG2\n"), ROOT + ROOT + ROOT);
    EXPECT_EQ(Items("RG0\n\n### Other ###\na : 1\nRG1\n\nb : 2\n"),
              ROOT + Item("Logical Drive Information", "### Other ###", "") +
                  Item("### Other ###", "a", "1") + ROOT +
                  Item("Logical Drive Information", "b", "2"));
}

TEST_F(CMSRAID_LDInfoGetterTest, RootsAndTitlesAreMadeByTheVirtualOperations) {
    CTestGetter getter;
    EXPECT_TRUE(Read("RG0\nRG1\n", getter).result);
    EXPECT_EQ(getter.rootCalls, 2);
    ExpectRejected("RG0\n### BAD ###\n", {});
}

TEST_F(CMSRAID_LDInfoGetterTest, LinesOfGroupsWithoutASectionAddUpToTheNextOne) {
    EXPECT_EQ(Items("RG0\na : 1\n\nRG1\nb : 2\n\n" + GENERAL_TITLE),
              ROOT + ROOT + GENERAL + GeneralItem("a", "1") + GeneralItem("b", "2") + NO_ASSOC);
}

TEST_F(CMSRAID_LDInfoGetterTest, GroupLinesAreHeldUntilGeneralInformation) {
    EXPECT_EQ(Items("RG0\nRG No. : RG0\nRAID Level:\n\nfree : 1\n" + GENERAL_TITLE + "k : v\n"),
              ROOT + Item("Logical Drive Information", "free", "1") + GENERAL +
                  GeneralItem("RG No.", "RG0") + GeneralItem("RAID Level", "") +
                  GeneralItem("k", "v") + NO_ASSOC);
}

TEST_F(CMSRAID_LDInfoGetterTest, LineWithoutAKeyEndsTheGroupAndIsReadAgain) {
    const std::string listed = LDItems("LD List", "LD0", "a", "b", "c");
    for (const std::string& feed : CTexts{"\n", "\r\n"}) {
        EXPECT_EQ(Items("RG0" + feed + "k : v" + feed + ">LD0 (a, b, c)" + feed +
                        "### General Information ###" + feed),
                  ROOT + GENERAL + GeneralItem("k", "v") + listed + NO_ASSOC);
    }
    EXPECT_EQ(Items("RG0\n" + GENERAL_TITLE), ROOT + GENERAL + NO_ASSOC);
    EXPECT_EQ(Items("RG0\n : x\n"), ROOT + Item("Logical Drive Information", "", "x"));
    EXPECT_EQ(Items("RG0\n>>PDs\nk : v\n"),
              ROOT + Item("Logical Drive Information", "PD List", "") + Item("PD List", "k", "v"));
}

TEST_F(CMSRAID_LDInfoGetterTest, LastLineThatEndsTheGroupIsReadAgainWithoutALineFeed) {
    EXPECT_EQ(Items("RG0\nplain"), ROOT);
    EXPECT_EQ(Items("RG0\nk : v\n : x"), ROOT + Item("Logical Drive Information", "", "x"));
    // Read again, the line is the last one, and what follows it cannot be read.
    ExpectRejected("RG0\n### General Information ###", {"Invalid Arg."});
    ExpectRejected("RG0\n>>PD0 (x)", {"Invalid Arg."});
    ExpectRejected("RG0\nRG1", {"Invalid Arg."});
    ExpectRejected("RG0\n>LD0 (x)", {"Parse LDList Error(>LD0 (x))."});
}

TEST_F(CMSRAID_LDInfoGetterTest, HeaderNeedsItsLineFeed) {
    EXPECT_EQ(Items("RG0\n"), ROOT);
    EXPECT_EQ(Items("RG0\nk : v"), ROOT);
    ExpectRejected("RG0", {"Invalid Arg."});
}

TEST_F(CMSRAID_LDInfoGetterTest, HeldItemsWithoutTheirTitleAreDiscarded) {
    CMSRAID_LDInfoGetter getter;
    EXPECT_EQ(Read("RG0\nk : v\n>LD0 (a, b, c)\n", getter).items, ROOT);
    EXPECT_EQ(Read(GROUP + "Access Policy : Read Only\n", getter).items, ROOT + GENERAL + NO_ASSOC);
    EXPECT_EQ(Read(GROUP + "\n" + SETTINGS_TITLE, getter).items,
              ROOT + GENERAL + NO_ASSOC + SETTINGS);
}

TEST_F(CMSRAID_LDInfoGetterTest, ControllerHeaderIsIgnored) {
    EXPECT_EQ(Items("RG0\n\nRAID Controller : >LD0 (a)\nRAID Controller : >>PD0 (a)\n"), ROOT);
    EXPECT_EQ(Items("RAID Controller : 0\nRG0\n\nRAID Controller : 1\nRAID Controller\n"), ROOT);
    EXPECT_EQ(Items("RG0\n\n RAID Controller : 1\n"),
              ROOT + Item("Logical Drive Information", "RAID Controller", "1"));
}

// --- LD list lines

TEST_F(CMSRAID_LDInfoGetterTest, ListedLDIsReadFromItsEnd) {
    const struct {
        std::string line;
        std::string items;
    } rows[] = {
        {">LD0 (sys, 1GB, Optimal)", LDItems("LD List", "LD0", "sys", "1GB", "Optimal")},
        {">LD12(a,b,c)", LDItems("LD List", "LD12", "a", "b", "c")},
        {">LD0 ( a , b,c, , 1GB , Ok ) tail", LDItems("LD List", "LD0", "a , b,c,", "1GB", "Ok")},
        {">LD0 (a (x), 1GB, Ok (y))", LDItems("LD List", "LD0", "a (x)", "1GB", "Ok (y)")},
        {">LD0 (,1GB,Ok)", LDItems("LD List", "LD0", "", "1GB", "Ok")},
        {">LD0 (a, , )", LDItems("LD List", "LD0", "a", "", "")},
        {">LD (a,b,c)", LDItems("LD List", "LD", "a", "b", "c")},
        {"x >LD0 (a,b,c)", LDItems("LD List", ">LD0", "a", "b", "c")},
        {"k : >LD0 (a,b,c)", LDItems("LD List", ": >LD0", "a", "b", "c")},
        {">>LD0 >>PD (a,b,c)", LDItems("LD List", ">LD0 >>PD", "a", "b", "c")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(Items("RG0\n\n" + row.line + "\n" + GENERAL_TITLE),
                  ROOT + GENERAL + row.items + NO_ASSOC);
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, MalformedListedLDRejectsTheReport) {
    for (const std::string& line : CTexts{
             ">LD(a,b,c)",      // the bracket within the first four characters
             "(>LD0 (a,b,c)",   //
             ">LD0 (a,b,c",     // no closing bracket
             ">LD0 (abc)",      // no state
             ">LD0 (a,)",       // an empty one
             ">LD0 (a,b)",      // no capacity
             ">LD0 (,b)",       //
             ">LD0 (a,,c)",     // an empty one
             ">LD0, b, c) (a",  // closed before it opens
             ">LD0 ()",
         }) {
        ExpectRejected("RG0\n\n" + line + "\n", {"Parse LDList Error(" + line + ")."});
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, ListLinesAreTracedAsTheyStand) {
    CMSRAID_LDInfoGetter getter;
    EXPECT_FALSE(Read("RG0 \t\r\n\n>>PD0 (x) \r\n\n>LD0 (x) \r\n", getter).result);
    const CTexts flow = FakeComLib().Traces(CTraceUtility::TRACE_DBG_FLOW);
    ASSERT_GT(flow.size(), 13U);
    EXPECT_EQ(flow[5], "CMSRAID_LDInfoGetter::ParseRAIDlnfo [START], RG0 \t\r");
    EXPECT_EQ(flow[9], "CMSRAID_LDInfoGetter::ParseLDList [START], >>PD0 (x) \r");
    EXPECT_EQ(flow[13], "CMSRAID_LDInfoGetter::ParseLDList [START], >LD0 (x) \r");
    EXPECT_EQ(FakeComLib().Traces(FAILURE).front(), "Parse LDList Error(>LD0 (x) \r).");
}

TEST_F(CMSRAID_LDInfoGetterTest, ListedLDWithoutABracketIsAKeyValueLine) {
    EXPECT_EQ(Items("RG0\n\n>LD0 : x\n>LD1\n"),
              ROOT + Item("Logical Drive Information", ">LD0", "x"));
    EXPECT_EQ(Items(">LD0 : x\n"), "");
}

TEST_F(CMSRAID_LDInfoGetterTest, ListedLDNeedsNoRootAndWaitsForTheNextTitle) {
    EXPECT_EQ(Items(">LD0 (a, b, c)\nRG0\n\n>LD1 (d, e, f)\n" + GENERAL_TITLE),
              ROOT + GENERAL + LDItems("LD List", "LD0", "a", "b", "c") +
                  LDItems("LD List", "LD1", "d", "e", "f") + NO_ASSOC);
}

// --- PD list lines

TEST_F(CMSRAID_LDInfoGetterTest, ListedPDHoldsItsLinesAndTheSectionGoesOnBehindIt) {
    EXPECT_EQ(Items("RG0\n\n" + SETTINGS_TITLE +
                    "a : 1\n"
                    ">>PD0 (x)\n"
                    "Status : Online\n"
                    "no key\n"
                    " : first after trimming\n"
                    "\tPath : 1 : 2 \r\n"
                    " \r\n"
                    "b : 2\n"
                    ">>PD1 (x)\n"),
              ROOT + SETTINGS + Item("### LD Settings Information ###", "a", "1") +
                  Item("### LD Settings Information ###", "PD List", "") +
                  Item("PD List", "PD No.", "PD0") + Item("PD List", "Status", "Online") +
                  Item("PD List", "Path", "1 : 2") +
                  Item("### LD Settings Information ###", "b", "2") +
                  Item("### LD Settings Information ###", "PD List", "") +
                  Item("PD List", "PD No.", "PD1"));
}

TEST_F(CMSRAID_LDInfoGetterTest, ListedPDHasANumberIfItsBracketStandsBehindTheHead) {
    const struct {
        std::string line;
        std::string items;
    } rows[] = {
        {">>PD0 (x)", Item("PD List", "PD No.", "PD0")},
        {">>PD 12(", Item("PD List", "PD No.", "PD 12")},
        {">>PD (", Item("PD List", "PD No.", "PD")},
        {">>PD(0)", ""},
        {"(>>PD0 (x)", ""},
        {">>PD0", ""},
        {">>PD0 : x", ""},
        {"ab>>PD0 (x)", Item("PD List", "PD No.", ">>PD0")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(Items("RG0\n\n" + row.line + "\nk : v\n"),
                  ROOT + Item("Logical Drive Information", "PD List", "") + row.items +
                      Item("PD List", "k", "v"));
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, ListedPDSwallowsWhatFollowsUntilABlankLine) {
    EXPECT_EQ(Items("RG0\n\n>>PD0 (x)\n>>PD1 (x)\nRG1\n### T ###\nAccess Policy : Blocked"),
              ROOT + Item("Logical Drive Information", "PD List", "") +
                  Item("PD List", "PD No.", "PD0") + Item("PD List", "Access Policy", "Blocked"));
}

TEST_F(CMSRAID_LDInfoGetterTest, ListedPDNeedsARootAndItsLineFeed) {
    ExpectRejected(">>PD0 (x)\nk : v\n", {"m_RaidList size is zero."});
    ExpectRejected("RG0\n\n>>PD0 (x)", {"Invalid Arg."});
    ExpectRejected(">>PD0 (x)", {"Invalid Arg."});
}

// --- plain lines and titles

TEST_F(CMSRAID_LDInfoGetterTest, PlainLinesBelongToTheCurrentTitleAndTheAccessPolicyIsRenamed) {
    EXPECT_EQ(Items("a : ignored\n"
                    "RG0\n\n"
                    "Access Policy : 1\n"
                    "### Other ###\n"
                    "Access Policy : 2\n"
                    "Access Policy x : 3\n"
                    ": none\n"
                    "plain\n"
                    "empty:"),
              ROOT + Item("Logical Drive Information", "Default Access Policy", "1") +
                  Item("Logical Drive Information", "### Other ###", "") +
                  Item("### Other ###", "Default Access Policy", "2") +
                  Item("### Other ###", "Access Policy x", "3") +
                  Item("### Other ###", "empty", ""));
}

TEST_F(CMSRAID_LDInfoGetterTest, TabsInATitleBecomeBlanks) {
    EXPECT_EQ(Items("RG0\nk : v\n\n### General\tInformation\t###\t\nAccess Policy : 1\n\n"
                    "### LD\tSettings\tInformation ###\n### A\t\tB ###\n"),
              ROOT + GENERAL + GeneralItem("k", "v") + NO_ASSOC + SETTINGS +
                  Item("### LD Settings Information ###", "Default Access Policy", "1") +
                  Item("Logical Drive Information", "### A  B ###", ""));
    // A tab right behind the hash marks makes it no title.
    EXPECT_EQ(Items("RG0\n\n###\tGeneral Information ###\n"), ROOT);
    EXPECT_EQ(Items("RG0\n\n ### General Information ###\n"), ROOT);
}

TEST_F(CMSRAID_LDInfoGetterTest, TitleThatLooksLikeAListLineIsATitle) {
    for (const std::string& title : CTexts{"### >LD0 (a, b, c) ###", "### >>PD0 (x) ###"}) {
        EXPECT_EQ(Items("RG0\n\n" + title + "\nk : v\n"),
                  ROOT + Item("Logical Drive Information", title, "") + Item(title, "k", "v"));
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, TitleBeforeTheFirstGroupRejectsTheReport) {
    ExpectRejected("### Any ###\nRG0\n", {"m_RaidList size is zero."});
    ExpectRejected(">LD0 (a,b,c)\n" + GENERAL_TITLE, {"m_RaidList size is zero."});
}

TEST_F(CMSRAID_LDInfoGetterTest, RejectedKeyValueLineRejectsTheReport) {
    const std::string failed = "ParseKeyValue is FAILED (ret=00000000).";
    ExpectRejected("RG0\n\nBAD : 1\n", {});
    ExpectRejected("RG0\na : 1\nBAD : 1\n", {failed});
    ExpectRejected(GROUP + "a : 1\nBAD : 1\n", {failed});
    ExpectRejected("RG0\n\n>>PD0 (x)\na : 1\nBAD : 1\n", {failed});
}

// --- general information

TEST_F(CMSRAID_LDInfoGetterTest, AccessPolicyMovesToTheSettings) {
    EXPECT_EQ(Items(GROUP +
                    "# of PD : 2\n"
                    "Access Policy : Read Write\n"
                    "Stripe Size : 64KB\n"
                    "\n" +
                    SETTINGS_TITLE + "Read Policy : x\nAccess Policy : y\n"),
              ROOT + GENERAL + GeneralItem("# of PD", "2") + GeneralItem("Stripe Size", "64KB") +
                  NO_ASSOC + SETTINGS +
                  Item("### LD Settings Information ###", "Default Access Policy", "Read Write") +
                  Item("### LD Settings Information ###", "Read Policy", "x") +
                  Item("### LD Settings Information ###", "Default Access Policy", "y"));
}

TEST_F(CMSRAID_LDInfoGetterTest, AccessPoliciesAddUpToTheNextSettings) {
    EXPECT_EQ(Items(GROUP + "Access Policy : 1\n\nRG1\n\n" + GENERAL_TITLE +
                    "Access Policy : 2\n\n" + SETTINGS_TITLE + SETTINGS_TITLE),
              ROOT + GENERAL + NO_ASSOC + ROOT + GENERAL + NO_ASSOC + SETTINGS +
                  Item("### LD Settings Information ###", "Default Access Policy", "1") +
                  Item("### LD Settings Information ###", "Default Access Policy", "2") + SETTINGS);
}

TEST_F(CMSRAID_LDInfoGetterTest, AccessPolicyBehindTheSectionIsRenamedWhereItStands) {
    EXPECT_EQ(Items(GROUP + "\nAccess Policy : 1\n" + SETTINGS_TITLE),
              ROOT + GENERAL + NO_ASSOC + GeneralItem("Default Access Policy", "1") + SETTINGS);
}

TEST_F(CMSRAID_LDInfoGetterTest, NoAccessPolicyAndNoCacheGiveNoDefaultAccessPolicy) {
    EXPECT_EQ(Items(GROUP + "# of PD : 2\n\n" + SETTINGS_TITLE + "k : v\n"),
              ROOT + GENERAL + GeneralItem("# of PD", "2") + NO_ASSOC + SETTINGS +
                  Item("### LD Settings Information ###", "k", "v"));
}

TEST_F(CMSRAID_LDInfoGetterTest, GeneralInformationEndsAtABlankLineOrTheReportsEnd) {
    for (const std::string& end : CTexts{"", "\n", "\n\n", "\n \t\r\n"}) {
        SCOPED_TRACE(end);
        EXPECT_EQ(Items(GROUP + "no colon\n: none\n : x\n\tk : v" + end),
                  ROOT + GENERAL + GeneralItem("k", "v") + NO_ASSOC);
    }
    EXPECT_EQ(Items(GROUP), ROOT + GENERAL + NO_ASSOC);
    ExpectRejected("RG0\n\n### General Information ###", {"Invalid Arg."});
}

TEST_F(CMSRAID_LDInfoGetterTest, GeneralInformationWithoutItsBlankLineSwallowsTheNextTitle) {
    EXPECT_EQ(Items(GROUP + SETTINGS_TITLE + ">LD0 (a,b,c)\nRG1\nk : v\n"),
              ROOT + GENERAL + GeneralItem("k", "v") + NO_ASSOC);
}

TEST_F(CMSRAID_LDInfoGetterTest, AssociatedLDsBringPlaceholdersForStripeSizeAndAccessPolicy) {
    const std::string block = "Associated CacheCade LD\nLD0 (a, 1GB, Ok)\nLD1 (b, c, 2GB, Ok)\n";
    const std::string list = "Associated CacheCade LD";
    const std::string blockItems =
        LDItems(list, "LD0", "a", "1GB", "Ok") + LDItems(list, "LD1", "b, c", "2GB", "Ok");
    const std::string stripe = GeneralPlaceholder("Stripe Size");
    const struct {
        std::string lines;
        std::string before;
        std::string after;
    } rows[] = {
        {"", "", stripe},
        {"k : v\n", GeneralItem("k", "v"), stripe},
        {"k : v\n# of PD : 1\nl : w\n",
         GeneralItem("k", "v") + stripe + GeneralItem("# of PD", "1") + GeneralItem("l", "w"), ""},
        {"# of PD : 1\n# of PD : 2\n",
         GeneralItem("# of PD", "1") + stripe + GeneralItem("# of PD", "2"), ""},
    };
    for (const auto& row : rows) {
        for (const std::string& end : CTexts{"", "\n"}) {
            SCOPED_TRACE(row.lines + "|" + end);
            EXPECT_EQ(Items(GROUP + row.lines + block + end),
                      ROOT + GENERAL + row.before + blockItems + row.after);
        }
        EXPECT_EQ(Items(GROUP + row.lines + block + "\n" + SETTINGS_TITLE + "k : v\n"),
                  ROOT + GENERAL + row.before + blockItems + row.after + SETTINGS +
                      POLICY_PLACEHOLDER + Item("### LD Settings Information ###", "k", "v"));
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, AssociatedBlockMayBeEmptyButItsLineNeedsALineFeed) {
    const std::string items = ROOT + GENERAL + GeneralPlaceholder("Stripe Size");
    EXPECT_EQ(Items(GROUP + "Associated CacheCade LD\n"), items);
    EXPECT_EQ(Items(GROUP + "\t Associated CacheCade LDs : 1 \n\n"), items);
    EXPECT_EQ(Items(GROUP + "No Associated CacheCade LD : 1\n"),
              ROOT + GENERAL + GeneralItem("No Associated CacheCade LD", "1") + NO_ASSOC);
    ExpectRejected(GROUP + "Associated CacheCade LD",
                   {"Invalid Arg.", "ParseAssocLD is FAILED (ret=00000000)."});
}

TEST_F(CMSRAID_LDInfoGetterTest, AccessPolicyBeforeAssociatedLDsKeepsItsValueAndThePlaceholder) {
    EXPECT_EQ(
        Items(GROUP + "Access Policy : Blocked\nAssociated CacheCade LD\n\n" + SETTINGS_TITLE),
        ROOT + GENERAL + GeneralPlaceholder("Stripe Size") + SETTINGS +
            Item("### LD Settings Information ###", "Default Access Policy", "Blocked") +
            POLICY_PLACEHOLDER);
}

TEST_F(CMSRAID_LDInfoGetterTest, AssociatedLDIsReadFromItsEnd) {
    const std::string list = "Associated CacheCade LD";
    const struct {
        std::string line;
        std::string items;
    } rows[] = {
        {"LD0 (a,b,c)", LDItems(list, "LD0", "a", "b", "c")},
        {"\t LD0( a, x, b , c ) tail\r", LDItems(list, "LD0", "a, x", "b", "c")},
        {"(a,b,c)", LDItems(list, "", "a", "b", "c")},
        {">LD0 (a,b,c)", LDItems(list, ">LD0", "a", "b", "c")},
        {"RG1 (a,b,c)", LDItems(list, "RG1", "a", "b", "c")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(Items(GROUP + "Associated CacheCade LD\n" + row.line + "\n"),
                  ROOT + GENERAL + row.items + GeneralPlaceholder("Stripe Size"));
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, MalformedAssociatedLDIsTracedWithTheLineThatStartedTheBlock) {
    for (const std::string& line : CTexts{"LD0", "LD0 (", "LD0 (a,b,c", "LD0 (a)", "LD0 (a,)",
                                          "LD0 (a,b)", "LD0 (a,,c)", "LD0,b,c) (a"}) {
        ExpectRejected(GROUP + " Associated CacheCade LD x\nLD9 (a,b,c)\n" + line + "\n",
                       {"Parse Associated CacheCade LD Error(Associated CacheCade LD x).",
                        "ParseAssocLD is FAILED (ret=00000000)."});
    }
}

// --- direct calls

TEST_F(CMSRAID_LDInfoGetterTest, ParsersRejectAStreamThatIsAtItsEnd) {
    CTestGetter getter;
    getter.AddRootItem();
    const struct {
        bool (CMSRAID_LDInfoGetter::*parser)(std::ifstream&, std::string);
        std::string start;
        std::string end;
    } rows[] = {
        {&CMSRAID_LDInfoGetter::ParseRAIDlnfo, "ParseRAIDlnfo [START], line", "ParseRAIDlnfo"},
        {&CMSRAID_LDInfoGetter::ParseGeneralnfo, "ParseGeneralnfo [START]", "ParseGeneralnfo"},
        {&CMSRAID_LDInfoGetter::ParsePDList, "ParseLDList [START], line", "ParseLDList"},
        {&CMSRAID_LDInfoGetter::ParseAssocLD, "ParseAssocLD [START]", "ParseAssocLD"},
    };
    qortest::WriteFile("/opt/tarmica/empty", "");
    for (const auto& row : rows) {
        std::ifstream atEnd("/opt/tarmica/empty");
        atEnd.get();
        std::ifstream failed("/opt/tarmica/missing");
        for (std::ifstream* stream : {&atEnd, &failed}) {
            qortest::ResetFakeComLib();
            EXPECT_FALSE((getter.*row.parser)(*stream, "line"));
            EXPECT_EQ(TraceText(), "4: CMSRAID_LDInfoGetter::" + row.start +
                                       "\n2: Invalid Arg.\n4: CMSRAID_LDInfoGetter::" + row.end +
                                       " [END]\n");
        }
    }
    EXPECT_EQ(qortest::ItemText(getter.Items()), ROOT);
}

TEST_F(CMSRAID_LDInfoGetterTest, PlaceholdersStandUnderTheCurrentSection) {
    CTestGetter getter;
    getter.AddRootItem();
    std::ifstream stream = StreamOf("\nAssociated CacheCade LD\n");
    EXPECT_TRUE(getter.ParseGeneralnfo(stream, ""));
    EXPECT_TRUE(getter.ParseGeneralnfo(stream, ""));
    EXPECT_EQ(qortest::ItemText(getter.Items()),
              ROOT + "Logical Drive Information | Associated CacheCade LD |  | FALSE\n" +
                  "Logical Drive Information | Stripe Size |  | FALSE\n");
}

TEST_F(CMSRAID_LDInfoGetterTest, RejectedListedLDLeavesItsItemsHeld) {
    const std::string list = GeneralItem("LD List", "");
    const std::string number = Item("LD List", "LD No.", "LD0");
    const std::string state = Item("LD List", "State", "c");
    const struct {
        std::string line;
        std::string items;
    } rows[] = {
        {">LD(a,b,c)", list},
        {">LD0 (a,b,c", list + number},
        {">LD0 (a)", list + number},
        {">LD0 (c,", list + number},
        {">LD0 (a,,c)", list + number + state},
        {">LD0,b,c) (a",
         list + Item("LD List", "LD No.", "LD0,b,c)") + state + Item("LD List", "Capacity", "b")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        CTestGetter getter;
        getter.AddRootItem();
        std::ifstream stream = StreamOf("\n");
        EXPECT_FALSE(getter.ParseLDList(stream, row.line));
        EXPECT_EQ(qortest::ItemText(getter.Items()), ROOT);
        EXPECT_TRUE(getter.ParseGeneralnfo(stream, ""));
        EXPECT_EQ(
            qortest::ItemText(getter.Items()),
            ROOT + row.items + "Logical Drive Information | Associated CacheCade LD |  | FALSE\n");
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, RejectedAssociatedLDLeavesItsItemsInTheList) {
    const std::string list = "Associated CacheCade LD";
    const std::string first = Item("Logical Drive Information", list, "");
    const std::string number = Item(list, "LD No.", "LD0");
    const struct {
        std::string line;
        std::string items;
    } rows[] = {
        {"LD0", first},
        {"LD0 (", first},
        {"LD0 (a,b,c", first + number},
        {"LD0 (a,,c)", first + number + Item(list, "State", "c")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        CTestGetter getter;
        getter.AddRootItem();
        std::ifstream stream = StreamOf(row.line + "\n");
        EXPECT_FALSE(getter.ParseAssocLD(stream, "line"));
        EXPECT_EQ(qortest::ItemText(getter.Items()), ROOT + row.items);
    }
}

TEST_F(CMSRAID_LDInfoGetterTest, RejectedListedPDGivesTheSectionBack) {
    CTestGetter getter;
    getter.AddRootItem();
    std::ifstream stream = StreamOf("BAD : 1\n");
    EXPECT_FALSE(getter.ParsePDList(stream, ">>PD0 (x)"));
    getter.AddPlaceholder("next");
    EXPECT_EQ(qortest::ItemText(getter.Items()),
              ROOT + Item("Logical Drive Information", "PD List", "") +
                  Item("PD List", "PD No.", "PD0") +
                  "Logical Drive Information | next |  | FALSE\n");
}

// --- hostile reports

TEST_F(CMSRAID_LDInfoGetterTest, HugeLineIsOneItem) {
    const std::string huge(1 << 20, 'x');
    EXPECT_EQ(Items(huge), "");
    EXPECT_EQ(Items("RG0\n" + huge + "\n\nk : " + huge),
              ROOT + Item("Logical Drive Information", "k", huge));
    EXPECT_EQ(Items("RG0\n>LD0 (" + huge + ", b, c)\n" + GENERAL_TITLE),
              ROOT + GENERAL + LDItems("LD List", "LD0", huge, "b", "c") + NO_ASSOC);
}

TEST_F(CMSRAID_LDInfoGetterTest, EmbeddedNulCutsAText) {
    using std::string_literals::operator""s;
    EXPECT_EQ(Items("RG0\nk\0ey : v\0alue\n\0\n>LD0 (a\0x, b, c)\n"s + GENERAL_TITLE),
              ROOT + GENERAL + GeneralItem("k", "v") + LDItems("LD List", "LD0", "a", "b", "c") +
                  NO_ASSOC);
}

TEST_F(CMSRAID_LDInfoGetterTest, TitleIsComparedAsItsItemShowsIt) {
    using std::string_literals::operator""s;
    EXPECT_EQ(Items("RG0\n\n### General Information ###\0 x\nAccess Policy : 1\n\n"
                    "### LD Settings Information ###\0 x\n"s),
              ROOT + GENERAL + NO_ASSOC + SETTINGS +
                  Item("### LD Settings Information ###", "Default Access Policy", "1"));
}

TEST_F(CMSRAID_LDInfoGetterTest, ReportCutAtAnyByteGivesItemsOrACleanFailure) {
    qortest::ExpectEveryBeginningIsHandled([] { return std::make_unique<CMSRAID_LDInfoGetter>(); },
                                           qortest::Golden("ld/cachecade.txt"));
}

TEST_F(CMSRAID_LDInfoGetterTest, DamagedReportGivesItemsOrACleanFailure) {
    CMSRAID_LDInfoGetter getter;
    qortest::ExpectDamageIsHandled(getter, qortest::Golden("ld/cachecade.txt"), 42, 500);
}

// Each drive's entry holds the name of its group, too.
TEST_F(CMSRAID_LDInfoGetterTest, LongGroupOfManyDrivesIsNotUnderstood) {
    std::string report = "RG No. : " + std::string(1'000'000, 'g') + "\n";
    for (int drive = 0; drive < 1000; ++drive) {
        report += ">>PD" + std::to_string(drive) + " (\n";
    }
    m_Tool->Play("-ldpdinfo -a0", {.out = report});
    CTestGetter getter;
    std::map<long, std::string> groups;
    EXPECT_FALSE(getter.GetPDRGNo(0, groups));
    EXPECT_EQ(getter.ErrCode(), "04");
    EXPECT_TRUE(groups.empty());
}

// A line of the list becomes five items, whose texts the report need not bring.
TEST_F(CMSRAID_LDInfoGetterTest, ListThatTakesMoreMemoryIsNotUnderstood) {
    std::string report = "RG0\n";
    for (int line = 0; line < 700'000; ++line) {
        report += ">LD0 (a, b, c)\n";
    }
    CMSRAID_LDInfoGetter getter;
    const CRead read = Read(report, getter);
    EXPECT_FALSE(read.result);
    EXPECT_EQ(read.errCode, "04");
    EXPECT_EQ(read.items, "");
}

}  // namespace
