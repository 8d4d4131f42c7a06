#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

#include "GetterFixture.h"
#include "ReportStress.h"
#include "getters/CMSRAID_PCIeSSDInfoGetter.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* COMMAND = "-pssdinfo -aAll";
using CParser = CParserOf<CMSRAID_PCIeSSDInfoGetter>;
using CRejectingParser = CRejectingParserOf<CMSRAID_PCIeSSDInfoGetter>;

const std::string ROOT = " | PCIe SSD Information |  | TRUE\n";

std::string Title(const std::string& title) {
    return "PCIe SSD Information | " + title + " |  | TRUE\n";
}

std::string Pair(const std::string& parent, const std::string& name, const std::string& value) {
    return parent + " | " + name + " | " + value + " | TRUE\n";
}

const std::string GENERAL = "### General Information ###";

class PCIeSSDInfoGetter : public CGetterFixture {
protected:
    static std::string ItemsOf(const std::string& report) {
        CParser parser;
        EXPECT_TRUE(parser.ParseText(report)) << report;
        return ItemText(parser.Items());
    }

    // One run that fails and leaves the caller's list as it was.
    static void ExpectFailure(const CToolStep& step, const std::string& errCode,
                              const std::string& errDetail) {
        CStandInTool tool;
        tool.Play(COMMAND, step);
        CMSRAID_PCIeSSDInfoGetter getter;
        CItems items;
        AddItem(items, "", "before", "");
        EXPECT_FALSE(getter.GetInfo(items));
        EXPECT_EQ(items.Text(), " | before |  | TRUE\n");
        EXPECT_EQ(getter.ErrCode(), errCode);
        EXPECT_EQ(getter.ErrDetail(), errDetail);
    }
};

TEST_F(PCIeSSDInfoGetter, ConstantsHaveTheirTexts) {
    using G = CMSRAID_PCIeSSDInfoGetter;
    const std::vector<std::pair<std::string, std::string>> rows = {
        {G::PCIE_SSD_INFO_ROOT_NAME, "PCIe SSD Information"},
        {G::BUS_NO_NAME, "Bus No."},
        {G::BUS_NO_NAME_HEAD, "Bus :"},
    };
    for (const auto& [constant, text] : rows) {
        EXPECT_EQ(constant, text);
    }
}

TEST_F(PCIeSSDInfoGetter, ShowsEverySSDUnderARootOfItsOwn) {
    CStandInTool tool;
    tool.Play(COMMAND, {.out = Golden("pssd/two_ssds.txt")});
    CMSRAID_PCIeSSDInfoGetter getter;
    CItems items;
    ASSERT_TRUE(getter.GetInfo(items));
    ExpectGoldenItems("golden/pssd/two_ssds.items", items);
    EXPECT_EQ(getter.ErrCode(), "");
    EXPECT_EQ(getter.ErrDetail(), "");
}

TEST_F(PCIeSSDInfoGetter, ShowsTheSameWithCarriageReturns) {
    CParser parser;
    ASSERT_TRUE(parser.ParseText(WithCarriageReturns(Golden("pssd/two_ssds.txt"))));
    ExpectGoldenItems("golden/pssd/two_ssds.items", parser.Items());
}

TEST_F(PCIeSSDInfoGetter, CommandIsTheSameForEveryController) {
    CStandInTool tool;
    tool.Play(COMMAND, {.out = "Bus : 3\n"});
    tool.Play(COMMAND, {.out = "Bus : 4\n"});
    CMSRAID_PCIeSSDInfoGetter getter;
    CItems items;
    EXPECT_TRUE(getter.GetInfo(7, items));
    EXPECT_TRUE(getter.GetInfo(items));
    EXPECT_EQ(items.Text(), ROOT + ROOT);
}

TEST_F(PCIeSSDInfoGetter, TracesOneRunInOrder) {
    CStandInTool tool;
    tool.Play(COMMAND, {.out = "Bus : 3\n### General Information ###\nA : 1\n"});
    {
        CMSRAID_PCIeSSDInfoGetter getter;
        CItems items;
        ASSERT_TRUE(getter.GetInfo(items));
    }
    const std::vector<CTraceLine> expected = {
        {4, "CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]"},
        {4, "CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CMSRAID_PCIeSSDInfoGetter [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CMSRAID_PCIeSSDInfoGetter [END]"},
        {4, "CMSRAID_InfoGetter::GetInfo [START]"},
        {1, "execute krzcli command.(krzcli -pssdinfo -aAll)"},
        {4, "CMSRAID_InfoGetter::Parse [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::AddRootItem [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::AddRootItem [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::ParseBusNo [START], Bus : 3"},
        {4, "CMSRAID_PCIeSSDInfoGetter::ParseBusNo [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::FreeItemList [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::FreeItemList [END]"},
        {4, "CMSRAID_InfoGetter::Parse [END]"},
        {4, "CMSRAID_InfoGetter::GetInfo [END]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::~CMSRAID_PCIeSSDInfoGetter [START]"},
        {4, "CMSRAID_PCIeSSDInfoGetter::~CMSRAID_PCIeSSDInfoGetter [END]"},
        {4, "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]"},
        {4, "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]"},
    };
    EXPECT_EQ(FakeComLib().traces, expected);
}

// --- failures of a run ---

TEST_F(PCIeSSDInfoGetter, ToolErrorIsFailure01WithTheCommand) {
    ExpectFailure({.out = "Error - broken\n"}, "01", "krzcli -pssdinfo -aAll");
}

TEST_F(PCIeSSDInfoGetter, ReportThatIsGoneIsFailure03) {
    ExpectFailure({.run = REMOVE_RESULT_FILES}, "03", "");
}

TEST_F(PCIeSSDInfoGetter, TitleBeforeAnySSDIsFailure04) {
    ExpectFailure({.out = GoldenBad("pssd/title_before_bus.txt")}, "04", "");
    EXPECT_EQ(FakeComLib().TracesWithoutFlow(),
              (std::vector<CTraceLine>{{1, "execute krzcli command.(krzcli -pssdinfo -aAll)"},
                                       {2, "m_RaidList size is zero."},
                                       {2, "CreateRAIDItem is FAILED (ret=00000000)."},
                                       {2, "Failed to parse RAID Information ret=00000000."}}));
}

TEST_F(PCIeSSDInfoGetter, RejectedLineRejectsTheReport) {
    for (const char* line : {"BAD : 1\n", "### BAD ###\n"}) {
        ResetFakeComLib();
        CRejectingParser parser;
        EXPECT_FALSE(parser.ParseText(std::string("Bus : 3\n") + line + "A : 1\n")) << line;
        EXPECT_EQ(ItemText(parser.Items()), ROOT) << line;
        EXPECT_EQ(FakeComLib().TracesWithoutFlow(),
                  (std::vector<CTraceLine>{{2, "CreateRAIDItem is FAILED (ret=00000000)."}}));
    }
}

TEST_F(PCIeSSDInfoGetter, GetterThatFailedMayRunAgain) {
    CStandInTool tool;
    tool.Play(COMMAND, {.out = "### Title ###\n"});
    tool.Play(COMMAND, {.out = "Bus : 3\n### Title ###\n"});
    CMSRAID_PCIeSSDInfoGetter getter;
    CItems items;
    EXPECT_FALSE(getter.GetInfo(items));
    EXPECT_TRUE(getter.GetInfo(items));
    EXPECT_EQ(items.Text(), ROOT + Title("### Title ###"));
    EXPECT_EQ(getter.ErrCode(), "04");
}

// --- the header ---

TEST_F(PCIeSSDInfoGetter, BusNumberStandsDirectlyBehindTheGeneralTitle) {
    EXPECT_EQ(ItemsOf("Bus : 3\n\n### First ###\nA : 1\n\n### General Information ###\nB : 2\n"),
              ROOT + Title("### First ###") + Pair("### First ###", "A", "1") + Title(GENERAL) +
                  Pair(GENERAL, "Bus No.", "3") + Pair(GENERAL, "B", "2"));
}

TEST_F(PCIeSSDInfoGetter, BusNumberIsTheTrimmedTextBehindTheColon) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"Bus : 3", "3"},  {"Bus :", ""},        {"Bus :3\r", "3"},
        {"Bus : \t", ""},  {"Bus : 3:4", "3:4"}, {"Bus :\t 0x1F (slot 2) \t", "0x1F (slot 2)"},
        {"Bus ::x", ":x"},
    };
    for (const auto& [header, number] : rows) {
        EXPECT_EQ(ItemsOf(header + "\n### General Information ###\n"),
                  ROOT + Title(GENERAL) + Pair(GENERAL, "Bus No.", number))
            << header;
    }
}

TEST_F(PCIeSSDInfoGetter, HeaderIsTracedAsItStands) {
    EXPECT_EQ(ItemsOf("Bus : 3 \t\r\n"), ROOT);
    const std::vector<std::string> flow = FakeComLib().Traces(4);
    EXPECT_EQ(std::count(flow.begin(), flow.end(),
                         "CMSRAID_PCIeSSDInfoGetter::ParseBusNo [START], Bus : 3 \t\r"),
              1);
}

TEST_F(PCIeSSDInfoGetter, RootsAreMadeByTheVirtualOperation) {
    CRejectingParser parser;
    EXPECT_TRUE(parser.ParseText("Bus : 3\nBus : 4\n"));
    EXPECT_EQ(parser.rootCalls, 2);
}

TEST_F(PCIeSSDInfoGetter, OtherLinesThatBeginWithBusArePairs) {
    for (const char* line : {"Bus: 4", " Bus : 4", "bus : 4", "Bus\t: 4", "Bus  : 4"}) {
        const std::string name = *line == 'b' ? "bus" : "Bus";
        EXPECT_EQ(ItemsOf(std::string("Bus : 3\n") + line + "\n"),
                  ROOT + Pair("PCIe SSD Information", name, "4"))
            << line;
        EXPECT_EQ(ItemsOf(std::string(line) + "\n"), "") << "before any header it is ignored";
    }
}

TEST_F(PCIeSSDInfoGetter, HeaderWithoutAGeneralSectionLeavesNothingBehind) {
    EXPECT_EQ(ItemsOf("Bus : 3"), ROOT);
    EXPECT_EQ(ItemsOf("Bus : 3\n### Other ###\n"), ROOT + Title("### Other ###"));
}

TEST_F(PCIeSSDInfoGetter, HeaderWithoutAGeneralSectionIsForgottenWithItsReport) {
    CStandInTool tool;
    tool.Play(COMMAND, {.out = "Bus : 3\n"});
    tool.Play(COMMAND, {.out = "Bus : 4\n### General Information ###\n"});
    CMSRAID_PCIeSSDInfoGetter getter;
    CItems first;
    CItems second;
    EXPECT_TRUE(getter.GetInfo(first));
    EXPECT_TRUE(getter.GetInfo(second));
    EXPECT_EQ(second.Text(), ROOT + Title(GENERAL) + Pair(GENERAL, "Bus No.", "4"));
}

TEST_F(PCIeSSDInfoGetter, HeadersWithoutASectionAddUpToTheNextOne) {
    EXPECT_EQ(ItemsOf("Bus : 3\nBus : 4\n### General Information ###\n"),
              ROOT + ROOT + Title(GENERAL) + Pair(GENERAL, "Bus No.", "3") +
                  Pair(GENERAL, "Bus No.", "4"));
}

TEST_F(PCIeSSDInfoGetter, SecondGeneralSectionHasNoBusNumber) {
    EXPECT_EQ(ItemsOf("Bus : 3\n### General Information ###\n### General Information ###\nA : 1\n"),
              ROOT + Title(GENERAL) + Pair(GENERAL, "Bus No.", "3") + Title(GENERAL) +
                  Pair(GENERAL, "A", "1"));
}

TEST_F(PCIeSSDInfoGetter, BusLineWithoutARootIsRejected) {
    CParser parser;
    std::ifstream stream;
    EXPECT_FALSE(parser.ParseBusNo(stream, "Bus : 3"));
    EXPECT_EQ(FakeComLib().TracesWithoutFlow(),
              (std::vector<CTraceLine>{{2, "m_RaidList size is zero."},
                                       {2, "ParseKeyValue is FAILED (ret=00000000)."}}));
}

// --- sections and pairs ---

TEST_F(PCIeSSDInfoGetter, PairsBeforeTheFirstTitleStandUnderTheRoot) {
    EXPECT_EQ(ItemsOf("Bus : 3\nA : 1\n\nB :\n"), ROOT + Pair("PCIe SSD Information", "A", "1") +
                                                      Pair("PCIe SSD Information", "B", ""));
}

TEST_F(PCIeSSDInfoGetter, HeaderEndsTheSectionOfTheSSDBefore) {
    EXPECT_EQ(ItemsOf("Bus : 3\n### T ###\nA : 1\nBus : 4\nB : 2\n"),
              ROOT + Title("### T ###") + Pair("### T ###", "A", "1") + ROOT +
                  Pair("PCIe SSD Information", "B", "2"));
}

TEST_F(PCIeSSDInfoGetter, PairsBeforeAnySSDAreIgnored) {
    EXPECT_EQ(ItemsOf(""), "");
    EXPECT_EQ(ItemsOf("\nTool : ready\n: x\nline\n"), "");
}

TEST_F(PCIeSSDInfoGetter, OtherLinesAreIgnored) {
    EXPECT_EQ(
        ItemsOf("Bus : 3\n### T ###\nline\n: x\n\n-----\nA : 1\n ### U ###\n###V : 2\n"),
        ROOT + Title("### T ###") + Pair("### T ###", "A", "1") + Pair("### T ###", "###V", "2"));
}

TEST_F(PCIeSSDInfoGetter, PairBehindABlankMayHaveNoName) {
    EXPECT_EQ(ItemsOf("Bus : 3\n : nameless\n"),
              ROOT + Pair("PCIe SSD Information", "", "nameless"));
}

TEST_F(PCIeSSDInfoGetter, OnlyTheExactTitleTakesTheBusNumber) {
    for (const std::string title :
         {"### General Information ### (2)", "### general Information ###", "### General ###"}) {
        EXPECT_EQ(ItemsOf("Bus : 3\n" + title + "\nA : 1\n"),
                  ROOT + Title(title) + Pair(title, "A", "1"));
    }
    EXPECT_EQ(ItemsOf("Bus : 3\n### General Information ### \t\r\n"),
              ROOT + Title(GENERAL) + Pair(GENERAL, "Bus No.", "3"));
}

TEST_F(PCIeSSDInfoGetter, EmptyLineDoesNotEndASection) {
    EXPECT_EQ(
        ItemsOf("Bus : 3\n### T ###\nA : 1\n\n\nB : 2\n"),
        ROOT + Title("### T ###") + Pair("### T ###", "A", "1") + Pair("### T ###", "B", "2"));
}

// --- robustness ---

TEST_F(PCIeSSDInfoGetter, TitleIsComparedAsItsItemShowsIt) {
    using namespace std::string_literals;
    EXPECT_EQ(ItemsOf("Bus : 3\0 x\n### General Information ###\0 x\nA\0b : 1\0 2\n"s),
              ROOT + Title(GENERAL) + Pair(GENERAL, "Bus No.", "3") + Pair(GENERAL, "A", "1"));
}

TEST_F(PCIeSSDInfoGetter, ReportCutAnywhereIsReadOrRejected) {
    ExpectEveryBeginningIsHandled([] { return std::make_unique<CMSRAID_PCIeSSDInfoGetter>(); },
                                  Golden("pssd/two_ssds.txt"));
}

TEST_F(PCIeSSDInfoGetter, DamagedReportsAreReadOrRejected) {
    CMSRAID_PCIeSSDInfoGetter getter;
    ExpectDamageIsHandled(getter, Golden("pssd/two_ssds.txt"), 20261120, 300);
}

}  // namespace
