#include <gmock/gmock.h>
#include <sys/mount.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "GetterFixture.h"
#include "SlotOf.h"
#include "getters/CMSRAID_InfoGetter.h"
#include "plugin/ComLib.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

constexpr const char* ROOT = "Test Information";
constexpr const char* GENERAL = CMSRAID_InfoGetter::GENERAL_INFO_TITLE_NAME;
constexpr const char* FIRMWARE = "### Firmware/BIOS/Driver Information ###";
constexpr const char* SETTINGS = "### Controller Settings Information ###";
constexpr const char* OUTPUT_FILES = "/opt/tarmica/qor/provider/tmp/MSRAID/*_MngSrvRaid.txt";

struct CRow {
    std::string parent;
    std::string name;
    std::string value;
    std::string enable = "TRUE";
    bool operator==(const CRow& other) const = default;
};

std::ostream& operator<<(std::ostream& out, const CRow& row) {
    return out << row.parent << "|" << row.name << "|" << row.value << "|" << row.enable;
}

std::vector<CRow> Rows(const ItemList& items) {
    std::vector<CRow> rows;
    for (const CItemDisp* item : items) {
        rows.push_back({item->ParentName(), item->ItemName(), item->ItemValue(), item->Enable()});
    }
    return rows;
}

// The simplest getter: a title opens a section, any other line with a colon is a key and a value.
// The line "throw" throws; "next" swallows the line behind it; "grow" makes the report larger.
class CTestGetter : public CMSRAID_InfoGetter {
public:
    explicit CTestGetter(const std::string& command = "krzcli -test -a%s") {
        m_CommandFormat = command;
    }

    bool CreateRAIDItem(std::ifstream& stream, std::string line) override {
        m_Lines.push_back(line);
        if (line == "throw") {
            AddItem(m_RaidList, "", "a name too long for a small buffer, so that a leak shows", "");
            throw std::runtime_error("out of a getter");
        }
        if (line == "grow") {
            for (const auto& report :
                 fs::directory_iterator(fs::path(OUTPUT_FILES).parent_path())) {
                std::ofstream(report.path(), std::ios::app) << std::string(40'000'000, 'x');
            }
        }
        if (line == "next") {
            return static_cast<bool>(std::getline(stream, line));
        }
        if (line.starts_with(TITLE_BEGIN_NAME)) {
            if (m_RaidList.empty()) {
                AddRootItem();
            }
            return ParseTitle(stream, line);
        }
        return line.find(':') == std::string::npos || ParseKeyValue(stream, line, m_RaidList);
    }
    void AddRootItem() override { StartRoot(ROOT); }
    void FreeItemList() override { ++m_Freed; }

    using CMSRAID_InfoGetter::m_RaidList;
    using CMSRAID_InfoGetter::ReadSectionLine;
    using CMSRAID_InfoGetter::UngetLine;

    std::vector<std::string> m_Lines;  // every line that was offered
    int m_Freed = 0;
};

// Does not override the hooks.
class CPlainGetter : public CMSRAID_InfoGetter {
public:
    bool CreateRAIDItem(std::ifstream&, std::string) override { return true; }
    bool HasItems() const { return !m_RaidList.empty(); }
};

CTraceLine Flow(const std::string& text) {
    return {CTraceUtility::TRACE_DBG_FLOW, text};
}
CTraceLine Result(const std::string& text) {
    return {CTraceUtility::TRACE_DBG_RESULT, text};
}
CTraceLine Failure(const std::string& text) {
    return {CTraceUtility::TRACE_DBG_FAILURE, text};
}

class CMSRAID_InfoGetterTest : public CGetterFixture {
protected:
    // Runs `getter` for controller 0 on what the tool prints.
    bool RunStep(CTestGetter& getter, const CToolStep& step) {
        CStandInTool tool;
        tool.Play("-test -a0", step);
        FakeComLib().traces.clear();
        return getter.GetInfo(0, m_Items);
    }
    bool Run(CTestGetter& getter, const std::string& report) {
        return RunStep(getter, {.out = report});
    }
    std::vector<CRow> RowsOf(const std::string& report) {
        CTestGetter getter;
        DeleteItems(m_Items);
        EXPECT_TRUE(Run(getter, report));
        EXPECT_EQ(getter.ErrCode(), "");
        EXPECT_EQ(getter.ErrDetail(), "");
        return Rows(m_Items);
    }

    CItemListOwner m_Items;
};

const std::vector<CRow> SECTIONS = {
    {"", ROOT, ""},
    {ROOT, GENERAL, ""},
    {GENERAL, "Product Name", "Storage Adapter 8i"},
    {GENERAL, "Serial Number", "0123456789"},
    {GENERAL, "PCI Address", "0000:5e:00.0"},
    {GENERAL, "Firmware Build Time", "12:30:00"},
    {GENERAL, "Comment", ""},
    {ROOT, FIRMWARE, ""},
    {FIRMWARE, "Firmware Version", "5.190.00-3626"},
    {FIRMWARE, "Driver Name", "sasdrv"},
    {ROOT, SETTINGS, ""},
    {SETTINGS, "Rebuild Rate", "30 %"},
};

TEST(InfoGetterConstants, AreTheReportsTexts) {
    using G = CMSRAID_InfoGetter;
    struct {
        const char* constant;
        const char* text;
    } const rows[] = {
        {G::PROVIDER_TMP_DIR, "tmp"},
        {G::MSRAID_DIR, "MSRAID"},
        {G::KRZ_RSLT_FILE, "MngSrvRaid.txt"},
        {G::GENERAL_INFO_TITLE_NAME, "### General Information ###"},
        {G::TITLE_BEGIN_NAME, "### "},
        {G::TITLE_END_NAME, " ###"},
        {G::RG_NO_HEAD, "RG"},
        {G::S_RG_NO_HEAD, "sRG"},
        {G::CACHE_RG_NO_HEAD, "scRG"},
        {G::LD_NO_NAME, "LD No."},
        {G::PD_NO_NAME, "PD No."},
        {G::RG_NO_NAME, "RG No."},
        {G::CTRL_NO_NAME_HEAD, "RAID Controller"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.constant, row.text);
    }
}

TEST(InfoGetterOperations, HaveFixedPlaces) {
    using G = CMSRAID_InfoGetter;
    EXPECT_EQ(SlotOf(static_cast<bool (G::*)(long, ItemList&)>(&G::GetInfo)), 2U);
    EXPECT_EQ(SlotOf(static_cast<bool (G::*)(ItemList&)>(&G::GetInfo)), 3U);
    EXPECT_EQ(SlotOf(&G::Parse), 4U);
    EXPECT_EQ(SlotOf(&G::CreateRAIDItem), 5U);
    EXPECT_EQ(SlotOf(&G::ParseTitle), 6U);
    EXPECT_EQ(SlotOf(&G::ParseKeyValue), 7U);
    EXPECT_EQ(SlotOf(&G::AddRootItem), 8U);
    EXPECT_EQ(SlotOf(&G::FreeItemList), 9U);
    EXPECT_EQ(SlotOf(&G::Trim), 10U);
}

// ---- a run ----

TEST_F(CMSRAID_InfoGetterTest, ReportBecomesItemsInFileOrder) {
    EXPECT_THAT(RowsOf(Golden("base/sections.txt")), ElementsAreArray(SECTIONS));
}

TEST_F(CMSRAID_InfoGetterTest, FinalLineFeedAndCarriageReturnsChangeNothing) {
    const std::string report = Golden("base/sections.txt");
    const std::string open = report.substr(0, report.size() - 1);
    EXPECT_THAT(RowsOf(open), ElementsAreArray(SECTIONS));
    EXPECT_THAT(RowsOf(WithCarriageReturns(report)), ElementsAreArray(SECTIONS));
    EXPECT_THAT(RowsOf(WithCarriageReturns(open)), ElementsAreArray(SECTIONS));
}

TEST_F(CMSRAID_InfoGetterTest, StandardErrorIsTheEndOfTheReport) {
    CTestGetter getter;
    EXPECT_TRUE(RunStep(getter, {.out = "### A ###\nk : v\n", .err = "late : w\n"}));
    EXPECT_EQ(Rows(m_Items).back(), (CRow{"### A ###", "late", "w"}));
}

TEST_F(CMSRAID_InfoGetterTest, ItemsAreAppendedToTheCallersList) {
    AddItem(m_Items, "", "mine", "");
    CTestGetter getter;
    EXPECT_TRUE(Run(getter, "### A ###\n"s));
    EXPECT_THAT(Rows(m_Items),
                ElementsAre(CRow{"", "mine", ""}, CRow{"", ROOT, ""}, CRow{ROOT, "### A ###", ""}));
    EXPECT_TRUE(getter.m_RaidList.empty());
}

TEST_F(CMSRAID_InfoGetterTest, GetterMayRunSeveralTimes) {
    CStandInTool tool;
    tool.Play("-test -a0", {.out = "### A ###\nk : 0\n"});
    tool.Play("-test -a12", {.out = "### B ###\nk : 1\n"});
    CTestGetter getter;
    EXPECT_TRUE(getter.GetInfo(0, m_Items));
    EXPECT_TRUE(getter.GetInfo(12, m_Items));
    EXPECT_THAT(
        Rows(m_Items),
        ElementsAre(CRow{"", ROOT, ""}, CRow{ROOT, "### A ###", ""}, CRow{"### A ###", "k", "0"},
                    CRow{"", ROOT, ""}, CRow{ROOT, "### B ###", ""}, CRow{"### B ###", "k", "1"}));
}

TEST_F(CMSRAID_InfoGetterTest, CommandWithoutControllerIsRunAsItIs) {
    CStandInTool tool;
    tool.Play("-pssdinfo -aAll", {});
    tool.Play("-test -a%s", {});
    CTestGetter getter("krzcli -pssdinfo -aAll");
    FakeComLib().traces.clear();
    EXPECT_TRUE(getter.GetInfo(m_Items));
    EXPECT_EQ(FakeComLib().traces.front(), Flow("CMSRAID_InfoGetter::GetInfo [START]"));
    EXPECT_EQ(FakeComLib().traces.back(), Flow("CMSRAID_InfoGetter::GetInfo [END]"));
    CTestGetter unformatted;
    EXPECT_TRUE(unformatted.GetInfo(m_Items));
}

TEST_F(CMSRAID_InfoGetterTest, EmptyReportGivesNoItems) {
    CTestGetter getter;
    EXPECT_TRUE(Run(getter, ""s));
    EXPECT_THAT(m_Items, IsEmpty());
    EXPECT_THAT(getter.m_Lines, IsEmpty());
    EXPECT_EQ(getter.m_Freed, 1);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Flow("CMSRAID_InfoGetter::GetInfo [START]"),
                            Result("execute krzcli command.(krzcli -test -a0)"),
                            Flow("CMSRAID_InfoGetter::Parse [START]"),
                            Flow("CMSRAID_InfoGetter::Parse [END]"),
                            Flow("CMSRAID_InfoGetter::GetInfo [END]")));
}

TEST_F(CMSRAID_InfoGetterTest, SubclassMayReadFurtherLines) {
    CTestGetter getter;
    EXPECT_TRUE(Run(getter, "next\nswallowed\nthird\n"s));
    EXPECT_THAT(getter.m_Lines, ElementsAre("next", "third"));
}

TEST_F(CMSRAID_InfoGetterTest, LifeOfAGetterIsTraced) {
    { const CPlainGetter getter; }
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Flow("CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]"),
                            Flow("CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]"),
                            Flow("CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]"),
                            Flow("CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]")));
}

TEST_F(CMSRAID_InfoGetterTest, HooksDoNothingByThemselves) {
    CPlainGetter getter;
    getter.AddRootItem();
    getter.FreeItemList();
    EXPECT_FALSE(getter.HasItems());
}

// ---- failures ----

TEST_F(CMSRAID_InfoGetterTest, MissingToolIsARunFailure) {
    CTestGetter getter;
    FakeComLib().traces.clear();
    EXPECT_FALSE(getter.GetInfo(3, m_Items));
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -test -a3");
    EXPECT_THAT(
        FakeComLib().traces,
        ElementsAre(
            Flow("CMSRAID_InfoGetter::GetInfo [START]"), Failure("KRZ is not installed."),
            Failure("Failed to execute krzcli command ret=00000003."),
            testing::Field(&CTraceLine::text, MatchesRegex("Failed to delete file\\(.*\\)\\.")),
            Flow("CMSRAID_InfoGetter::GetInfo [END]")));
}

TEST_F(CMSRAID_InfoGetterTest, ErrorOfTheToolIsARunFailure) {
    CTestGetter getter;
    EXPECT_FALSE(Run(getter, "Error - No RAID controller is found.\n"s));
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -test -a0");
    EXPECT_THAT(FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE),
                ElementsAre("KRZ CLI has an error(krzcli -test -a0).",
                            "Failed to execute krzcli command ret=00000001."));
    EXPECT_THAT(m_Items, IsEmpty());
}

TEST_F(CMSRAID_InfoGetterTest, RunThatKeepsFailingIsARunFailure) {
    CStandInTool tool;
    for (int i = 0; i < 3; ++i) {
        tool.Play("-test -a0", {.run = "kill -KILL 0"});
    }
    CTestGetter getter;
    EXPECT_FALSE(getter.GetInfo(0, m_Items));
    EXPECT_EQ(getter.ErrCode(), "01");
    EXPECT_EQ(FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE).back(),
              "Failed to execute krzcli command ret=00000002.");
}

TEST_F(CMSRAID_InfoGetterTest, ReportThatVanishedCannotBeOpened) {
    CTestGetter getter;
    EXPECT_FALSE(RunStep(getter, {.run = "rm "s + OUTPUT_FILES}));
    EXPECT_EQ(getter.ErrCode(), "03");
    EXPECT_EQ(getter.ErrDetail(), "");
    EXPECT_THAT(FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE),
                ElementsAre(MatchesRegex("Failed to open file output by krzcli\\(/opt/tarmica/qor/"
                                         "provider/tmp/MSRAID/.*_MngSrvRaid\\.txt\\)\\."),
                            MatchesRegex("Failed to delete file\\(.*\\)\\.")));
    EXPECT_EQ(getter.m_Freed, 0) << "nothing was parsed";
}

TEST_F(CMSRAID_InfoGetterTest, RejectedLineFailsTheReport) {
    AddItem(m_Items, "", "mine", "");
    CTestGetter getter;
    EXPECT_FALSE(Run(getter, GoldenBad("base/colon_first.txt")));
    EXPECT_EQ(getter.ErrCode(), "04");
    EXPECT_EQ(getter.ErrDetail(), "");
    EXPECT_THAT(Rows(m_Items), ElementsAre(CRow{"", "mine", ""}));
    EXPECT_TRUE(getter.m_RaidList.empty());
    EXPECT_THAT(getter.m_Lines, SizeIs(3)) << "no line behind the rejected one is read";
    EXPECT_EQ(getter.m_Freed, 1);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(Flow("CMSRAID_InfoGetter::GetInfo [START]"),
                            Result("execute krzcli command.(krzcli -test -a0)"),
                            Flow("CMSRAID_InfoGetter::Parse [START]"),
                            Failure("Failed to parse ParseKeyValue.(: 0123456789)"),
                            Failure("CreateRAIDItem is FAILED (ret=00000000)."),
                            Flow("CMSRAID_InfoGetter::Parse [END]"),
                            Failure("Failed to parse RAID Information ret=00000000."),
                            Flow("CMSRAID_InfoGetter::GetInfo [END]")));
}

TEST_F(CMSRAID_InfoGetterTest, CodesAreCollectedTheLatestFirst) {
    CTestGetter getter;
    EXPECT_FALSE(getter.GetInfo(0, m_Items));
    EXPECT_FALSE(Run(getter, "### A ###\n: v\n"s));
    EXPECT_EQ(getter.ErrCode(), "0401");
    EXPECT_FALSE(RunStep(getter, {.run = "rm "s + OUTPUT_FILES}));
    EXPECT_EQ(getter.ErrCode(), "030401");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -test -a0");
    EXPECT_TRUE(Run(getter, "### A ###\n"s));
    EXPECT_EQ(getter.ErrCode(), "030401");
    EXPECT_THAT(m_Items, SizeIs(2));
}

TEST_F(CMSRAID_InfoGetterTest, DetailIsTheLatestCommandThatFailed) {
    CTestGetter getter;
    EXPECT_FALSE(Run(getter, "### A ###\n: v\n"s));
    fs::remove_all(TOOL_DIR);
    EXPECT_FALSE(getter.GetInfo(0, m_Items));
    EXPECT_EQ(getter.ErrDetail(), "krzcli -test -a0");
    EXPECT_FALSE(getter.GetInfo(7, m_Items));
    EXPECT_EQ(getter.ErrDetail(), "krzcli -test -a7");
    EXPECT_EQ(getter.ErrCode(), "010104");
}

TEST_F(CMSRAID_InfoGetterTest, ExceptionPassesAndLeavesNothing) {
    CTestGetter getter;
    EXPECT_THROW(Run(getter, "### A ###\nk : v\nthrow\n"s), std::runtime_error);
    EXPECT_THAT(m_Items, IsEmpty());
    EXPECT_TRUE(getter.m_RaidList.empty());
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
    EXPECT_TRUE(Run(getter, "### B ###\n"s));
    EXPECT_THAT(Rows(m_Items), ElementsAre(CRow{"", ROOT, ""}, CRow{ROOT, "### B ###", ""}));
}

TEST_F(CMSRAID_InfoGetterTest, ReportIsDeletedAfterEveryRun) {
    for (const char* report : {"", "### A ###\n", ": v\n", "Error - x\n"}) {
        CTestGetter getter;
        RunStep(getter, {.out = report});
        EXPECT_TRUE(fs::is_empty(RESULT_DIR)) << report;
    }
}

// ---- titles, keys and values ----

TEST_F(CMSRAID_InfoGetterTest, TitleIsTheWholeTrimmedLine) {
    struct {
        const char* line;
        const char* name;
    } const rows[] = {
        {"### General Information ###", GENERAL}, {"### General Information ### \t\r", GENERAL},
        {"### open end", "### open end"},         {"### ", "###"},
        {"### a : b ###", "### a : b ###"},       {"### ###", "### ###"},
    };
    std::ifstream stream;
    for (const auto& row : rows) {
        CTestGetter getter;
        getter.AddRootItem();
        EXPECT_TRUE(getter.ParseTitle(stream, row.line));
        EXPECT_TRUE(getter.ParseKeyValue(stream, "k:v", getter.m_RaidList));
        EXPECT_THAT(
            Rows(getter.m_RaidList),
            ElementsAre(CRow{"", ROOT, ""}, CRow{ROOT, row.name, ""}, CRow{row.name, "k", "v"}));
        DeleteItems(getter.m_RaidList);
    }
}

TEST_F(CMSRAID_InfoGetterTest, OtherLinesAreNoTitle) {
    std::ifstream stream;
    for (const std::string line :
         {" ### General Information ###", "\t### A ###", "", "###", "###A ###", "## A", "A ### "}) {
        CTestGetter getter;
        getter.AddRootItem();
        FakeComLib().traces.clear();
        EXPECT_FALSE(getter.ParseTitle(stream, line));
        EXPECT_THAT(FakeComLib().traces,
                    ElementsAre(Failure("Failed to ParseTitle. (" + line + ")")));
        EXPECT_THAT(getter.m_RaidList, SizeIs(1));
        DeleteItems(getter.m_RaidList);
    }
}

TEST_F(CMSRAID_InfoGetterTest, TitleAndKeyValueNeedARoot) {
    CTestGetter getter;
    std::ifstream stream;
    ItemList other;
    FakeComLib().traces.clear();
    EXPECT_FALSE(getter.ParseTitle(stream, "### A ###"));
    EXPECT_FALSE(getter.ParseKeyValue(stream, "k : v", other));
    EXPECT_THAT(FakeComLib().traces, ElementsAre(Failure("m_RaidList size is zero."),
                                                 Failure("m_RaidList size is zero.")));
    EXPECT_THAT(other, IsEmpty());
}

TEST_F(CMSRAID_InfoGetterTest, KeyAndValueAreSplitAtTheFirstColon) {
    struct {
        std::string line;
        const char* key;
        const char* value;
    } const rows[] = {
        {"k : v", "k", "v"},
        {"k:v", "k", "v"},
        {"k:", "k", ""},
        {"k : \r", "k", ""},
        {"k : v : w", "k", "v : w"},
        {"Firmware Build Time : 12:30:00", "Firmware Build Time", "12:30:00"},
        {"k::", "k", ":"},
        {" \tk \t:\t v \r", "k", "v"},
        {" : v", "", "v"},
        {"a b  c : d  e", "a b  c", "d  e"},
        {"k\0x : v\0y"s, "k", "v"},
        {"k : \0y"s, "k", ""},
    };
    CTestGetter getter;
    getter.AddRootItem();
    std::ifstream stream;
    for (const auto& row : rows) {
        CItemListOwner items;
        EXPECT_TRUE(getter.ParseKeyValue(stream, row.line, items)) << row.line;
        EXPECT_THAT(Rows(items), ElementsAre(CRow{ROOT, row.key, row.value})) << row.line;
    }
    EXPECT_THAT(getter.m_RaidList, SizeIs(1)) << "items go to the list that was given";
    DeleteItems(getter.m_RaidList);
}

TEST_F(CMSRAID_InfoGetterTest, LineWithoutAKeyIsRejected) {
    CTestGetter getter;
    getter.AddRootItem();
    std::ifstream stream;
    for (const std::string line : {"", ":", ": v", ":v : w", "no colon"}) {
        FakeComLib().traces.clear();
        EXPECT_FALSE(getter.ParseKeyValue(stream, line, getter.m_RaidList));
        EXPECT_THAT(FakeComLib().traces,
                    ElementsAre(Failure("Failed to parse ParseKeyValue.(" + line + ")")));
    }
    EXPECT_THAT(getter.m_RaidList, SizeIs(1));
    DeleteItems(getter.m_RaidList);
}

TEST_F(CMSRAID_InfoGetterTest, TrimIsThePlainTrimming) {
    CPlainGetter getter;
    std::string text = " \t a b \t\r\n";
    getter.Trim(text);
    EXPECT_EQ(text, "a b");
    text = " \r\n";
    getter.Trim(text);
    EXPECT_EQ(text, "");
}

TEST_F(CMSRAID_InfoGetterTest, TitleIsTrimmedThroughTheTable) {
    class COwnTrimming : public CTestGetter {
    public:
        void Trim(std::string& text) override { text = "<" + text + ">"; }
    } getter;
    getter.AddRootItem();
    std::ifstream stream;
    EXPECT_TRUE(getter.ParseTitle(stream, "### A ###"));
    EXPECT_EQ(getter.m_RaidList.back()->ItemName(), "<### A ###>");
    DeleteItems(getter.m_RaidList);
}

TEST_F(CMSRAID_InfoGetterTest, RunBeginsWithAnEmptyList) {
    const CItemDisp left("", "left by a subclass, which owns it", "", "TRUE");
    CTestGetter getter;
    getter.m_RaidList.push_back(const_cast<CItemDisp*>(&left));
    EXPECT_TRUE(Run(getter, "### A ###\n"s));
    EXPECT_THAT(Rows(m_Items), ElementsAre(CRow{"", ROOT, ""}, CRow{ROOT, "### A ###", ""}));
    EXPECT_EQ(left.ItemName(), "left by a subclass, which owns it");
}

TEST_F(CMSRAID_InfoGetterTest, VeryLongLineIsKept) {
    const std::string value(1 << 20, 'v');
    EXPECT_THAT(RowsOf("### A ###\nk : " + value + "\n"),
                ElementsAre(CRow{"", ROOT, ""}, CRow{ROOT, "### A ###", ""},
                            CRow{"### A ###", "k", value}));
}

TEST_F(CMSRAID_InfoGetterTest, EmbeddedNulsCutTextsOnly) {
    EXPECT_THAT(RowsOf("### A ###\0x\nk\0x : v\0y\n\0\nlast : w\n"s),
                ElementsAre(CRow{"", ROOT, ""}, CRow{ROOT, "### A ###", ""},
                            CRow{"### A ###", "k", "v"}, CRow{"### A ###", "last", "w"}));
}

TEST_F(CMSRAID_InfoGetterTest, ReportCutAnywhereGivesTheBeginning) {
    const std::string report = Golden("base/sections.txt");
    for (size_t size = 0; size <= report.size(); ++size) {
        CTestGetter getter;
        std::ifstream stream = StreamOf(report.substr(0, size));
        ASSERT_TRUE(getter.Parse(stream, "")) << size;
        const std::vector<CRow> rows = Rows(getter.m_RaidList);
        DeleteItems(getter.m_RaidList);
        ASSERT_LE(rows.size(), SECTIONS.size()) << size;
        for (size_t i = 0; i + 1 < rows.size(); ++i) {
            ASSERT_EQ(rows[i], SECTIONS[i]) << size;
        }
        if (!rows.empty()) {
            const CRow& whole = SECTIONS[rows.size() - 1];
            ASSERT_EQ(rows.back().parent, whole.parent) << size;
            ASSERT_TRUE(whole.name.starts_with(rows.back().name)) << size;
            ASSERT_TRUE(whole.value.starts_with(rows.back().value)) << size;
        }
        FakeComLib().traces.clear();
    }
}

// ---- helpers of the subclasses ----

TEST_F(CMSRAID_InfoGetterTest, SectionEndsAtAnEmptyLine) {
    std::ifstream stream = StreamOf("  a : b \r\nc\n \t\r\nd\n");
    CTestGetter getter;
    std::string line;
    EXPECT_TRUE(getter.ReadSectionLine(stream, line));
    EXPECT_EQ(line, "a : b");
    EXPECT_TRUE(getter.ReadSectionLine(stream, line));
    EXPECT_EQ(line, "c");
    EXPECT_FALSE(getter.ReadSectionLine(stream, line));
    EXPECT_TRUE(getter.ReadSectionLine(stream, line));
    EXPECT_EQ(line, "d");
    EXPECT_FALSE(getter.ReadSectionLine(stream, line));
}

TEST_F(CMSRAID_InfoGetterTest, LineThatWasPutBackIsReadAgain) {
    for (const std::string report : {"a\nlast", "a\nlast\n", "a\r\nlast\r\n", "a\n\nlast"}) {
        std::ifstream whole = StreamOf(report);
        std::vector<std::string> expected;
        for (std::string line; std::getline(whole, line);) {
            expected.push_back(line);
        }
        std::ifstream stream = StreamOf(report);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            CTestGetter::UngetLine(stream, line);
            std::string again;
            EXPECT_TRUE(std::getline(stream, again));
            EXPECT_EQ(again, line);
            lines.push_back(again);
        }
        EXPECT_EQ(lines, expected) << report;
    }
}

// ---- the result file's name ----

TEST_F(CMSRAID_InfoGetterTest, ResultFileNameHasThreadAndCounter) {
    const std::string first = CMSRAID_InfoGetter::GetRsltFilePath();
    const std::string second = CMSRAID_InfoGetter::GetRsltFilePath();
    EXPECT_THAT(first, MatchesRegex("/opt/tarmica/qor/provider/tmp/MSRAID/"
                                    "[0-9a-f]{8,}_[0-9a-f]{8,}_MngSrvRaid\\.txt"));
    const std::string name = fs::path(first).filename();
    const std::string next = fs::path(second).filename();
    const size_t end = name.find('_');
    EXPECT_EQ(std::stoul(name.substr(0, end), nullptr, 16), GetCurrentThreadId());
    EXPECT_EQ(next.substr(0, end), name.substr(0, end));
    EXPECT_EQ(std::stoul(next.substr(end + 1), nullptr, 16),
              std::stoul(name.substr(end + 1), nullptr, 16) + 1);
    EXPECT_FALSE(fs::exists(first)) << "only named, not made";
    EXPECT_THAT(FakeComLib().traces, IsEmpty());
}

// In a process of its own, where no result file was named before.
TEST_F(CMSRAID_InfoGetterTest, NumbersOfResultFilesBeginWithZero) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const std::string first = CMSRAID_InfoGetter::GetRsltFilePath();
            const std::string second = CMSRAID_InfoGetter::GetRsltFilePath();
            _exit(first.ends_with("_00000000_MngSrvRaid.txt") &&
                          second.ends_with("_00000001_MngSrvRaid.txt")
                      ? 0
                      : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(CMSRAID_InfoGetterTest, ResultDirectoryIsMadeForTheOwnerOnly) {
    fs::remove_all(std::string(INSTALL_DIR) + "/tmp");
    CMSRAID_InfoGetter::GetRsltFilePath();
    for (const std::string& path : {std::string(INSTALL_DIR) + "/tmp", std::string(RESULT_DIR)}) {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all) << path;
    }
    CMSRAID_InfoGetter::GetRsltFilePath();
    EXPECT_TRUE(fs::is_directory(RESULT_DIR)) << "a directory that exists is harmless";
}

TEST_F(CMSRAID_InfoGetterTest, EmptyInstallPathLeadsBelowTmp) {
    ASSERT_EQ(mount("test", "/tmp", "tmpfs", 0, "mode=1777"), 0);
    FakeComLib().installPath = "";
    EXPECT_THAT(CMSRAID_InfoGetter::GetRsltFilePath(),
                MatchesRegex("/tmp/MSRAID/[0-9a-f]+_[0-9a-f]+_MngSrvRaid\\.txt"));
    EXPECT_THAT(FakeComLib().traces, ElementsAre(Failure("Failed to get INSTALLPATH_CIM.")));
    CTestGetter getter;
    EXPECT_TRUE(Run(getter, "### A ###\n"s));
    EXPECT_THAT(m_Items, SizeIs(2));
    EXPECT_TRUE(fs::is_empty("/tmp/MSRAID"));
    EXPECT_EQ(umount2("/tmp", MNT_DETACH), 0);
}

// ---- reports that no tool would print ----

class CHugeReportTest : public CMSRAID_InfoGetterTest {
protected:
    bool Read(const std::string& shellText) {
        CStandInTool tool;
        tool.Play("-test -a0", {.run = shellText});
        m_Getter = std::make_unique<CTestGetter>();
        return m_Getter->GetInfo(0, m_Items);
    }
    void ExpectRefusal() {
        EXPECT_EQ(m_Getter->ErrCode(), "04");
        EXPECT_EQ(m_Getter->ErrDetail(), "");
        EXPECT_THAT(m_Getter->m_Lines, IsEmpty()) << "told before it is read";
        EXPECT_THAT(FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE),
                    ElementsAre(testing::StartsWith("Result file is too large(/opt/tarmica/")));
    }

    std::unique_ptr<CTestGetter> m_Getter;
};

TEST_F(CHugeReportTest, SixteenMebibytesAreRead) {
    EXPECT_TRUE(Read("truncate -s 16777216 /proc/self/fd/1"));
    EXPECT_THAT(m_Getter->m_Lines, SizeIs(1));
}

TEST_F(CHugeReportTest, MoreIsNotUnderstood) {
    EXPECT_FALSE(Read("truncate -s 16777217 /proc/self/fd/1"));
    ExpectRefusal();
}

// A process that the tool left behind goes on writing while the report is read.
TEST_F(CHugeReportTest, WhatGrowsBeyondWhileItIsReadIsNotUnderstood) {
    CStandInTool tool;
    tool.Play("-test -a0", {.run = "echo grow; head -c 100000 /dev/zero"});
    CTestGetter getter;
    EXPECT_FALSE(getter.GetInfo(0, m_Items));
    EXPECT_EQ(getter.ErrCode(), "04");
    EXPECT_THAT(m_Items, IsEmpty());
    EXPECT_THAT(getter.m_Lines, SizeIs(2));
    EXPECT_LT(getter.m_Lines.back().size(), 17'000'000U);
    EXPECT_THAT(FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE),
                ElementsAre(testing::StartsWith("Result file is too large(/opt/tarmica/")));
}

TEST_F(CHugeReportTest, AMillionLinesAreRead) {
    EXPECT_TRUE(Read("echo '### t ###'; yes a: | head -n 1000000"));
    EXPECT_THAT(m_Items, SizeIs(1'000'002));
}

void ExpectTooMuch(const CTestGetter& getter) {
    EXPECT_EQ(getter.ErrCode(), "04");
    EXPECT_THAT(getter.m_RaidList, IsEmpty());
    EXPECT_GE(getter.m_Freed, 1);
}

TEST_F(CHugeReportTest, LinesThatTakeMoreMemoryAreNotUnderstood) {
    EXPECT_FALSE(Read("echo '### t ###'; yes a: | head -n 5000000"));
    ExpectTooMuch(*m_Getter);
    EXPECT_THAT(m_Items, IsEmpty());
}

// Each item of a section holds its title, too.
TEST_F(CHugeReportTest, LongTitleOverManyLinesIsNotUnderstood) {
    EXPECT_FALSE(Read("printf '### %01000000d ###\\n' 0; yes a: | head -n 100000"));
    ExpectTooMuch(*m_Getter);
}

TEST_F(CHugeReportTest, MemoryIsCountedOverAllReportsOfARequest) {
    CStandInTool tool;
    CTestGetter getter;
    for (int run = 0; run < 4; ++run) {
        tool.Play("-test -a0", {.run = "echo '### t ###'; yes a: | head -n 1000000"});
        EXPECT_EQ(getter.GetInfo(0, m_Items), run < 2) << run;
    }
    EXPECT_EQ(getter.ErrCode(), "0404");
}

}  // namespace
