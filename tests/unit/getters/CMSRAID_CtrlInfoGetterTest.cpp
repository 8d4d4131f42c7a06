#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "GetterFixture.h"
#include "ReportStress.h"
#include "TraceText.h"
#include "base/Trace.h"
#include "cli/CMSRAID_KRZ.h"
#include "getters/CMSRAID_CtrlInfoGetter.h"

using qortest::CItems;
using qortest::CRead;
using qortest::FakeComLib;
using qortest::StreamOf;
using qortest::TraceText;

namespace {

using CTexts = std::vector<std::string>;

constexpr int FAILURE = CTraceUtility::TRACE_DBG_FAILURE;
constexpr int RESULT = CTraceUtility::TRACE_DBG_RESULT;

const std::string HEADER = "RAID Controller : 0\n\n";
const std::string FIRM_TITLE = "### Firmware/BIOS/Driver Information ###\n";
const std::string SET_TITLE = "### Controller Settings Information ###\n";
const std::string NO_CONTROLLER = "Error - No RAID controller is found.";

// The items that every report with HEADER and one special section begins with.
const std::string FIRM_HEAD_ITEMS =
    " | Controller Information |  | TRUE\n"
    "Controller Information | ### Firmware/BIOS/Driver Information ### |  | TRUE\n";
const std::string SET_HEAD_ITEMS =
    " | Controller Information |  | TRUE\n"
    "Controller Information | ### Controller Settings Information ### |  | TRUE\n";

std::string FirmItem(const std::string& name, const std::string& value, const std::string& flag) {
    return "### Firmware/BIOS/Driver Information ### | " + name + " | " + value + " | " + flag +
           "\n";
}

std::string SetItem(const std::string& name, const std::string& value, const std::string& flag) {
    return "### Controller Settings Information ### | " + name + " | " + value + " | " + flag +
           "\n";
}

// Counts what is trimmed, too.
class CTestGetter : public qortest::CRejectingParserOf<CMSRAID_CtrlInfoGetter> {
public:
    void Trim(std::string& text) override {
        ++trimCalls;
        CMSRAID_CtrlInfoGetter::Trim(text);
    }

    int trimCalls = 0;
};

class CMSRAID_CtrlInfoGetterTest : public qortest::COneReportFixture<CMSRAID_CtrlInfoGetter> {
protected:
    CMSRAID_CtrlInfoGetterTest() : COneReportFixture("-ctrlinfo -a0") {}

    // The count after one run of the tool that must be trusted.
    int CountIn(const qortest::CToolStep& step, CMSRAID_CtrlInfoGetter& getter) {
        char count = 99;
        m_Tool->Play("-ctrlinfo -aAll", step);
        EXPECT_TRUE(getter.GetCtrlNum(&count));
        return static_cast<signed char>(count);
    }
    int CountIn(const std::string& report) {
        CMSRAID_CtrlInfoGetter getter;
        const int count = CountIn({.out = report}, getter);
        EXPECT_EQ(getter.ErrCode(), "");
        return count;
    }
    // A failed count, with its code, detail and traces but those of flow.
    void ExpectCountFails(const std::string& errCode, const std::string& traces) {
        CMSRAID_CtrlInfoGetter getter;
        qortest::ResetFakeComLib();
        char count = 99;
        EXPECT_FALSE(getter.GetCtrlNum(&count));
        EXPECT_EQ(count, 0);
        EXPECT_EQ(getter.ErrCode(), errCode);
        EXPECT_EQ(getter.ErrDetail(), errCode == "03" ? "" : "krzcli -ctrlinfo -aAll");
        EXPECT_EQ(qortest::TraceTextWithoutFlow(), traces);
    }

    // A stream that stands at the end of an empty file.
    static std::ifstream StreamAtEnd() {
        qortest::WriteFile("/opt/tarmica/empty", "");
        std::ifstream stream("/opt/tarmica/empty");
        stream.get();
        EXPECT_TRUE(stream.eof());
        return stream;
    }
};

// --- constants and life cycle

TEST_F(CMSRAID_CtrlInfoGetterTest, ConstantsAreTheToolsWords) {
    using G = CMSRAID_CtrlInfoGetter;
    const struct {
        const char* actual;
        const char* expected;
    } rows[] = {
        {G::CTRL_INFO_ROOT_NAME, "Controller Information"},
        {G::CTRL_RECON_RATE_NAME, "Reconstruction Rate"},
        {G::CTRL_CC_RATE_NAME, "Consistency Check Rate"},
        {G::CTRL_FIRM_PACK_VER_NAME, "Firmware Package Version"},
        {G::CTRL_FIRM_VER_NAME, "Firmware Version"},
        {G::CTRL_FIRM_BUILD_TIME_NAME, "Firmware Build Time"},
        {G::CTRL_FIRM_TITLE_NAME, "### Firmware/BIOS/Driver Information ###"},
        {G::CTRL_SETINFO_TITLE_NAME, "### Controller Settings Information ###"},
        {G::CTRL_NO_NAME, "Controller No."},
        {G::CTRL_SUBVEN_ID_OLD_NAME, "SubVendor ID"},
        {G::CTRL_SUBVEN_ID_NAME, "Subsystem Vendor ID"},
        {G::CTRL_SUBSYS_ID_OLD_NAME, "SubDevice ID"},
        {G::CTRL_SUBSYS_ID_NAME, "Subsystem ID"},
        {G::CTRL_NO_NAME_HEAD, "RAID Controller"},
        {G::TITLE_BEGIN_NAME, "### "},
        {G::GENERAL_INFO_TITLE_NAME, "### General Information ###"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.actual, row.expected);
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, LifeIsTracedFromBaseToClassAndBack) {
    { const CMSRAID_CtrlInfoGetter getter; }
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter [START]\n"
              "4: CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter [END]\n"
              "4: CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [START]\n"
              "4: CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [END]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]\n"
              "4: CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]\n");
}

// --- golden reports

TEST_F(CMSRAID_CtrlInfoGetterTest, GoldenReportsGiveTheirItems) {
    for (const std::string& name : CTexts{"current", "old_generation", "old_generation_crlf",
                                          "all_controllers", "unclosed_firmware"}) {
        SCOPED_TRACE(name);
        CMSRAID_CtrlInfoGetter getter;
        m_Tool->Play("-ctrlinfo -a0", {.out = qortest::Golden("ctrl/" + name + ".txt")});
        CItems items;
        EXPECT_TRUE(getter.GetInfo(0, items));
        qortest::ExpectGoldenItems("golden/ctrl/" + name + ".items", items);
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, BadGoldenReportsFailWithTheirTraces) {
    ExpectRejected(qortest::GoldenBad("ctrl/title_first.txt"), {"m_RaidList size is zero."});
    ExpectRejected(qortest::GoldenBad("ctrl/ends_at_firmware_title.txt"), {"Invalid Arg."});
    ExpectRejected(qortest::GoldenBad("ctrl/ends_at_settings_title.txt"), {"Invalid Arg."});
}

TEST_F(CMSRAID_CtrlInfoGetterTest, CarriageReturnsLeaveNoTrace) {
    const std::string report = qortest::Golden("ctrl/old_generation.txt");
    EXPECT_EQ(Items(qortest::Golden("ctrl/old_generation_crlf.txt")), Items(report));
}

// --- counting

TEST_F(CMSRAID_CtrlInfoGetterTest, CountsHeaderLinesAndWrapsAsASignedByte) {
    const struct {
        int controllers;
        int count;
    } rows[] = {{0, 0}, {1, 1}, {2, 2}, {127, 127}, {128, -128}, {255, -1}, {256, 0}, {257, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.controllers);
        std::string report = "krzcli\n";
        for (int i = 0; i < row.controllers; ++i) {
            report += "RAID Controller : " + std::to_string(i) + "\n\n";
        }
        EXPECT_EQ(CountIn(report), row.count);
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, CountsOnlyLinesThatBeginWithTheHeadAndHaveAColon) {
    EXPECT_EQ(CountIn("RAID Controller 0\n"
                      " RAID Controller : 1\n"
                      "\tRAID Controller : 1\n"
                      "raid controller : 2\n"
                      "No RAID Controller : 3\n"
                      "RAID Control : 4\n"),
              0);
    EXPECT_EQ(CountIn("RAID Controller:\n"
                      "RAID Controllers x : y\n"
                      "RAID Controller : 5\r\n"
                      "RAID Controller 6 :"),
              4);
}

TEST_F(CMSRAID_CtrlInfoGetterTest, EmptyReportIsNoController) {
    EXPECT_EQ(CountIn(""), 0);
}

TEST_F(CMSRAID_CtrlInfoGetterTest, CountIsTracedWithItsCommand) {
    CMSRAID_CtrlInfoGetter getter;
    qortest::ResetFakeComLib();
    EXPECT_EQ(CountIn({.out = "RAID Controller : 0\n"}, getter), 1);
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_CtrlInfoGetter::GetCtrlNum [START]\n"
              "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n"
              "4: CMSRAID_CtrlInfoGetter::GetCtrlNum [END]\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ToolErrorThatNamesNoControllerIsACountOfZero) {
    for (const std::string& firstLine : CTexts{NO_CONTROLLER, NO_CONTROLLER + " (x)\n"}) {
        for (const int status : {0, 1}) {
            SCOPED_TRACE(firstLine + std::to_string(status));
            CMSRAID_CtrlInfoGetter getter;
            qortest::ResetFakeComLib();
            EXPECT_EQ(CountIn({.err = firstLine, .status = status}, getter), 0);
            EXPECT_EQ(getter.ErrCode(), "01");
            EXPECT_EQ(getter.ErrDetail(), "krzcli -ctrlinfo -aAll");
            EXPECT_EQ(FakeComLib().traces[3].text, "Failed to execute krzcli command 00000001.");
            EXPECT_EQ(FakeComLib().Traces(RESULT).back(), "No RAID controller is found.");
            EXPECT_TRUE(FakeComLib().sleeps.empty());
        }
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ToolErrorWithAnyOtherFirstLineFails) {
    for (const std::string& report : CTexts{
             "", "\n" + NO_CONTROLLER, " " + NO_CONTROLLER, "Error - No RAID controller is found\n",
             "Error - Out of memory.\n" + NO_CONTROLLER, "RAID Controller : 0\n"}) {
        SCOPED_TRACE(report);
        m_Tool->Play("-ctrlinfo -aAll", {.out = report, .status = 1});
        ExpectCountFails("01",
                         "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n"
                         "2: Failed to execute krzcli command.(krzcli -ctrlinfo -aAll,cliRtn=1)\n"
                         "2: Failed to execute krzcli command 00000001.\n");
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ErrorLineOfASuccessfulToolFailsTheCount) {
    m_Tool->Play("-ctrlinfo -aAll", {.out = "Error - Out of memory.\nRAID Controller : 0\n"});
    ExpectCountFails("01",
                     "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n"
                     "2: KRZ CLI has an error(krzcli -ctrlinfo -aAll).\n"
                     "2: Failed to execute krzcli command 00000001.\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, KilledToolFailsTheCountWhateverItSaidFirst) {
    // The tool kills the shell that runs it as well, so that the run itself fails.
    m_Tool->Play("-ctrlinfo -aAll", {.run = "echo '" + NO_CONTROLLER + "'; kill -9 0"});
    CMSRAID_CtrlInfoGetter getter;
    qortest::ResetFakeComLib();
    char count = 99;
    EXPECT_FALSE(getter.GetCtrlNum(&count));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(FakeComLib().Traces(FAILURE).back(), "Failed to execute krzcli command 00000002.");
    EXPECT_EQ(FakeComLib().Traces(RESULT).size(), 1U);
}

TEST_F(CMSRAID_CtrlInfoGetterTest, MissingToolFailsTheCount) {
    std::filesystem::remove("/opt/tarmica/krz/cli/krzcli");
    ExpectCountFails("01",
                     "2: KRZ is not installed.\n"
                     "2: Failed to execute krzcli command 00000003.\n"
                     "2: Failed to delete file(RESULTFILE).\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ReportThatVanishedFailsTheCount) {
    m_Tool->Play("-ctrlinfo -aAll", {.run = "rm /opt/tarmica/qor/provider/tmp/MSRAID/*"});
    ExpectCountFails("03",
                     "1: execute krzcli command.(krzcli -ctrlinfo -aAll)\n"
                     "2: Failed to open file output by krzcli(RESULTFILE).\n"
                     "2: Failed to delete file(RESULTFILE).\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, TimeOutIsNotedWithItsOwnCodeAndTheLatestCodeStandsFirst) {
    CTestGetter getter;
    getter.NoteRunFailure(KRZ_RUN_FAILED, "first");
    getter.NoteRunFailure(KRZ_TIMEOUT, "second");
    EXPECT_EQ(getter.ErrCode(), "0501");
    EXPECT_EQ(getter.ErrDetail(), "second");
}

// --- the run

TEST_F(CMSRAID_CtrlInfoGetterTest, CommandNamesTheControllerInDecimal) {
    CMSRAID_CtrlInfoGetter getter;
    CItems items;
    m_Tool->Play("-ctrlinfo -a0", {});
    m_Tool->Play("-ctrlinfo -a15", {});
    EXPECT_TRUE(getter.GetInfo(0, items));
    EXPECT_TRUE(getter.GetInfo(15, items));
    EXPECT_EQ(items.Text(), "");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, CommandWithoutANumberIsRunAsItStands) {
    CMSRAID_CtrlInfoGetter getter;
    CItems items;
    m_Tool->Play("-ctrlinfo -a%s", {.out = HEADER});
    EXPECT_TRUE(getter.GetInfo(items));
    EXPECT_EQ(items.Text(), " | Controller Information |  | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ItemsAreAppendedToTheCallersList) {
    CMSRAID_CtrlInfoGetter getter;
    CItems items;
    AddItem(items, "", "mine", "");
    m_Tool->Play("-ctrlinfo -a0", {.out = HEADER});
    EXPECT_TRUE(getter.GetInfo(0, items));
    EXPECT_EQ(items.Text(),
              " | mine |  | TRUE\n"
              " | Controller Information |  | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, FailingToolIsTriedThreeTimes) {
    CMSRAID_CtrlInfoGetter getter;
    CItems items;
    for (int attempt = 0; attempt < 3; ++attempt) {
        m_Tool->Play("-ctrlinfo -a0", {.out = HEADER, .status = 2});
    }
    EXPECT_FALSE(getter.GetInfo(0, items));
    EXPECT_EQ(items.Text(), "");
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -ctrlinfo -a0");
    EXPECT_EQ(FakeComLib().sleeps, std::vector<unsigned long>({1000, 1000}));
    EXPECT_EQ(FakeComLib().Traces(FAILURE).back(),
              "Failed to execute krzcli command ret=00000001.");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ReportThatVanishedFailsTheRun) {
    CMSRAID_CtrlInfoGetter getter;
    qortest::ResetFakeComLib();
    CItems items;
    m_Tool->Play("-ctrlinfo -a0", {.run = "rm /opt/tarmica/qor/provider/tmp/MSRAID/*"});
    EXPECT_FALSE(getter.GetInfo(0, items));
    EXPECT_EQ(getter.ErrCode(), "03");
    EXPECT_EQ(getter.ErrDetail(), "");
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::GetInfo [START]\n"
              "1: execute krzcli command.(krzcli -ctrlinfo -a0)\n"
              "2: Failed to open file output by krzcli(RESULTFILE).\n"
              "2: Failed to delete file(RESULTFILE).\n"
              "4: CMSRAID_InfoGetter::GetInfo [END]\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, AcceptedReportIsTracedLineByLine) {
    CMSRAID_CtrlInfoGetter getter;
    EXPECT_TRUE(Read("RAID Controller : 0\n"
                     "### General Information ###\n"
                     "Product Name : X\n"
                     "### Firmware/BIOS/Driver Information ###\n"
                     "\n"
                     "### Controller Settings Information ###\n",
                     getter)
                    .result);
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::GetInfo [START]\n"
              "1: execute krzcli command.(krzcli -ctrlinfo -a0)\n"
              "4: CMSRAID_InfoGetter::Parse [START]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_CtrlInfoGetter::AddRootItem [START]\n"
              "4: CMSRAID_CtrlInfoGetter::AddRootItem [END]\n"
              "4: CMSRAID_CtrlInfoGetter::ParseCtrlNo [START], RAID Controller : 0\n"
              "4: CMSRAID_CtrlInfoGetter::ParseCtrlNo [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_CtrlInfoGetter::ParseFirmwareInfo [START]\n"
              "4: CMSRAID_CtrlInfoGetter::ParseFirmwareInfo [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]\n"
              "4: CMSRAID_CtrlInfoGetter::ParseSettingInfo [START]\n"
              "4: CMSRAID_CtrlInfoGetter::ParseSettingInfo [END]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]\n"
              "4: CMSRAID_CtrlInfoGetter::FreeItemList [START]\n"
              "4: CMSRAID_CtrlInfoGetter::FreeItemList [END]\n"
              "4: CMSRAID_InfoGetter::Parse [END]\n"
              "4: CMSRAID_InfoGetter::GetInfo [END]\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, RejectedReportIsTracedWhereItFailed) {
    CMSRAID_CtrlInfoGetter getter;
    EXPECT_FALSE(Read("### General Information ###\nnever : read\n", getter).result);
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InfoGetter::GetInfo [START]\n"
              "1: execute krzcli command.(krzcli -ctrlinfo -a0)\n"
              "4: CMSRAID_InfoGetter::Parse [START]\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]\n"
              "2: m_RaidList size is zero.\n"
              "4: CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]\n"
              "2: CreateRAIDItem is FAILED (ret=00000000).\n"
              "4: CMSRAID_CtrlInfoGetter::FreeItemList [START]\n"
              "4: CMSRAID_CtrlInfoGetter::FreeItemList [END]\n"
              "4: CMSRAID_InfoGetter::Parse [END]\n"
              "2: Failed to parse RAID Information ret=00000000.\n"
              "4: CMSRAID_InfoGetter::GetInfo [END]\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, GetterWorksAgainAfterAFailure) {
    CMSRAID_CtrlInfoGetter getter;
    const std::string good = qortest::Golden("ctrl/current.txt");
    const std::string items = Items(good);
    EXPECT_FALSE(Read(HEADER + FIRM_TITLE.substr(0, FIRM_TITLE.size() - 1), getter).result);
    const CRead again = Read(good, getter);
    EXPECT_TRUE(again.result);
    EXPECT_EQ(again.items, items);
    EXPECT_EQ(again.errCode, "04");
    EXPECT_FALSE(Read("### Early ###\n", getter).result);
    EXPECT_EQ(getter.ErrCode(), "0404");
}

// --- the header

TEST_F(CMSRAID_CtrlInfoGetterTest, ControllerNumberIsHeldUntilGeneralInformation) {
    EXPECT_EQ(Items("RAID Controller :  7 : x \n"
                    "### Other ###\n"
                    "a : b\n"
                    "### General Information ###\n"
                    "Product Name : X\n"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### Other ### |  | TRUE\n"
              "### Other ### | a | b | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. | 7 : x | TRUE\n"
              "### General Information ### | Product Name | X | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeaderIsTracedAsItStands) {
    EXPECT_EQ(Items("RAID Controller : 0 \t\r\n"), " | Controller Information |  | TRUE\n");
    const CTexts flow = FakeComLib().Traces(CTraceUtility::TRACE_DBG_FLOW);
    ASSERT_GT(flow.size(), 5U);
    EXPECT_EQ(flow[5], "CMSRAID_CtrlInfoGetter::ParseCtrlNo [START], RAID Controller : 0 \t\r");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, RootsAndTitlesAreMadeByTheVirtualOperations) {
    CTestGetter getter;
    EXPECT_TRUE(Read(HEADER + "RAID Controller : 1\n", getter).result);
    EXPECT_EQ(getter.rootCalls, 2);
    EXPECT_FALSE(Read(HEADER + "### BAD ###\na : b\n", getter).result);
    EXPECT_EQ(FakeComLib().Traces(FAILURE),
              CTexts({"CreateRAIDItem is FAILED (ret=00000000).",
                      "Failed to parse RAID Information ret=00000000."}));
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeldNumberWithoutItsTitleIsDiscarded) {
    CMSRAID_CtrlInfoGetter getter;
    EXPECT_EQ(Read("RAID Controller : 5\n### Other ###\n", getter).items,
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### Other ### |  | TRUE\n");
    EXPECT_EQ(Read("RAID Controller : 6\n### General Information ###\n", getter).items,
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. | 6 | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeldNumberOfAFailedRunIsDiscarded) {
    CMSRAID_CtrlInfoGetter getter;
    EXPECT_FALSE(
        Read("RAID Controller : 5\n### Controller Settings Information ###", getter).result);
    EXPECT_EQ(Read("RAID Controller : 6\n### General Information ###\n", getter).items,
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. | 6 | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, EveryHeaderOpensARootAndHeldNumbersQueueUp) {
    EXPECT_EQ(Items("RAID Controller : 0\n"
                    "a : b\n"
                    "RAID Controller : 1\n"
                    "c : d\n"
                    "### General Information ###\n"
                    "### General Information ###\n"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | a | b | TRUE\n"
              " | Controller Information |  | TRUE\n"
              "Controller Information | c | d | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. | 0 | TRUE\n"
              "### General Information ### | Controller No. | 1 | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeaderEndsTheSectionOfTheControllerBefore) {
    EXPECT_EQ(Items("RAID Controller : 0\n### Other ###\na : b\nRAID Controller : 1\nc : d\n"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### Other ### |  | TRUE\n"
              "### Other ### | a | b | TRUE\n"
              " | Controller Information |  | TRUE\n"
              "Controller Information | c | d | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeaderWithoutAColonIsNoHeader) {
    EXPECT_EQ(Items("RAID Controller 0\n"), "");
    EXPECT_EQ(Items(" RAID Controller : 0\n"), "");
    ExpectRejected("RAID Controller 0\n### General Information ###\n",
                   {"m_RaidList size is zero."});
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeaderThatEndsAtItsColonGivesAnEmptyNumber) {
    EXPECT_EQ(Items("RAID Controller:\n### General Information ###\n"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. |  | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, BeforeTheHeaderKeysAreIgnoredAndTitlesFail) {
    EXPECT_EQ(Items("a : b\nplain\n\n:c\n"), "");
    EXPECT_EQ(Items("SubVendor ID : 1\nRAID Controller : 0\n"),
              " | Controller Information |  | TRUE\n");
    ExpectRejected("a : b\n### Any ###\n", {"m_RaidList size is zero."});
}

// --- plain lines and titles

TEST_F(CMSRAID_CtrlInfoGetterTest, KeyValueLinesAreSplitAtTheFirstColonAndTrimmed) {
    EXPECT_EQ(Items(HEADER + "\t key \t:\t v : w \t\r\n"
                             "empty:\n"
                             "blank : \n"
                             ": none\n"
                             "no colon\n"
                             " : nameless\n"
                             "### T:t ###\n"
                             "last:1"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | key | v : w | TRUE\n"
              "Controller Information | empty |  | TRUE\n"
              "Controller Information | blank |  | TRUE\n"
              "Controller Information |  | nameless | TRUE\n"
              "Controller Information | ### T:t ### |  | TRUE\n"
              "### T:t ### | last | 1 | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, TitleStandsAtTheFirstColumnAndIsTrimmedAtItsEnd) {
    EXPECT_EQ(Items(HEADER + "### A ### \t\r\n"
                             " ### B ###\n"
                             "###C ###\n"
                             " ### D : E ###\n"
                             "### open\n"
                             "### \n"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### A ### |  | TRUE\n"
              "### A ### | ### D | E ### | TRUE\n"
              "Controller Information | ### open |  | TRUE\n"
              "Controller Information | ### |  | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, TitlesAreComparedExactly) {
    for (const std::string& title :
         CTexts{"### Firmware/BIOS/Driver Information", "### Firmware/BIOS/Driver  Information ###",
                "### Firmware/BIOS/Driver\\tInformation ###",
                "### Controller Settings Information ### x", "### General information ###"}) {
        std::string line = title;
        CStringUtil::strReplace(line, "\\t", "\t");
        EXPECT_EQ(Items(HEADER + line + "\nk : v\n"),
                  " | Controller Information |  | TRUE\nController Information | " + title +
                      " |  | TRUE\n" + title + " | k | v | TRUE\n");
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, OldKeyNamesAreRenamedOutsideTheSpecialSections) {
    EXPECT_EQ(Items(HEADER + "SubVendor ID : 1\n"
                             "SubDevice ID : 2\n"
                             "### General Information ###\n"
                             "SubVendor ID : 3\n"
                             "SubDevice ID : 4\n"
                             "Subsystem Vendor ID : 5\n"
                             "Subsystem ID : 6\n"
                             "SubVendor IDs : 7\n"
                             "SubDevice IDs : 7\n"
                             "### Other ###\n"
                             "SubDevice ID : 8\n"),
              " | Controller Information |  | TRUE\n"
              "Controller Information | Subsystem Vendor ID | 1 | TRUE\n"
              "Controller Information | Subsystem ID | 2 | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. | 0 | TRUE\n"
              "### General Information ### | Subsystem Vendor ID | 3 | TRUE\n"
              "### General Information ### | Subsystem ID | 4 | TRUE\n"
              "### General Information ### | Subsystem Vendor ID | 5 | TRUE\n"
              "### General Information ### | Subsystem ID | 6 | TRUE\n"
              "### General Information ### | SubVendor IDs | 7 | TRUE\n"
              "### General Information ### | SubDevice IDs | 7 | TRUE\n"
              "Controller Information | ### Other ### |  | TRUE\n"
              "### Other ### | Subsystem ID | 8 | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, OldKeyNamesStayInTheSpecialSections) {
    const std::string keys = "SubVendor ID : 1\nSubDevice ID : 2\n";
    const std::string firmware = Items(HEADER + FIRM_TITLE + keys);
    EXPECT_TRUE(firmware.ends_with(FirmItem("SubVendor ID", "1", "TRUE") +
                                   FirmItem("SubDevice ID", "2", "TRUE")))
        << firmware;
    EXPECT_EQ(Items(HEADER + SET_TITLE + keys), SET_HEAD_ITEMS +
                                                    SetItem("SubVendor ID", "1", "TRUE") +
                                                    SetItem("SubDevice ID", "2", "TRUE") +
                                                    SetItem("Reconstruction Rate", "", "FALSE"));
}

TEST_F(CMSRAID_CtrlInfoGetterTest, RejectedKeyValueLineRejectsTheReport) {
    const struct {
        std::string report;
        CTexts failures;
    } rows[] = {
        {HEADER + "BAD : 1\n", {}},
        {HEADER + FIRM_TITLE + "a : 1\nBAD : 1\n", {"ParseKeyValue is FAILED (ret=00000000)."}},
        {HEADER + SET_TITLE + "a : 1\nBAD : 1\n", {"ParseKeyValue is FAILED (hr=00000000)."}},
    };
    for (const auto& row : rows) {
        CTestGetter getter;
        const CRead read = Read(row.report, getter);
        EXPECT_FALSE(read.result);
        EXPECT_EQ(read.items, "");
        EXPECT_EQ(read.errCode, "04");
        CTexts failures = row.failures;
        failures.insert(failures.end(), {"CreateRAIDItem is FAILED (ret=00000000).",
                                         "Failed to parse RAID Information ret=00000000."});
        EXPECT_EQ(FakeComLib().Traces(FAILURE), failures);
    }
}

// --- firmware section

TEST_F(CMSRAID_CtrlInfoGetterTest, FirmwarePlaceholdersStandForMissingLinesAndTwoAreCrossed) {
    const std::string packageLine = "Firmware Package Version : 1\n";
    const std::string versionLine = "Firmware Version : 2\n";
    const std::string timeLine = "Firmware Build Time : 12:30:00\n";
    const std::string noPackage = FirmItem("Firmware Package Version", "", "FALSE");
    const std::string noVersion = FirmItem("Firmware Version", "", "FALSE");
    const std::string noTime = FirmItem("Firmware Build Time", "", "FALSE");
    const std::string package = FirmItem("Firmware Package Version", "1", "TRUE");
    const std::string version = FirmItem("Firmware Version", "2", "TRUE");
    const std::string time = FirmItem("Firmware Build Time", "12:30:00", "TRUE");
    const struct {
        std::string lines;
        std::string items;
    } rows[] = {
        {"", noPackage + noVersion + noTime},
        {packageLine, noVersion + noTime + package},
        {versionLine, noPackage + noVersion + version},
        {timeLine, noPackage + noTime + time},
        {packageLine + versionLine, noVersion + package + version},
        {packageLine + timeLine, noTime + package + time},
        {versionLine + timeLine, noPackage + version + time},
        {packageLine + versionLine + timeLine, package + version + time},
        {timeLine + versionLine + packageLine, time + version + package},
        {versionLine + versionLine, noPackage + noVersion + version + version},
    };
    for (const auto& row : rows) {
        for (const std::string& end : CTexts{"", "\n", "\n### X ###\n"}) {
            SCOPED_TRACE(row.lines + "|" + end);
            const std::string after =
                end.size() > 1 ? "Controller Information | ### X ### |  | TRUE\n" : "";
            EXPECT_EQ(Items(HEADER + FIRM_TITLE + row.lines + end),
                      FIRM_HEAD_ITEMS + row.items + after);
        }
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, FirmwareLineAtTheEndNeedsNoLineFeedButItsTitleDoes) {
    EXPECT_EQ(Items(HEADER + FIRM_TITLE + "Firmware Build Time : 1"),
              FIRM_HEAD_ITEMS + FirmItem("Firmware Package Version", "", "FALSE") +
                  FirmItem("Firmware Build Time", "", "FALSE") +
                  FirmItem("Firmware Build Time", "1", "TRUE"));
    ExpectRejected(HEADER + "### Firmware/BIOS/Driver Information ###", {"Invalid Arg."});
}

TEST_F(CMSRAID_CtrlInfoGetterTest, FirmwareSectionSkipsLinesWithoutAKeyAndEndsAtABlankOne) {
    EXPECT_EQ(Items(HEADER + FIRM_TITLE +
                    "no colon\n"
                    "  : first after trimming\n"
                    "\tBIOS : 1 \r\n"
                    " \t\r\n"
                    "Firmware Version : under the title, but not the section's\n"),
              FIRM_HEAD_ITEMS + FirmItem("Firmware Package Version", "", "FALSE") +
                  FirmItem("Firmware Version", "", "FALSE") +
                  FirmItem("Firmware Build Time", "", "FALSE") + FirmItem("BIOS", "1", "TRUE") +
                  FirmItem("Firmware Version", "under the title, but not the section's", "TRUE"));
}

// --- settings section

TEST_F(CMSRAID_CtrlInfoGetterTest, ReconstructionRateGetsAPlaceholderAfterTheCheckRateOrLast) {
    const std::string other = SetItem("Rebuild Rate", "1", "TRUE");
    const std::string check = SetItem("Consistency Check Rate", "2", "TRUE");
    const std::string recon = SetItem("Reconstruction Rate", "3", "TRUE");
    const std::string placeholder = SetItem("Reconstruction Rate", "", "FALSE");
    const std::string otherLine = "Rebuild Rate : 1\n";
    const std::string checkLine = "Consistency Check Rate : 2\n";
    const std::string reconLine = "Reconstruction Rate : 3\n";
    const struct {
        std::string lines;
        std::string items;
    } rows[] = {
        {"", placeholder},
        {otherLine, other + placeholder},
        {checkLine, check + placeholder},
        {reconLine, recon},
        {checkLine + reconLine, check + recon},
        {reconLine + checkLine, recon + check},
        {otherLine + checkLine + otherLine, other + check + placeholder + other},
        {otherLine + reconLine + otherLine, other + recon + other},
        {checkLine + otherLine + checkLine + otherLine,
         check + other + check + placeholder + other},
    };
    for (const auto& row : rows) {
        for (const std::string& end : CTexts{"", "\n", "\n### X ###\n"}) {
            SCOPED_TRACE(row.lines + "|" + end);
            const std::string after =
                end.size() > 1 ? "Controller Information | ### X ### |  | TRUE\n" : "";
            EXPECT_EQ(Items(HEADER + SET_TITLE + row.lines + end),
                      SET_HEAD_ITEMS + row.items + after);
        }
    }
}

TEST_F(CMSRAID_CtrlInfoGetterTest, SettingsLineAtTheEndNeedsNoLineFeedButItsTitleDoes) {
    EXPECT_EQ(Items(HEADER + SET_TITLE + "Reconstruction Rate : 3"),
              SET_HEAD_ITEMS + SetItem("Reconstruction Rate", "3", "TRUE"));
    ExpectRejected(HEADER + "### Controller Settings Information ###", {"Invalid Arg."});
}

TEST_F(CMSRAID_CtrlInfoGetterTest, SectionWithoutItsBlankLineSwallowsTheNextTitle) {
    EXPECT_EQ(Items(HEADER + SET_TITLE + "a : 1\n### General Information ###\nb : 2\n\nc : 3\n"),
              SET_HEAD_ITEMS + SetItem("a", "1", "TRUE") + SetItem("b", "2", "TRUE") +
                  SetItem("Reconstruction Rate", "", "FALSE") + SetItem("c", "3", "TRUE"));
    EXPECT_EQ(Items(HEADER + FIRM_TITLE + SET_TITLE + "b : 2\n"),
              FIRM_HEAD_ITEMS + FirmItem("Firmware Package Version", "", "FALSE") +
                  FirmItem("Firmware Version", "", "FALSE") +
                  FirmItem("Firmware Build Time", "", "FALSE") + FirmItem("b", "2", "TRUE"));
}

// --- direct calls

TEST_F(CMSRAID_CtrlInfoGetterTest, SpecialParsersRejectAStreamThatIsAtItsEnd) {
    CTestGetter getter;
    getter.AddRootItem();
    const struct {
        bool (CMSRAID_CtrlInfoGetter::*parser)(std::ifstream&, std::string);
        std::string name;
    } rows[] = {{&CMSRAID_CtrlInfoGetter::ParseFirmwareInfo, "ParseFirmwareInfo"},
                {&CMSRAID_CtrlInfoGetter::ParseSettingInfo, "ParseSettingInfo"}};
    for (const auto& row : rows) {
        std::ifstream neverOpened;
        neverOpened.setstate(std::ios::failbit);
        std::ifstream atEnd = StreamAtEnd();
        for (std::ifstream* stream : {&atEnd, &neverOpened}) {
            qortest::ResetFakeComLib();
            EXPECT_FALSE((getter.*row.parser)(*stream, ""));
            EXPECT_EQ(TraceText(), "4: CMSRAID_CtrlInfoGetter::" + row.name +
                                       " [START]\n"
                                       "2: Invalid Arg.\n"
                                       "4: CMSRAID_CtrlInfoGetter::" +
                                       row.name + " [END]\n");
        }
    }
    EXPECT_EQ(qortest::ItemText(getter.Items()), " | Controller Information |  | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, FirmwarePlaceholdersFollowTheItemThatIsLastAtItsEntry) {
    CTestGetter getter;
    getter.AddRootItem();
    getter.AddPlaceholder("last");
    std::ifstream stream = StreamOf("a : b\n");
    EXPECT_TRUE(getter.ParseFirmwareInfo(stream, ""));
    EXPECT_EQ(qortest::ItemText(getter.Items()),
              " | Controller Information |  | TRUE\n"
              "Controller Information | last |  | FALSE\n"
              "Controller Information | Firmware Package Version |  | FALSE\n"
              "Controller Information | Firmware Version |  | FALSE\n"
              "Controller Information | Firmware Build Time |  | FALSE\n"
              "Controller Information | a | b | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, SettingsPlaceholderStandsUnderTheCurrentSection) {
    CTestGetter getter;
    getter.AddRootItem();
    std::ifstream stream = StreamOf("");
    EXPECT_TRUE(getter.ParseSettingInfo(stream, ""));
    EXPECT_EQ(qortest::ItemText(getter.Items()),
              " | Controller Information |  | TRUE\n"
              "Controller Information | Reconstruction Rate |  | FALSE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HeaderParserNeedsARoot) {
    CMSRAID_CtrlInfoGetter getter;
    qortest::ResetFakeComLib();
    std::ifstream stream = StreamOf("");
    EXPECT_FALSE(getter.ParseCtrlNo(stream, "RAID Controller : 0"));
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_CtrlInfoGetter::ParseCtrlNo [START], RAID Controller : 0\n"
              "2: m_RaidList size is zero.\n"
              "2: ParseKeyValue is FAILED (ret=00000000).\n"
              "4: CMSRAID_CtrlInfoGetter::ParseCtrlNo [END]\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, SectionLinesAreTrimmedByTheVirtualOperation) {
    CTestGetter getter;
    getter.AddRootItem();
    std::ifstream stream = StreamOf("only a line\n\nrest\n");
    EXPECT_TRUE(getter.ParseSettingInfo(stream, ""));
    EXPECT_EQ(getter.trimCalls, 2);
    std::string rest;
    EXPECT_TRUE(std::getline(stream, rest));
    EXPECT_EQ(rest, "rest");
}

// --- hostile reports

TEST_F(CMSRAID_CtrlInfoGetterTest, HugeLineIsOneItem) {
    const std::string huge(1 << 20, 'x');
    EXPECT_EQ(Items(huge), "");
    EXPECT_EQ(
        Items(HEADER + "k : " + huge),
        " | Controller Information |  | TRUE\nController Information | k | " + huge + " | TRUE\n");
    EXPECT_EQ(Items(HEADER + FIRM_TITLE + huge + " : v\n").size(),
              huge.size() + Items(HEADER + FIRM_TITLE + "k : v\n").size() - 1);
}

TEST_F(CMSRAID_CtrlInfoGetterTest, EmbeddedNulCutsAText) {
    using std::string_literals::operator""s;
    EXPECT_EQ(Items(HEADER + "ke\0y : val\0ue\n\0\n\0:\n### T\0itle ###\na : b\n"s),
              " | Controller Information |  | TRUE\n"
              "Controller Information | ke | val | TRUE\n"
              "Controller Information |  |  | TRUE\n"
              "Controller Information | ### T |  | TRUE\n"
              "### T | a | b | TRUE\n");
}

TEST_F(CMSRAID_CtrlInfoGetterTest, TitleIsComparedAsItsItemShowsIt) {
    using std::string_literals::operator""s;
    EXPECT_EQ(Items(HEADER + "### General Information ###\0 x\n"
                             "### Firmware/BIOS/Driver Information ###\0 x\nBIOS : 1\n\n"
                             "### Controller Settings Information ###\0 x\n"s),
              " | Controller Information |  | TRUE\n"
              "Controller Information | ### General Information ### |  | TRUE\n"
              "### General Information ### | Controller No. | 0 | TRUE\n"
              "Controller Information | ### Firmware/BIOS/Driver Information ### |  | TRUE\n" +
                  FirmItem("Firmware Package Version", "", "FALSE") +
                  FirmItem("Firmware Version", "", "FALSE") +
                  FirmItem("Firmware Build Time", "", "FALSE") + FirmItem("BIOS", "1", "TRUE") +
                  "Controller Information | ### Controller Settings Information ### |  | TRUE\n" +
                  SetItem("Reconstruction Rate", "", "FALSE"));
}

TEST_F(CMSRAID_CtrlInfoGetterTest, ReportCutAtAnyByteGivesItemsOrACleanFailure) {
    qortest::ExpectEveryBeginningIsHandled(
        [] { return std::make_unique<CMSRAID_CtrlInfoGetter>(); },
        qortest::Golden("ctrl/current.txt"));
}

TEST_F(CMSRAID_CtrlInfoGetterTest, DamagedReportGivesItemsOrACleanFailure) {
    CMSRAID_CtrlInfoGetter getter;
    qortest::ExpectDamageIsHandled(getter, qortest::Golden("ctrl/all_controllers.txt"), 41, 500);
}

TEST_F(CMSRAID_CtrlInfoGetterTest, HugeListOfControllersIsNotUnderstood) {
    m_Tool->Play("-ctrlinfo -aAll", {.run = "truncate -s 16777217 /proc/self/fd/1"});
    CMSRAID_CtrlInfoGetter getter;
    char count = 99;
    EXPECT_FALSE(getter.GetCtrlNum(&count));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(getter.ErrCode(), "04");
}

}  // namespace
