// Storage information: all of the RAID information, then the PCIe SSDs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "StandInTool.h"
#include "orchestration/CMSRAID_InterFace.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* STORCLI = "/opt/tarmica/qor/provider/RAID/tool/storcli";
constexpr const char* SSD_INI = "/opt/tarmica/qor/provider/PciessdVCFac.ini";
constexpr const char* REMOVE_RESULT_FILES = "rm -f /opt/tarmica/qor/provider/tmp/MSRAID/*";
constexpr const char* SSD_COMMAND = "-pssdinfo -aAll";
constexpr const char* SSD_REPORT = "Bus : 3\n\n### General Information ###\nCapacity : 1205GB\n";
constexpr const char* SSD_ITEMS =
    " | PCIe SSD Information |  | TRUE\n"
    "PCIe SSD Information | ### General Information ### |  | TRUE\n"
    "### General Information ### | Bus No. | 3 | TRUE\n"
    "### General Information ### | Capacity | 1205GB | TRUE\n";

// One request, with texts that hold something before.
struct CRequest {
    CRequest() {
        CMSRAID_InterFace interFace;
        result = interFace.GetStorageInfo(&items, &errCode, &notice, &detail);
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

enum class ECard { ABSENT, PRESENT };
enum class ESSD { ABSENT, PRESENT };
// What stands for the RAID tool: nothing, on a host with disks or without; or the tool.
enum class ETool { MISSING_WITH_DISKS, MISSING_WITHOUT_DISKS, INSTALLED };

struct CRow {
    ECard card;
    ESSD ssd;
    ETool tool;
    std::string version;
    std::string answer;
    bool raidShown;
    bool ssdShown;
};

std::ostream& operator<<(std::ostream& out, const CRow& row) {
    return out << "card " << static_cast<int>(row.card) << ", SSD " << static_cast<int>(row.ssd)
               << ", tool " << static_cast<int>(row.tool) << " " << row.version;
}

class StorageInfo : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }

    static void PutDevices(ECard card, ESSD ssd) {
        PutRaidCard();
        WriteFile(SSD_INI,
                  "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_8086\nDevice1=DEV_0A54\n");
        WriteFile(DEVICE_LIST, std::string("00:00.0_8086:7190_0000_00\n") +
                                   (card == ECard::PRESENT ? "02:00.0_1000:005d_0000_02\n" : "") +
                                   (ssd == ESSD::PRESENT ? "03:00.0_8086:0a54_0000_00\n" : ""));
    }

    static void PlayVersion(CStandInTool& tool, const std::string& version) {
        tool.Play("-v", {.out = VersionReport(version)});
    }

    static void PlayRAID(CStandInTool& tool, const std::string& version = "7.2",
                         const char* driveCommand = "-pdinfo -nosmart") {
        PlayVersion(tool, version);
        tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
        PlayController(tool, 0, driveCommand);
    }

    // A host with both kinds of devices up to the SSDs' report, which `step` answers.
    static void ExpectSSDFailure(const CToolStep& step, const std::string& answer) {
        PutDevices(ECard::PRESENT, ESSD::PRESENT);
        CStandInTool tool;
        PlayRAID(tool);
        PlayVersion(tool, "7.2");
        tool.Play(SSD_COMMAND, step);
        const CRequest request;
        EXPECT_EQ(request.Answer(), answer);
        EXPECT_EQ(request.items.Text(), "");
        EXPECT_TRUE(fs::is_empty(RESULT_DIR));
        EXPECT_EQ(FakeComLib().Traces(2).back(),
                  "CMSRAID_PCIeSSDInfoGetter::GetInfo is FAILED (ret=00000000).");
    }
};

void ExpectRow(const CRow& row) {
    const CRequest request;
    EXPECT_EQ(request.Answer(), row.answer) << row;
    const std::string text = request.items.Text();
    EXPECT_EQ(text.find("Controller Information") != std::string::npos, row.raidShown) << row;
    EXPECT_EQ(text.find("PCIe SSD Information") != std::string::npos, row.ssdShown) << row;
    EXPECT_EQ(text.empty(), !row.raidShown && !row.ssdShown) << row;
}

// --- which devices and which tool there are ---

TEST_F(StorageInfo, HostWithoutTheToolIsAnswered) {
    const std::vector<CRow> rows = {
        {ECard::ABSENT, ESSD::ABSENT, ETool::MISSING_WITH_DISKS, "", "1 '' '' 'none'", false,
         false},
        {ECard::ABSENT, ESSD::PRESENT, ETool::MISSING_WITH_DISKS, "", "0 '02' '' 'none'", false,
         false},
        {ECard::PRESENT, ESSD::ABSENT, ETool::MISSING_WITH_DISKS, "", "0 '02' '' 'none'", false,
         false},
        {ECard::PRESENT, ESSD::PRESENT, ETool::MISSING_WITH_DISKS, "", "0 '02' '' 'none'", false,
         false},
        {ECard::PRESENT, ESSD::ABSENT, ETool::MISSING_WITHOUT_DISKS, "", "1 '02' '02' 'none'",
         false, false},
        {ECard::PRESENT, ESSD::PRESENT, ETool::MISSING_WITHOUT_DISKS, "", "0 '02' '02' 'none'",
         false, false},
    };
    for (const CRow& row : rows) {
        fs::remove_all(fs::path(STORCLI).parent_path());
        PutDevices(row.card, row.ssd);
        CStandInTool utility(STORCLI);
        if (row.card == ECard::PRESENT) {
            utility.Play("/call show",
                         {.out = row.tool == ETool::MISSING_WITH_DISKS ? "Physical Drives = 4\n"
                                                                       : "Physical Drives = 0\n"});
        }
        ExpectRow(row);
    }
}

TEST_F(StorageInfo, HostWithoutACardShowsItsSSDsByTheVersion) {
    const std::string answer = "1 '' '' 'none'";
    for (const char* version : {"3.9", "4.3", "4.4", "6.8", "6.99", "7.0", "7.2", "12.5", "7.02.00",
                                "7", "", "text", "a.b", "7.", ".7"}) {
        const std::string text = version;
        const bool shown = text == "7.0" || text == "7.2" || text == "12.5" || text == "7.";
        fs::remove_all(TOOL_DIR);
        PutDevices(ECard::ABSENT, ESSD::PRESENT);
        CStandInTool tool;
        PlayVersion(tool, version);
        if (shown) {
            tool.Play(SSD_COMMAND, {.out = SSD_REPORT});
        }
        ExpectRow({ECard::ABSENT, ESSD::PRESENT, ETool::INSTALLED, text, answer, false, shown});
    }
}

TEST_F(StorageInfo, HostWithACardShowsWhatTheVersionKnows) {
    struct CVersionRow {
        const char* version;
        const char* driveCommand;
        const char* notice;
        bool ssdShown;
    };
    const std::vector<CVersionRow> versions = {
        {"3.9", "-pdinfo", "01", false},        {"4.3", "-pdinfo -nosmart", "01", false},
        {"4.4", "-pdinfo -nosmart", "", false}, {"6.8", "-pdinfo -nosmart", "", false},
        {"7.0", "-pdinfo -nosmart", "", true},  {"7.02.00", "-pdinfo", "01", false},
        {"", "-pdinfo", "01", false},
    };
    for (const ESSD ssd : {ESSD::ABSENT, ESSD::PRESENT}) {
        for (const CVersionRow& row : versions) {
            fs::remove_all(TOOL_DIR);
            PutDevices(ECard::PRESENT, ssd);
            CStandInTool tool;
            PlayRAID(tool, row.version, row.driveCommand);
            const bool shown = row.ssdShown && ssd == ESSD::PRESENT;
            if (ssd == ESSD::PRESENT) {
                PlayVersion(tool, row.version);
            }
            if (shown) {
                tool.Play(SSD_COMMAND, {.out = SSD_REPORT});
            }
            ExpectRow({ECard::PRESENT, ssd, ETool::INSTALLED, row.version,
                       std::string("1 '' '") + row.notice + "' 'none'", true, shown});
        }
    }
}

TEST_F(StorageInfo, HostWithNeitherRunsNothing) {
    PutDevices(ECard::ABSENT, ESSD::ABSENT);
    const CStandInTool toolThatIsNotAsked;
    ExpectRow({ECard::ABSENT, ESSD::ABSENT, ETool::INSTALLED, "", "1 '' '' 'none'", false, false});
    EXPECT_EQ(FakeComLib().traces,
              (std::vector<CTraceLine>{{4, "CMSRAID_InterFace::CMSRAID_InterFace [START]"},
                                       {4, "CMSRAID_InterFace::CMSRAID_InterFace [END]"},
                                       {4, "CMSRAID_InterFace::GetStorageInfo [START]"},
                                       {4, "CMSRAID_InterFace::GetRAIDInfo [START]"},
                                       {4, "CMSRAID_PCICard::IsPresentRAID [START]"},
                                       {1, "RAID Card is not present."},
                                       {4, "CMSRAID_PCICard::IsPresentRAID [END]"},
                                       {4, "CMSRAID_InterFace::FreeItemList [START]"},
                                       {4, "CMSRAID_InterFace::FreeItemList [END]"},
                                       {4, "CMSRAID_InterFace::GetRAIDInfo [END]"},
                                       {4, "CMSRAID_PCICard::IsPresentPCIeSSD [START]"},
                                       {1, "PCIe SSD is not present."},
                                       {4, "CMSRAID_PCICard::IsPresentPCIeSSD [END]"},
                                       {4, "CMSRAID_InterFace::FreeItemList [START]"},
                                       {4, "CMSRAID_InterFace::FreeItemList [END]"},
                                       {4, "CMSRAID_InterFace::GetStorageInfo [END]"},
                                       {4, "CMSRAID_InterFace::~CMSRAID_InterFace [START]"},
                                       {4, "CMSRAID_InterFace::~CMSRAID_InterFace [END]"}}));
}

TEST_F(StorageInfo, BuiltInSSDNeedsNoIniFile) {
    WriteFile(DEVICE_LIST, "03:00.0_1aed:2001_0000_00\n");
    CStandInTool tool;
    PlayVersion(tool, "7.0");
    tool.Play(SSD_COMMAND, {.out = SSD_REPORT});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), SSD_ITEMS);
}

// --- order ---

TEST_F(StorageInfo, SSDsFollowTheRAIDInformation) {
    PutDevices(ECard::PRESENT, ESSD::PRESENT);
    CItems raid;
    std::string errCode;
    std::string notice;
    std::string detail;
    {
        CStandInTool tool;
        PlayRAID(tool);
        CMSRAID_InterFace interFace;
        ASSERT_EQ(interFace.GetRAIDInfo(&raid, &errCode, &notice, &detail), 1);
    }
    fs::remove_all(TOOL_DIR);
    ResetFakeComLib();
    CStandInTool tool;
    PlayRAID(tool);
    PlayVersion(tool, "7.2");
    tool.Play(SSD_COMMAND, {.out = SSD_REPORT});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), raid.Text() + SSD_ITEMS);
    EXPECT_EQ(FakeComLib().TracesWithoutFlow(),
              (std::vector<CTraceLine>{
                  {1, "Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_005D)"},
                  {1, "execute krzcli command.(krzcli -v)"},
                  {1, "KRZ Version is 7.2."},
                  {1, "execute krzcli command.(krzcli -ctrlinfo -aAll)"},
                  {1, "execute krzcli command.(krzcli -ctrlinfo -a0)"},
                  {1, "execute krzcli command.(krzcli -ldpdinfo -a0)"},
                  {1, "execute krzcli command.(krzcli -ldpdinfo -a0)"},
                  {1, "execute krzcli command.(krzcli -pdinfo -nosmart -a0)"},
                  {1, "Support PCI Device(RAID/SSD) found.(vendor=VEN_8086,device=DEV_0A54)"},
                  {1, "execute krzcli command.(krzcli -v)"},
                  {1, "execute krzcli command.(krzcli -pssdinfo -aAll)"}}));
}

TEST_F(StorageInfo, ItemsAreAppendedBehindTheCallers) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "7.0");
    tool.Play(SSD_COMMAND, {.out = SSD_REPORT});
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), 1);
    EXPECT_EQ(items.Text(), std::string(" | before |  | TRUE\n") + SSD_ITEMS);
}

class CRAIDInfoDouble : public CMSRAID_InterFace {
public:
    explicit CRAIDInfoDouble(int result) : m_Result(static_cast<unsigned char>(result)) {}
    unsigned char GetRAIDInfo(std::list<CItemDisp*>* list, std::string* errCode,
                              std::string* notice, std::string* detail) override {
        AddItem(*list, "", "double", "");
        *errCode = "e";
        *notice = "n";
        *detail = "d";
        return m_Result;
    }

private:
    unsigned char m_Result;
};

TEST_F(StorageInfo, RAIDInformationComesThroughTheTable) {
    for (const int result : {0, 1, 7, 255}) {
        CRAIDInfoDouble interFace(result);
        CItems items;
        std::string errCode;
        std::string notice;
        std::string detail;
        EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), result);
        EXPECT_EQ(errCode + notice + detail, "end");
        EXPECT_EQ(items.Text(), result != 0 ? " | double |  | TRUE\n" : "");
    }
}

TEST_F(StorageInfo, ResultOfTheSSDsReplacesTheOneOfTheRAIDInformation) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "7.02.00");
    PlayVersion(tool, "6.8");
    PlayVersion(tool, "7.0");
    tool.Play(SSD_COMMAND, {.out = SSD_REPORT});
    for (const int expected : {7, 7, 1}) {
        CRAIDInfoDouble interFace(7);
        CItems items;
        std::string errCode;
        std::string notice;
        std::string detail;
        EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), expected);
    }
}

TEST_F(StorageInfo, CodeOfTheSSDsIsPutBeforeTheOneOfTheRAIDInformation) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "7.0");
    tool.Play(SSD_COMMAND, {.out = "Error - broken\n"});
    CRAIDInfoDouble interFace(1);
    CItems items;
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), 0);
    EXPECT_EQ(errCode, "01e");
    EXPECT_EQ(notice, "n");
    EXPECT_EQ(detail, "krzcli -pssdinfo -aAll") << "assigned";
    EXPECT_EQ(items.Text(), "");
}

TEST_F(StorageInfo, MissingToolForAnSSDReplacesWhateverCodeThereIs) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CRAIDInfoDouble interFace(1);
    CItems items;
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), 0);
    EXPECT_EQ(errCode + " " + notice + " " + detail, "02 n d");
    EXPECT_EQ(items.Text(), "");
}

// --- skipping the SSDs ---

TEST_F(StorageInfo, OldToolIsTracedAndSkipsTheSSDs) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "6.8");
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(FakeComLib().Traces(16),
              (std::vector<std::string>{"Skip getting PCIe SSD Information because KRZ is old."}));
    EXPECT_THAT(FakeComLib().Traces(2), testing::IsEmpty());
}

TEST_F(StorageInfo, UnreadableVersionSkipsTheSSDsWithoutAWord) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "7.02.00");
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(FakeComLib().TracesWithoutFlow(),
              (std::vector<CTraceLine>{
                  {1, "RAID Card is not present."},
                  {1, "Support PCI Device(RAID/SSD) found.(vendor=VEN_8086,device=DEV_0A54)"},
                  {1, "execute krzcli command.(krzcli -v)"}}));
}

TEST_F(StorageInfo, GetterIsMadeBehindTheVersionWhateverItIs) {
    for (const char* version : {"7.02.00", "6.8"}) {
        fs::remove_all(TOOL_DIR);
        PutDevices(ECard::ABSENT, ESSD::PRESENT);
        CStandInTool tool;
        PlayVersion(tool, version);
        ResetFakeComLib();
        { const CRequest request; }
        std::vector<std::string> lines;
        for (const CTraceLine& line : FakeComLib().traces) {
            if (line.text.find("krzcli -v") != std::string::npos ||
                line.text.find("CMSRAID_PCIeSSDInfoGetter::") != std::string::npos) {
                lines.push_back(line.text);
            }
        }
        EXPECT_THAT(lines, testing::ElementsAre(
                               "execute krzcli command.(krzcli -v)",
                               "CMSRAID_PCIeSSDInfoGetter::CMSRAID_PCIeSSDInfoGetter [START]",
                               "CMSRAID_PCIeSSDInfoGetter::CMSRAID_PCIeSSDInfoGetter [END]",
                               "CMSRAID_PCIeSSDInfoGetter::~CMSRAID_PCIeSSDInfoGetter [START]",
                               "CMSRAID_PCIeSSDInfoGetter::~CMSRAID_PCIeSSDInfoGetter [END]"))
            << version;
    }
}

TEST_F(StorageInfo, VersionThatCannotBeAskedSkipsTheSSDs) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    for (int i = 0; i < 3; ++i) {
        tool.Play("-v", {.out = VersionReport("7.2"), .status = 1});
    }
    const CRequest request;
    EXPECT_EQ(request.Answer(), "1 '' '' 'none'");
    EXPECT_EQ(request.items.Text(), "");
}

// --- failures ---

TEST_F(StorageInfo, MissingToolForAnSSDReplacesTheErrorCode) {
    PutDevices(ECard::PRESENT, ESSD::PRESENT);
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '02' '02' 'none'")
        << "assigned, not put before the other \"02\"";
    std::vector<CTraceLine> notInstalled;
    for (const CTraceLine& line : FakeComLib().traces) {
        if (line.text == "KRZ is not installed.") {
            notInstalled.push_back(line);
        }
    }
    EXPECT_EQ(notInstalled, (std::vector<CTraceLine>{{16, "KRZ is not installed."},
                                                     {2, "KRZ is not installed."}}));
}

TEST_F(StorageInfo, RAIDFailureEndsTheRequest) {
    PutDevices(ECard::PRESENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "7.2");
    tool.Play("-ctrlinfo -aAll", {.out = "Error - broken\n"});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '01' '' 'krzcli -ctrlinfo -aAll'");
    EXPECT_EQ(request.items.Text(), "");
}

TEST_F(StorageInfo, SSDToolErrorFailsTheRequest) {
    ExpectSSDFailure({.out = "Error - broken\n"}, "0 '01' '' 'krzcli -pssdinfo -aAll'");
}

TEST_F(StorageInfo, SSDReportThatIsGoneFailsTheRequest) {
    ExpectSSDFailure({.run = REMOVE_RESULT_FILES}, "0 '03' '' ''");
}

TEST_F(StorageInfo, SSDReportThatIsNotUnderstoodFailsTheRequest) {
    ExpectSSDFailure({.out = "### Title before any SSD ###\n"}, "0 '04' '' ''");
}

TEST_F(StorageInfo, SSDFailureTracesInOrder) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayVersion(tool, "7.0");
    tool.Play(SSD_COMMAND, {.out = "Error - broken\n"});
    const CRequest request;
    EXPECT_EQ(FakeComLib().TracesWithoutFlow(),
              (std::vector<CTraceLine>{
                  {1, "RAID Card is not present."},
                  {1, "Support PCI Device(RAID/SSD) found.(vendor=VEN_8086,device=DEV_0A54)"},
                  {1, "execute krzcli command.(krzcli -v)"},
                  {1, "execute krzcli command.(krzcli -pssdinfo -aAll)"},
                  {2, "KRZ CLI has an error(krzcli -pssdinfo -aAll)."},
                  {2, "Failed to execute krzcli command ret=00000001."},
                  {2, "CMSRAID_PCIeSSDInfoGetter::GetInfo is FAILED (ret=00000000)."}}));
}

TEST_F(StorageInfo, SSDFailureStandsBesideTheNoticeOfTheVersion) {
    PutDevices(ECard::PRESENT, ESSD::PRESENT);
    CStandInTool tool;
    PlayRAID(tool, "4.3");
    PlayVersion(tool, "7.0");  // replaced while the request ran
    tool.Play(SSD_COMMAND, {.out = "Error - broken\n"});
    const CRequest request;
    EXPECT_EQ(request.Answer(), "0 '01' '01' 'krzcli -pssdinfo -aAll'");
    EXPECT_EQ(request.items.Text(), "");
}

TEST_F(StorageInfo, FailureFreesItsOwnListAndThenTheCallers) {
    class CNotingFreedLists : public CRAIDInfoDouble {
    public:
        CNotingFreedLists() : CRAIDInfoDouble(0) {}
        void FreeItemList(std::list<CItemDisp*>* list) override {
            freed.push_back(list);
            CMSRAID_InterFace::FreeItemList(list);
        }
        std::vector<std::list<CItemDisp*>*> freed;
    } interFace;
    CItems items;
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), 0);
    ASSERT_EQ(interFace.freed.size(), 2U);
    EXPECT_NE(interFace.freed[0], &items);
    EXPECT_EQ(interFace.freed[1], &items);
}

TEST_F(StorageInfo, FailureEmptiesTheCallersOwnItemsToo) {
    PutDevices(ECard::ABSENT, ESSD::PRESENT);
    CMSRAID_InterFace interFace;
    CItems items;
    AddItem(items, "", "before", "");
    std::string errCode;
    std::string notice;
    std::string detail;
    EXPECT_EQ(interFace.GetStorageInfo(&items, &errCode, &notice, &detail), 0);
    EXPECT_TRUE(items.empty());
}

TEST_F(StorageInfo, VersionLineThatEndsAtItsColonThrowsAndLeavesNothing) {
    for (const ECard card : {ECard::ABSENT, ECard::PRESENT}) {
        fs::remove_all(TOOL_DIR);
        PutDevices(card, ESSD::PRESENT);
        CStandInTool tool;
        if (card == ECard::PRESENT) {
            PlayRAID(tool);
        }
        tool.Play("-v", {.out = "Product Version :\n"});
        CMSRAID_InterFace interFace;
        CItems items;
        std::string errCode = "before";
        std::string notice = "before";
        std::string detail = "before";
        EXPECT_THROW(interFace.GetStorageInfo(&items, &errCode, &notice, &detail),
                     std::out_of_range);
        EXPECT_TRUE(items.empty());
        EXPECT_EQ(errCode + notice + detail, "none");
        EXPECT_TRUE(fs::is_empty(RESULT_DIR));
    }
}

}  // namespace
