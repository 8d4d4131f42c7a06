#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "GetterFixture.h"
#include "ReportStress.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

using G = CMSRAID_PDSMInfoGetter;

using CParser = CParserOf<CMSRAID_PDSMInfoGetter>;
using CRejectingParser = CRejectingParserOf<CMSRAID_PDSMInfoGetter>;

std::string Drive(const std::string& interfaceType) {
    return "PD3(GHS)\n### General Information ###\nInterface Type : " + interfaceType +
           "\nTemperature : 1C\n\n### SMART Information ###\n";
}

// What Drive() gives, the SMART title included.
std::string DriveItems(const std::string& interfaceType) {
    return " | Physical Drive Information |  | TRUE\n"
           "Physical Drive Information | ### General Information ### |  | TRUE\n"
           "### General Information ### | PD No. | PD3 | TRUE\n"
           "### General Information ### | RG No. | - | TRUE\n"
           "### General Information ### | LD No. | GHS | TRUE\n"
           "### General Information ### | Interface Type | " +
           interfaceType +
           " | TRUE\n"
           "### General Information ### | Temperature | 1C | TRUE\n"
           "Physical Drive Information | ### SMART Information ### |  | TRUE\n";
}

std::string InSmart(const std::string& name, const std::string& value,
                    const std::string& flag = "TRUE") {
    return "### SMART Information ### | " + name + " | " + value + " | " + flag + "\n";
}

const std::string BOTH_PLACEHOLDERS =
    InSmart("Temperature", "", "FALSE") + InSmart("Power-On Time", "", "FALSE");

// One row of a table: its group item and its cells.
std::string RowItems(const std::string& group,
                     const std::vector<std::pair<std::string, std::string>>& cells) {
    std::string text = InSmart(group, "");
    for (const auto& [column, cell] : cells) {
        text.append(group).append(" | ").append(column).append(" | ").append(cell);
        text.append(" | TRUE\n");
    }
    return text;
}

// A SATA row: the number, the name filled up to its 40 characters, and the rest.
std::string SATARow(const std::string& number, std::string name, const std::string& rest) {
    name.resize(40, ' ');
    return number + " " + name + " " + rest + "\n";
}

// Every parent stands before its children, and placeholders are empty.
void ExpectSoundTree(const std::list<CItemDisp*>& items) {
    std::set<std::string> names = {""};
    for (const CItemDisp* item : items) {
        EXPECT_TRUE(names.contains(item->ParentName())) << "no parent before " << ItemText(*item);
        EXPECT_TRUE(item->Enable() == "TRUE" ||
                    (item->Enable() == "FALSE" && item->ItemValue().empty()))
            << ItemText(*item);
        names.insert(item->ItemName());
    }
}

class PDSMInfoGetter : public CGetterFixture {
protected:
    // The items of a drive of this type with this SMART section, those behind the SMART title.
    static std::string Smart(const std::string& interfaceType, const std::string& section) {
        CParser parser;
        EXPECT_TRUE(parser.ParseText(Drive(interfaceType) + section));
        const std::string text = ItemText(parser.Items());
        const std::string head = DriveItems(interfaceType);
        EXPECT_EQ(text.substr(0, head.size()), head);
        return text.substr(std::min(head.size(), text.size()));
    }

    static void ExpectOutOfRange(const std::string& interfaceType, const std::string& section) {
        CParser parser;
        EXPECT_THROW(parser.ParseText(Drive(interfaceType) + section), std::out_of_range)
            << section;
    }

    // The items of a golden report about the drive at address 252:`slot`.
    static void ExpectGoldenReport(const std::string& name, const std::string& report, long slot) {
        CStandInTool tool;
        tool.Play("-ldpdinfo -a0", {.out = Golden("smart/groups.txt")});
        tool.Play("-pdinfo -pd[252:" + std::to_string(slot) + "] -a0", {.out = report});
        CMSRAID_PDSMInfoGetter getter;
        CItems items;
        ASSERT_TRUE(getter.GetInfo(0, 252, slot, items));
        ExpectGoldenItems("golden/smart/" + name + ".items", items);
        EXPECT_EQ(getter.ErrCode(), "");
        EXPECT_EQ(getter.ErrDetail(), "");
    }
};

TEST_F(PDSMInfoGetter, ConstantsHaveTheirTexts) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {G::SMART_TEMPERATURE_NAME, "Temperature"},
        {G::SMART_POWER_TIME_NAME, "Power-On Time"},
        {G::SMART_ATTRIBUTE_NAME, "Attribute"},
        {G::SMART_DETAIL_SAS_NAME, "SMART Detail(SAS)"},
        {G::SMART_DETAIL_SATA_NAME, "SMART Detail(SATA)"},
        {G::SMART_HEAD_NAME, "[Head"},
        {G::SMART_RAW_DATA_NAME, "Raw Data"},
        {G::SMART_RAW_DATA_HEAD_NAME, "Raw"},
    };
    for (const auto& [constant, text] : rows) {
        EXPECT_EQ(constant, text);
    }
}

TEST_F(PDSMInfoGetter, ShowsASATADrive) {
    ExpectGoldenReport("sata", Golden("smart/sata.txt"), 5);
}

TEST_F(PDSMInfoGetter, ShowsASASDrive) {
    ExpectGoldenReport("sas", Golden("smart/sas.txt"), 0);
}

TEST_F(PDSMInfoGetter, ShowsTheSameWithCarriageReturns) {
    for (const auto& [name, slot] : {std::pair<std::string, long>("sata", 5), {"sas", 0}}) {
        fs::remove_all(TOOL_DIR);
        ExpectGoldenReport(name, WithCarriageReturns(Golden("smart/" + name + ".txt")), slot);
    }
}

// --- the command ---

TEST_F(PDSMInfoGetter, CommandNamesTheControllerAndTheDrive) {
    struct CRow {
        long ctrlNo;
        long enclosure;
        long slot;
        const char* controller;
        const char* drive;
    };
    const std::vector<CRow> rows = {
        {0, 0, 3, "-a0", "[0:3]"},
        {12, 252, 15, "-a12", "[252:15]"},
        {-1, -2, -3, "-a-1", "[-2:-3]"},
        {4294967296, 4294967297, 4294967295, "-a4294967296", "[1:-1]"},
        {-4294967297, 2147483648, -2147483649, "-a-4294967297", "[-2147483648:2147483647]"},
        {9223372036854775807, 2147483647, -9223372036854775807 - 1, "-a9223372036854775807",
         "[2147483647:0]"},
    };
    for (const CRow& row : rows) {
        fs::remove_all(TOOL_DIR);
        CStandInTool tool;
        tool.Play(std::string("-ldpdinfo ") + row.controller, {});
        tool.Play(std::string("-pdinfo -pd") + row.drive + " " + row.controller, {});
        CMSRAID_PDSMInfoGetter getter;
        CItems items;
        EXPECT_TRUE(getter.GetInfo(row.ctrlNo, row.enclosure, row.slot, items));
        EXPECT_EQ(items.Text(), "");
    }
}

TEST_F(PDSMInfoGetter, EveryRunNamesItsOwnDrive) {
    CStandInTool tool;
    for (const char* drive : {"[1:2]", "[3:4]"}) {
        tool.Play("-ldpdinfo -a0", {});
        tool.Play(std::string("-pdinfo -pd") + drive + " -a0", {});
    }
    CMSRAID_PDSMInfoGetter getter;
    CItems items;
    EXPECT_TRUE(getter.GetInfo(0, 1, 2, items));
    EXPECT_TRUE(getter.GetInfo(0, 3, 4, items));
}

TEST_F(PDSMInfoGetter, TracesOneRunInOrder) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -pd[0:3] -a0", {.out = Drive("SATA") + "\nID Attribute\n"});
    {
        CMSRAID_PDSMInfoGetter getter;
        CItems items;
        ASSERT_TRUE(getter.GetInfo(0, 0, 3, items));
    }
    const std::vector<CTraceLine> expected = {
        {4, "CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]"},
        {4, "CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]"},
        {4, "CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [START]"},
        {4, "CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [END]"},
        {4, "CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter [START]"},
        {4, "CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter [END]"},
        {4, "CMSRAID_PDInfoGetter::GetInfo [START]"},
        {4, "CMSRAID_PDInfoGetter::GetInfo [START]"},
        {4, "CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]"},
        {4, "CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]"},
        {4, "CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]"},
        {4, "CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]"},
        {4, "CMSRAID_LDInfoGetter::GetPDRGNo [START]"},
        {1, "execute krzcli command.(krzcli -ldpdinfo -a0)"},
        {4, "CMSRAID_LDInfoGetter::GetPDRGNo [END]"},
        {4, "CMSRAID_InfoGetter::GetInfo [START]"},
        {1, "execute krzcli command.(krzcli -pdinfo -pd[0:3] -a0)"},
        {4, "CMSRAID_InfoGetter::Parse [START]"},
        {4, "CMSRAID_PDInfoGetter::CreateRAIDItem [START]"},
        {4, "CMSRAID_PDInfoGetter::AddRootItem [START]"},
        {4, "CMSRAID_PDInfoGetter::AddRootItem [END]"},
        {4, "CMSRAID_PDInfoGetter::ParsePDLDNo [START], PD3(GHS)"},
        {4, "CMSRAID_PDInfoGetter::ParsePDLDNo [END]"},
        {4, "CMSRAID_PDInfoGetter::CreateRAIDItem [END]"},
        {4, "CMSRAID_PDInfoGetter::CreateRAIDItem [START]"},
        {4, "CMSRAID_PDInfoGetter::ParseGeneralnfo [START]"},
        {4, "CMSRAID_PDInfoGetter::ParseGeneralnfo [END]"},
        {4, "CMSRAID_PDInfoGetter::CreateRAIDItem [END]"},
        {4, "CMSRAID_PDInfoGetter::CreateRAIDItem [START]"},
        {4, "CMSRAID_PDSMInfoGetter::ParseSMARTInfo [START]"},
        {4, "CMSRAID_PDSMInfoGetter::ParseSMARTSATA [START]"},
        {4, "CMSRAID_PDSMInfoGetter::ParseSMARTSATA [END]"},
        {4, "CMSRAID_PDSMInfoGetter::ParseSMARTInfo [END]"},
        {4, "CMSRAID_PDInfoGetter::CreateRAIDItem [END]"},
        {4, "CMSRAID_PDInfoGetter::FreeItemList [START]"},
        {4, "CMSRAID_PDInfoGetter::FreeItemList [END]"},
        {4, "CMSRAID_InfoGetter::Parse [END]"},
        {4, "CMSRAID_InfoGetter::GetInfo [END]"},
        {4, "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]"},
        {4, "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]"},
        {4, "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]"},
        {4, "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]"},
        {4, "CMSRAID_PDInfoGetter::GetInfo [END]"},
        {4, "CMSRAID_PDInfoGetter::GetInfo [END]"},
        {4, "CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter [START]"},
        {4, "CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter [END]"},
        {4, "CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [START]"},
        {4, "CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [END]"},
        {4, "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]"},
        {4, "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]"},
    };
    EXPECT_EQ(FakeComLib().traces, expected);
}

TEST_F(PDSMInfoGetter, TracesTheSASParserByItsName) {
    Smart("SAS", "\nID Attribute\n");
    const std::vector<std::string> flow = FakeComLib().Traces(4);
    EXPECT_THAT(flow, testing::IsSupersetOf({"CMSRAID_PDSMInfoGetter::ParseSMARTSAS [START]",
                                             "CMSRAID_PDSMInfoGetter::ParseSMARTSAS [END]"}));
}

// --- failures of a run ---

TEST_F(PDSMInfoGetter, GroupLookUpThatFailsEndsTheRun) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = "Error - broken\n"});
    CMSRAID_PDSMInfoGetter getter;
    CItems items;
    EXPECT_FALSE(getter.GetInfo(0, 0, 3, items));
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -ldpdinfo -a0");
}

TEST_F(PDSMInfoGetter, ToolErrorIsFailure01WithTheCommand) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -pd[0:3] -a0", {.out = "Error - no such drive\n"});
    CMSRAID_PDSMInfoGetter getter;
    CItems items;
    EXPECT_FALSE(getter.GetInfo(0, 0, 3, items));
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -pdinfo -pd[0:3] -a0");
}

TEST_F(PDSMInfoGetter, ReportThatIsGoneIsFailure03) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -pd[0:3] -a0", {.run = REMOVE_RESULT_FILES});
    CMSRAID_PDSMInfoGetter getter;
    CItems items;
    EXPECT_FALSE(getter.GetInfo(0, 0, 3, items));
    EXPECT_EQ(getter.ErrCode(), "03");
    EXPECT_EQ(getter.ErrDetail(), "");
}

TEST_F(PDSMInfoGetter, RowWithTooFewCellsIsFailure04) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {});
    tool.Play("-pdinfo -pd[0:3] -a0", {.out = GoldenBad("smart/sata_row_with_too_few_cells.txt")});
    CMSRAID_PDSMInfoGetter getter;
    CItems items;
    AddItem(items, "", "before", "");
    EXPECT_FALSE(getter.GetInfo(0, 0, 3, items));
    EXPECT_EQ(items.Text(), " | before |  | TRUE\n");
    EXPECT_EQ(getter.ErrCode(), "04");
    EXPECT_EQ(getter.ErrDetail(), "");
    EXPECT_EQ(FakeComLib().Traces(2),
              (std::vector<std::string>{"m_MapRGNo search error.(PD5(LD1))",
                                        "Parse SmartDeital is FAILED.(---)",
                                        "CreateRAIDItem is FAILED (ret=00000000).",
                                        "Failed to parse RAID Information ret=00000000."}));
}

TEST_F(PDSMInfoGetter, RowsOutOfRangeThrowAndTheGetterLivesOn) {
    const char* const names[] = {"sata_row_ends_in_name", "sata_header_ends_with_raw_data",
                                 "sas_row_too_short"};
    CMSRAID_PDSMInfoGetter getter;
    for (const char* name : names) {
        LetToolPrint(GoldenBad(std::string("smart/") + name + ".txt"));
        CItems items;
        EXPECT_THROW(getter.GetInfo(0, 0, 3, items), std::out_of_range) << name;
        EXPECT_EQ(items.Text(), "");
        EXPECT_TRUE(fs::is_empty(RESULT_DIR));
        LetToolPrint(Golden("smart/sas.txt"));
        EXPECT_TRUE(getter.GetInfo(0, 0, 3, items));
        EXPECT_EQ(items.front()->ItemName(), "Physical Drive Information");
        EXPECT_EQ(items.back()->ItemValue(), "-");
    }
}

TEST_F(PDSMInfoGetter, StreamThatHasFailedIsRefused) {
    CParser parser;
    std::ifstream stream("/opt/tarmica/no/such/file");
    EXPECT_FALSE(parser.ParseSMARTInfo(stream, "### SMART Information ###"));
    EXPECT_EQ(FakeComLib().TracesWithoutFlow(), (std::vector<CTraceLine>{{2, "Invalid Arg."}}));
    EXPECT_TRUE(parser.Items().empty());
}

// --- the summary ---

TEST_F(PDSMInfoGetter, SummaryWithoutItsTwoValuesGetsBothPlaceholders) {
    for (const char* summary : {"", "\n", "line\n: x\n \t: y\n", " \t\r\n"}) {
        EXPECT_EQ(Smart("other", summary), BOTH_PLACEHOLDERS) << summary;
    }
    EXPECT_EQ(Smart("other", "A : 1\nB : 2"),
              InSmart("A", "1") + InSmart("B", "2") + BOTH_PLACEHOLDERS);
}

TEST_F(PDSMInfoGetter, OnlyTheMissingValueGetsAPlaceholder) {
    EXPECT_EQ(
        Smart("other", "Temperature : 33C\nA : 1\n"),
        InSmart("Temperature", "33C") + InSmart("A", "1") + InSmart("Power-On Time", "", "FALSE"));
    EXPECT_EQ(
        Smart("other", "Power-On Time : 7h\nA : 1\n"),
        InSmart("Power-On Time", "7h") + InSmart("A", "1") + InSmart("Temperature", "", "FALSE"));
    EXPECT_EQ(Smart("other", "Power-On Time :\n\t Temperature \t: 1:2 \r\n"),
              InSmart("Power-On Time", "") + InSmart("Temperature", "1:2"));
}

TEST_F(PDSMInfoGetter, NamesAreComparedExactly) {
    EXPECT_EQ(Smart("other", "temperature : 1\nTemperature(C) : 2\nPower-On time : 3\n"),
              InSmart("temperature", "1") + InSmart("Temperature(C)", "2") +
                  InSmart("Power-On time", "3") + BOTH_PLACEHOLDERS);
}

TEST_F(PDSMInfoGetter, ValueBehindTheSummaryIsTooLate) {
    EXPECT_EQ(Smart("other", "A : 1\n\nTemperature : 2C\n"),
              InSmart("A", "1") + BOTH_PLACEHOLDERS + InSmart("Temperature", "2C"));
}

TEST_F(PDSMInfoGetter, SmartTitleMayHaveMoreText) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText("PD3(GHS)\n### SMART Information ### (SAS)\nA : 1\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | Physical Drive Information |  | TRUE\n"
              "Physical Drive Information | ### SMART Information ### (SAS) |  | TRUE\n"
              "### SMART Information ### (SAS) | A | 1 | TRUE\n"
              "### SMART Information ### (SAS) | Temperature |  | FALSE\n"
              "### SMART Information ### (SAS) | Power-On Time |  | FALSE\n");
}

TEST_F(PDSMInfoGetter, RejectedSummaryLineRejectsTheReport) {
    CRejectingParser parser;
    EXPECT_FALSE(parser.ParseText(Drive("SATA") + "A : 1\nBAD : 1\nB : 2\n"));
    EXPECT_EQ(FakeComLib().Traces(2),
              (std::vector<std::string>{"ParseKeyValue is FAILED (ret=00000000).",
                                        "CreateRAIDItem is FAILED (ret=00000000)."}));
    EXPECT_EQ(ItemText(parser.Items()), DriveItems("SATA") + InSmart("A", "1"));
}

TEST_F(PDSMInfoGetter, AttributeMayStandAnywhereInTheTablesHeader) {
    EXPECT_EQ(Smart("SATA", "\n### Attributes ###\n---\n"), BOTH_PLACEHOLDERS);
    EXPECT_EQ(
        Smart("SATA", "\nattribute : 1\n"),
        BOTH_PLACEHOLDERS + InSmart("SMART Detail(SATA)", "", "FALSE") + InSmart("attribute", "1"));
}

// --- no table ---

TEST_F(PDSMInfoGetter, DriveWithoutATableGetsThePlaceholderOfItsType) {
    const std::string sas = InSmart("SMART Detail(SAS)", "", "FALSE");
    const std::string sata = InSmart("SMART Detail(SATA)", "", "FALSE");
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"SAS", sas}, {"SATA", sata}, {"", ""},      {"NVMe", ""},
        {"sas", ""},  {"Sata", ""},   {"SAS 3", ""}, {"SATA/SAS", ""},
    };
    for (const auto& [type, placeholder] : rows) {
        for (const char* end : {"", "\n", "\n\n \t\n", "\nnothing\n", "\nnothing"}) {
            EXPECT_EQ(Smart(type, std::string("A : 1\n") + end),
                      InSmart("A", "1") + BOTH_PLACEHOLDERS + placeholder)
                << type << end;
        }
    }
}

TEST_F(PDSMInfoGetter, LineInPlaceOfTheTableIsReadAgain) {
    const std::string head = BOTH_PLACEHOLDERS + InSmart("SMART Detail(SAS)", "", "FALSE");
    const std::string other =
        "Physical Drive Information | ### Other ### |  | TRUE\n### Other ### | A | 1 | TRUE\n";
    EXPECT_EQ(Smart("SAS", "\n### Other ###\nA : 1\n"), head + other);
    EXPECT_EQ(Smart("SAS", "\n\n \t\r\n### Other ###\r\nA : 1"), head + other);
    EXPECT_EQ(Smart("SAS", "\nA : 1\nB : 2\n"), head + InSmart("A", "1") + InSmart("B", "2"));
    EXPECT_EQ(Smart("SAS", "\n\nA : 1"), head + InSmart("A", "1"));
    EXPECT_EQ(Smart("SAS", "\nPD4(GHS)"), head + " | Physical Drive Information |  | TRUE\n");
}

TEST_F(PDSMInfoGetter, EmptyLinesInPlaceOfTheTableAreOfferedAgainToo) {
    CParser parser;
    EXPECT_TRUE(parser.ParseText(Drive("SAS") + "\n\n\nA : 1\n"));
    const std::vector<std::string> flow = FakeComLib().Traces(4);
    const auto offered =
        std::count(flow.begin(), flow.end(), "CMSRAID_PDInfoGetter::CreateRAIDItem [START]");
    EXPECT_EQ(offered, 3 + 3) << "header and two titles, two empty lines and the pair";
}

TEST_F(PDSMInfoGetter, TableOfAnotherTypeIsNotShown) {
    for (const char* type : {"", "NVMe", "sas", "sata", "SAS 3", "SATA/SAS"}) {
        EXPECT_EQ(Smart(type, "A : 1\n\nID Attribute : x\nrow\n12:30 : row\n"),
                  InSmart("A", "1") + BOTH_PLACEHOLDERS + InSmart("12", "30 : row"))
            << "the header is gone, what follows is read as ordinary lines";
    }
}

TEST_F(PDSMInfoGetter, TypeIsThatOfTheLastGeneralSection) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### General Information ###\nInterface Type : SAS\n\n"
                         "PD4(GHS)\n### General Information ###\nInterface Type : SATA\n\n"
                         "### SMART Information ###\n"));
    EXPECT_EQ(parser.Items().back()->ItemName(), "SMART Detail(SATA)");
}

// --- the SATA table ---

const std::string SATA_HEAD = "\nID  Attribute  Current  Raw Data  Threshold\n--- rule ---\n";

TEST_F(PDSMInfoGetter, ShowsTheDocumentedSATATable) {
    EXPECT_EQ(Smart("SATA",
                    "Temperature : 33C\nPower-On Time : 1200h\n\n"
                    "ID  Attribute                                Current  Worst  Raw Data  "
                    "Threshold\n"
                    "--  ---------                                -------  -----  --------  "
                    "---------\n"
                    "1   Read Error Rate                          100      100    0         16\n"
                    "9   Power-On Hours                           99       99     1200      0\n"),
              InSmart("Temperature", "33C") + InSmart("Power-On Time", "1200h") +
                  RowItems("SMART Detail(SATA)", {{"ID", "1"},
                                                  {"Attribute", "Read Error Rate"},
                                                  {"Current", "100"},
                                                  {"Worst", "100"},
                                                  {"Raw Data", "0"},
                                                  {"Threshold", "16"}}) +
                  RowItems("SMART Detail(SATA)", {{"ID", "9"},
                                                  {"Attribute", "Power-On Hours"},
                                                  {"Current", "99"},
                                                  {"Worst", "99"},
                                                  {"Raw Data", "1200"},
                                                  {"Threshold", "0"}}));
}

TEST_F(PDSMInfoGetter, HeaderOfASATATableGivesTheColumns) {
    using Columns = std::vector<std::string>;
    const std::vector<std::pair<std::string, Columns>> rows = {
        {"ID Attribute Raw Data Flags", {"ID", "Attribute", "Raw Data", "Flags"}},
        {"ID\tAttribute \t Raw\tData\tFlags\r", {"ID", "Attribute", "Raw Data", "Flags"}},
        {"  ID Attribute Raw Data  Flags  ", {"ID", "Attribute", "Raw Data", "Flags"}},
        {"Raw Data Attribute Flags X", {"Raw Data", "Attribute", "Flags", "X"}},
        {"Raw Data Attribute Raw Data X", {"Raw Data", "Attribute", "Raw Data", "X"}},
        // Five characters are skipped, whatever they are.
        {"ID Attribute Raw Dates", {"ID", "Attribute", "Raw Data", "s"}},
        {"ID Attribute Raw Values", {"ID", "Attribute", "Raw Data", "es"}},
        // The last column is what it is.
        {"ID Attribute Raw", {"ID", "Attribute", "Raw Data"}},
        {"ID Attribute RawData X", {"ID", "Attribute", "RawData", "X"}},
        {"ID Attribute raw data X", {"ID", "Attribute", "raw", "data", "X"}},
        {"Attribute", {"Attribute"}},
    };
    for (const auto& [header, columns] : rows) {
        std::string rest;
        std::vector<std::pair<std::string, std::string>> cells;
        for (size_t i = 0; i < columns.size(); ++i) {
            const std::string text = "v" + std::to_string(i);
            cells.emplace_back(columns[i], text);
            rest += i > 1 ? (i > 2 ? " " : "") + text : "";
        }
        const std::string row = columns.size() == 1 ? "v0\n" : SATARow("v0", "v1", rest);
        EXPECT_EQ(Smart("SATA", "\n" + header + "\n---\n" + row),
                  BOTH_PLACEHOLDERS + RowItems("SMART Detail(SATA)", cells))
            << header;
    }
}

TEST_F(PDSMInfoGetter, HeaderThatEndsWithRawDataIsOutOfRange) {
    for (const char* header : {"ID Attribute Raw Data", "ID Attribute Raw Data \t\r",
                               "Attribute Raw Dat", "Attribute Raw D"}) {
        ExpectOutOfRange("SATA", std::string("\n") + header + "\n---\n");
        ExpectOutOfRange("SATA", std::string("\n") + header);
    }
}

TEST_F(PDSMInfoGetter, SATANameIsFortyCharactersWide) {
    const std::string name40 = "Off-Line Scan Uncorrectable Sector Count";
    ASSERT_EQ(name40.size(), 40U);
    const auto items = [](const std::string& name, const std::string& current) {
        return RowItems("SMART Detail(SATA)", {{"ID", "1"},
                                               {"Attribute", name},
                                               {"Current", current},
                                               {"Raw Data", "2"},
                                               {"Threshold", "3"}});
    };
    EXPECT_EQ(
        Smart("SATA", SATA_HEAD + "1 " + name40 + " 100 2 3\n" + "1\t  " + name40 +
                          "100\t2 \t 3\r\n" +  // no blank is needed
                          SATARow("   1", "a  b\tc", "100 2 3  ") + "1 " + name40 + "Longer 2 3\n"),
        BOTH_PLACEHOLDERS + items(name40, "100") + items(name40, "100") + items("a  b\\tc", "100") +
            items(name40, "Longer"));
}

TEST_F(PDSMInfoGetter, EmptyLinesBetweenSATARowsAreSkipped) {
    const auto items = [](const std::string& id) {
        return RowItems("SMART Detail(SATA)", {{"ID", id},
                                               {"Attribute", "n"},
                                               {"Current", "1"},
                                               {"Raw Data", "2"},
                                               {"Threshold", "3"}});
    };
    EXPECT_EQ(Smart("SATA", SATA_HEAD + "\n" + SATARow("1", "n", "1 2 3") + "\n \t\r\n" +
                                SATARow("2", "n", "1 2 3") + "\n"),
              BOTH_PLACEHOLDERS + items("1") + items("2"));
}

TEST_F(PDSMInfoGetter, LineUnderTheHeaderIsIgnoredWhateverItIs) {
    for (const char* type : {"SATA", "SAS"}) {
        for (const char* rule : {"", "\n", "\n1 row\n", "\n[Head x]\n", "\n\n"}) {
            EXPECT_EQ(Smart(type, std::string("\nID Attribute X") + rule), BOTH_PLACEHOLDERS)
                << type << rule;
        }
    }
}

TEST_F(PDSMInfoGetter, RowOfAnotherCountOfCellsIsRejectedAndTraced) {
    const std::string good = SATARow("1", "n", "1 2 3");
    const std::string goodItems = RowItems(
        "SMART Detail(SATA)",
        {{"ID", "1"}, {"Attribute", "n"}, {"Current", "1"}, {"Raw Data", "2"}, {"Threshold", "3"}});
    for (const std::string& row : {std::string("---\n"), std::string("PD4(GHS)\n"),
                                   SATARow("1", "n", "1 2"), SATARow("1", "n", "1 2 3 4")}) {
        ResetFakeComLib();
        CParser parser;
        EXPECT_FALSE(parser.ParseText(Drive("SATA") + SATA_HEAD + good + row + good));
        EXPECT_EQ(FakeComLib().Traces(2),
                  (std::vector<std::string>{
                      "Parse SmartDeital is FAILED.(" + row.substr(0, row.size() - 1) + ")",
                      "CreateRAIDItem is FAILED (ret=00000000)."}));
        EXPECT_EQ(ItemText(parser.Items()), DriveItems("SATA") + BOTH_PLACEHOLDERS + goodItems +
                                                InSmart("SMART Detail(SATA)", ""))
            << "the items so far stay, the row's group item too";
    }
}

TEST_F(PDSMInfoGetter, SATARowThatEndsInItsNameIsOutOfRange) {
    const std::string name40(40, 'n');
    for (const std::string& row : {std::string("1 n"), std::string("1 short name\n"), "1 " + name40,
                                   "1 " + name40 + "  \t\r\n", std::string("### Other ###\n")}) {
        ExpectOutOfRange("SATA", SATA_HEAD + row);
    }
}

// --- the SAS table ---

const std::string SAS_HEAD = "\nAttribute  Value  Limit\n---------- ------ -----\n";

std::string SASItems(const std::string& name, const std::string& value, const std::string& limit) {
    return RowItems("SMART Detail(SAS)", {{"Attribute", name}, {"Value", value}, {"Limit", limit}});
}

TEST_F(PDSMInfoGetter, SASRowsAreCutWhereTheColumnsBegin) {
    EXPECT_EQ(Smart("SAS", SAS_HEAD + "Errors one 1      2\n"
                                      "Errors twoab cdef ghi j\n"
                                      "  x          y \t    z \t\r\n"
                                      "a          bcdefgh\n"
                                      "           last row without a name is shifted"),
              BOTH_PLACEHOLDERS + SASItems("Errors one", "1", "2") +
                  SASItems("Errors twoa", "b cdef", "ghi j") + SASItems("x", "y", "z") +
                  SASItems("a", "bcdefgh", "") +
                  SASItems("last row wi", "thout a", "name is shifted"));
}

TEST_F(PDSMInfoGetter, SASColumnsMayStandAtTabsAndHoldRaw) {
    EXPECT_EQ(
        Smart("SAS", "\n \tRaw \t Data\tAttribute\r\n---\nabcdefghij\tk l m\n"),
        BOTH_PLACEHOLDERS + RowItems("SMART Detail(SAS)",
                                     {{"Raw", "abcdef"}, {"Data", "ghij"}, {"Attribute", "k l m"}}))
        << "\"Raw Data\" is one column in SATA tables only";
}

TEST_F(PDSMInfoGetter, HeadLinesLabelTheRowsBelowThem) {
    const std::string row = "Errors     1      2\n";
    EXPECT_EQ(Smart("SAS", SAS_HEAD + row + "[Head Read]\n" + row + "\n" + row +
                               " [Head : Write] \r\n[Head]\n\n" + row + "[head]     1      2\n"),
              BOTH_PLACEHOLDERS + SASItems("Errors", "1", "2") +
                  SASItems("[Head Read]Errors", "1", "2") +
                  SASItems("[Head Read]Errors", "1", "2") + SASItems("[Head]Errors", "1", "2") +
                  SASItems("[Head][head]", "1", "2"));
}

TEST_F(PDSMInfoGetter, HeadInsideARowIsNoHeadLine) {
    EXPECT_EQ(Smart("SAS", SAS_HEAD + "a [Head    1      2\nb          1      [Head]\n"),
              BOTH_PLACEHOLDERS + SASItems("a [Head", "1", "2") + SASItems("b", "1", "[Head]"));
}

TEST_F(PDSMInfoGetter, SASRowThatEndsBeforeItsLastColumnIsOutOfRange) {
    for (const char* row : {"short\n", "Errors     1\n", "Errors     12345",
                            "           a      b\n", "### Other ###\n", "PD4(GHS)\n"}) {
        ExpectOutOfRange("SAS", SAS_HEAD + row);
    }
}

TEST_F(PDSMInfoGetter, RowOutOfRangeAddsNoGroupItem) {
    for (const auto& [type, table] :
         {std::pair<std::string, std::string>("SAS", SAS_HEAD + "short\n"),
          {"SATA", SATA_HEAD + "1 " + std::string(40, 'n')},
          {"SATA", SATA_HEAD + "1 short name\n"}}) {
        CParser parser;
        EXPECT_THROW(parser.ParseText(Drive(type) + table), std::out_of_range);
        EXPECT_EQ(ItemText(parser.Items()), DriveItems(type) + BOTH_PLACEHOLDERS) << table;
    }
}

TEST_F(PDSMInfoGetter, GroupItemsStandUnderTheCurrentSection) {
    CParser parser;
    EXPECT_TRUE(
        parser.ParseText("PD3(GHS)\n### General Information ###\nInterface Type : SAS\n\n"
                         "### SMART Information ### (SAS)\n" +
                         SAS_HEAD + "x          y      z\n"));
    const std::string text = ItemText(parser.Items());
    EXPECT_NE(text.find("### SMART Information ### (SAS) | SMART Detail(SAS) |  | TRUE\n"),
              std::string::npos)
        << text;
}

// --- robustness ---

enum class EOutcome { READ, REJECTED, OUT_OF_RANGE };

EOutcome ParseDamaged(const std::string& report) {
    CParser parser;
    try {
        const bool result = parser.ParseText(report);
        ExpectSoundTree(parser.Items());
        return result ? EOutcome::READ : EOutcome::REJECTED;
    } catch (const std::out_of_range&) {
        return EOutcome::OUT_OF_RANGE;
    }
}

// A cut can hurt only a header line of the drive, the table's header or one of its rows.
TEST_F(PDSMInfoGetter, ReportCutAnywhereIsReadOrRejected) {
    for (const char* name : {"smart/sata.txt", "smart/sas.txt"}) {
        const std::string report = Golden(name);
        const size_t driveHeader = report.find("PD");
        const size_t driveHeaderEnd = report.find('\n', driveHeader);
        const size_t table = report.find("Attribute");
        for (size_t size = 0; size <= report.size(); ++size) {
            const bool mayHurt = (size > driveHeader && size < driveHeaderEnd) || size > table;
            const EOutcome outcome = ParseDamaged(report.substr(0, size));
            EXPECT_TRUE(outcome == EOutcome::READ || mayHurt) << name << " cut at " << size;
        }
        EXPECT_EQ(ParseDamaged(report), EOutcome::READ);
    }
}

TEST_F(PDSMInfoGetter, DamagedReportsAreReadOrRejected) {
    std::set<EOutcome> outcomes;
    for (const char* name : {"smart/sata.txt", "smart/sas.txt"}) {
        const std::string report = Golden(name);
        CRandom random(20261120);
        for (int round = 0; round < 1500 && !HasFailure(); ++round) {
            const std::string damaged = DamagedReport(report, random);
            SCOPED_TRACE(damaged);
            outcomes.insert(ParseDamaged(damaged));
        }
    }
    EXPECT_EQ(outcomes.size(), 3U) << "the damage must reach every outcome";
}

TEST_F(PDSMInfoGetter, ManyRowsAreRead) {
    std::string report = Drive("SATA") + SATA_HEAD;
    for (int i = 0; i < 10000; ++i) {
        report += SATARow("1", "n", "1 2 3");
    }
    CParser parser;
    EXPECT_TRUE(parser.ParseText(report));
    EXPECT_EQ(parser.Items().size(), 8U + 2U + 10000U * 6U);
}

}  // namespace
