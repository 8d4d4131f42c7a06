// Every request about drives, storage, XML and the service processor, as a host makes it.
#include <algorithm>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

#include "ItemText.h"
#include "LoadedPluginFixture.h"

namespace {

namespace fs = std::filesystem;
using qortest::CAnswer;
using qortest::CLoadedPlugin;
using qortest::CStandInTool;

constexpr const char* DRIVE_COMMAND = "-pdinfo -pd[252:5] -a0";

class AllSlots : public qortest::CLoadedPluginFixture {
protected:
    static void ExpectTexts(const CAnswer& answer, int result, const std::string& texts) {
        EXPECT_EQ(answer.result, result);
        EXPECT_EQ(answer.errorCode + "/" + answer.noticeCode + "/" + answer.errorDetail, texts);
    }
    // One supported PCIe SSD and no RAID card.
    static void PutSSD() {
        qortest::WriteFile(qortest::DEVICE_LIST, "03:00.0_1aed:2001_0000_00\n");
    }

    static void PlayDrive(CStandInTool& tool, const std::string& report) {
        tool.Play("-ldpdinfo -a0", {.out = qortest::Golden("smart/groups.txt")});
        tool.Play(DRIVE_COMMAND, {.out = report});
    }
};

TEST_F(AllSlots, DriveWithItsSmartTable) {
    CStandInTool tool;
    PlayDrive(tool, qortest::Golden("smart/sata.txt"));
    const CLoadedPlugin plugin;
    CAnswer answer = GetPDInfo(plugin);
    ExpectTexts(answer, 1, "//none");
    qortest::ExpectGoldenItems("golden/smart/sata.items", answer.items);
    EXPECT_TRUE(Traced("CMSRAID_PDSMInfoGetter::ParseSMARTSATA [END]"));
    plugin->FreeItemList(&answer.items);
}

TEST_F(AllSlots, ShortFormOfDriveGivesTheSame) {
    CStandInTool tool;
    PlayDrive(tool, qortest::Golden("smart/sata.txt"));
    const CLoadedPlugin plugin;
    CAnswer answer;
    EXPECT_EQ(plugin->GetPDInfo(0, 252, 5, &answer.items, &answer.errorCode, &answer.noticeCode),
              1);
    qortest::ExpectGoldenItems("golden/smart/sata.items", answer.items);
    EXPECT_EQ(answer.errorCode + answer.noticeCode + answer.errorDetail, "");
    plugin->FreeItemList(&answer.items);
}

TEST_F(AllSlots, DriveWithoutTheToolIsError02) {
    const CLoadedPlugin plugin;
    ExpectTexts(GetPDInfo(plugin), 0, "02//none");
}

TEST_F(AllSlots, DriveThatIsNotUnderstoodIsError04) {
    CStandInTool tool;
    PlayDrive(tool, qortest::GoldenBad("smart/sata_row_with_too_few_cells.txt"));
    const CLoadedPlugin plugin;
    const CAnswer answer = GetPDInfo(plugin);
    ExpectTexts(answer, 0, "04//");
    EXPECT_TRUE(answer.items.empty());
    EXPECT_TRUE(Traced("Parse SmartDeital is FAILED.(---)"));
}

TEST_F(AllSlots, TableOutOfRangeReachesTheHostAsAnExceptionAndLeavesNothing) {
    for (const char* name :
         {"smart/sata_row_ends_in_name.txt", "smart/sata_header_ends_with_raw_data.txt",
          "smart/sas_row_too_short.txt"}) {
        fs::remove_all(qortest::TOOL_DIR);
        CStandInTool tool;
        PlayDrive(tool, qortest::GoldenBad(name));
        PlayDrive(tool, qortest::Golden("smart/sas.txt"));
        const CLoadedPlugin plugin;
        CAnswer answer;
        EXPECT_THROW(plugin->GetPDInfo(0, 252, 5, &answer.items, &answer.errorCode,
                                       &answer.noticeCode, &answer.errorDetail),
                     std::out_of_range)
            << name;
        EXPECT_TRUE(answer.items.empty());
        EXPECT_EQ(answer.errorCode + answer.noticeCode + answer.errorDetail, "none");
        EXPECT_TRUE(fs::is_empty(qortest::RESULT_DIR));
        CAnswer good = GetPDInfo(plugin);
        ExpectTexts(good, 1, "//none");
        plugin->FreeItemList(&good.items);
    }
}

TEST_F(AllSlots, StorageOfSSDs) {
    PutSSD();
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version : 7.0\n"});
    tool.Play("-pssdinfo -aAll", {.out = qortest::Golden("pssd/two_ssds.txt")});
    const CLoadedPlugin plugin;
    CAnswer answer = GetStorageInfo(plugin);
    ExpectTexts(answer, 1, "//none");
    qortest::ExpectGoldenItems("golden/pssd/two_ssds.items", answer.items);
    plugin->FreeItemList(&answer.items);
}

TEST_F(AllSlots, StorageOfAnOldToolLeavesTheSSDsOut) {
    PutSSD();
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version : 6.8\n"});
    const CLoadedPlugin plugin;
    const CAnswer answer = GetStorageInfo(plugin);
    ExpectTexts(answer, 1, "//none");
    EXPECT_TRUE(answer.items.empty());
    EXPECT_TRUE(Traced("Skip getting PCIe SSD Information because KRZ is old."));
}

TEST_F(AllSlots, StorageFailureEmptiesTheList) {
    qortest::WriteFile(qortest::DEVICE_LIST,
                       "02:00.0_1000:005d_0000_02\n03:00.0_1aed:2001_0000_00\n");
    CStandInTool tool;
    PlayOneController(tool);
    tool.Play("-v", {.out = "Product Version : 7.0\n"});
    tool.Play("-pssdinfo -aAll", {.out = qortest::GoldenBad("pssd/title_before_bus.txt")});
    const CLoadedPlugin plugin;
    const CAnswer answer = GetStorageInfo(plugin);
    ExpectTexts(answer, 0, "04//");
    EXPECT_TRUE(answer.items.empty());
}

TEST_F(AllSlots, ListBecomesAnXmlText) {
    CStandInTool tool;
    PlayOneController(tool);
    const CLoadedPlugin plugin;
    CAnswer answer = GetRAIDInfo(plugin);
    char* text = nullptr;
    EXPECT_EQ(plugin->XmlSerialize(0, "RAID", &answer.items, &text), 0U);
    plugin->FreeItemList(&answer.items);
    ASSERT_NE(text, nullptr);
    const std::string document = text;
    EXPECT_EQ(document.find("<dispdata><component>RAID</component><item>"
                            "<name>Controller Information</name>"),
              0U);
    EXPECT_NE(document.find("<name>Product Name</name><val>X</val>"), std::string::npos);
    char* none = nullptr;
    EXPECT_EQ(plugin->XmlSerialize(0, nullptr, &answer.items, &none), 0x01000000U);
    EXPECT_EQ(text, document) << "a refused call leaves the text alone";
    EXPECT_EQ(plugin->XmlSerialize(1, "RAID", &answer.items, &none), 0x02000000U);
    EXPECT_EQ(none, nullptr);
}

TEST_F(AllSlots, FormOfTheServiceProcessor) {
    CStandInTool tool;
    PlayOneController(tool);
    const CLoadedPlugin plugin;
    std::string binary = "before";
    std::string errorCode = "before";
    std::string noticeCode = "before";
    EXPECT_EQ(plugin->GetCtrlPDInfoBinaryString(&binary, &errorCode, &noticeCode), 1);
    EXPECT_EQ(errorCode + noticeCode, "");
    ASSERT_GT(binary.size(), 32U);
    EXPECT_EQ(binary.substr(0, 16), "0000000000000000");
    EXPECT_EQ(binary.substr(18, 14), "00000001010000") << "one controller, one drive";
}

TEST_F(AllSlots, FailedFormOfTheServiceProcessorIsEmpty) {
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version : 7.0\n"});
    tool.Play("-ctrlinfo -aAll", {.out = "Error - broken\n"});
    const CLoadedPlugin plugin;
    std::string binary;
    std::string errorCode;
    std::string noticeCode;
    EXPECT_EQ(plugin->GetCtrlPDInfoBinaryString(&binary, &errorCode, &noticeCode), 0);
    EXPECT_EQ(binary, "00000000000000001000000000000000");
    EXPECT_EQ(errorCode, "01");
}

TEST_F(AllSlots, NullArgumentsTouchNothing) {
    const CStandInTool toolThatIsNotAsked;
    const CLoadedPlugin plugin;
    std::string text = "before";
    EXPECT_EQ(plugin->GetPDInfo(0, 0, 0, nullptr, &text, &text, &text), 0);
    EXPECT_EQ(plugin->GetPDInfo(0, 0, 0, nullptr, &text, &text), 0);
    EXPECT_EQ(plugin->GetStorageInfo(nullptr, &text, &text, &text), 0);
    EXPECT_EQ(plugin->GetCtrlPDInfoBinaryString(nullptr, &text, &text), 0);
    EXPECT_EQ(text, "before");
}

// --- positions ---

// Calls the operation at `slot` of the object's table, as a host does that has no header of ours.
// What the sanitizer sees is a function of another type.
template <class Result, class... Arguments>
__attribute__((no_sanitize("undefined"))) Result CallSlot(const CLoadedPlugin& plugin, size_t slot,
                                                          Arguments... arguments) {
    void* const object = plugin.operator->();
    void** const table = *static_cast<void***>(object);
    return reinterpret_cast<Result (*)(void*, Arguments...)>(table[slot])(object, arguments...);
}

TEST_F(AllSlots, EveryRequestStandsInItsSlot) {
    CStandInTool tool;
    const CLoadedPlugin plugin;
    std::list<CItemDisp*> items;
    std::string e;
    std::string n;
    std::string d;
    PlayDrive(tool, qortest::Golden("smart/sas.txt"));
    EXPECT_EQ(CallSlot<unsigned char>(plugin, 5, 0L, 252L, 5L, &items, &e, &n), 1);
    const size_t count = items.size();
    EXPECT_GT(count, 0U);
    PlayDrive(tool, qortest::Golden("smart/sas.txt"));
    EXPECT_EQ(CallSlot<unsigned char>(plugin, 6, 0L, 252L, 5L, &items, &e, &n, &d), 1);
    EXPECT_EQ(items.size(), 2 * count);
    EXPECT_EQ(d, "none");

    char* text = nullptr;
    EXPECT_EQ(CallSlot<unsigned int>(plugin, 2, 1U, "C", static_cast<void*>(&items), &text),
              0x02000000U);
    CallSlot<void>(plugin, 9, &items);
    EXPECT_TRUE(items.empty());

    qortest::WriteFile(qortest::DEVICE_LIST, "02:00.0_1000:ffff_0000_02\n");
    EXPECT_EQ(CallSlot<unsigned char>(plugin, 7, &d, &e, &n), 1);
    EXPECT_EQ(d, "00000000000000001000000000000000");
    EXPECT_EQ(CallSlot<unsigned char>(plugin, 8, &items, &e, &n, &d), 1);
    EXPECT_EQ(d, "none");
}

// --- damaged reports ---

// A tool that prints the file behind it, whatever it is asked.
void LetToolPrint(const std::string& report) {
    const std::string tool = std::string(qortest::TOOL_DIR) + "/krzcli";
    const std::string file = "/opt/tarmica/report.txt";
    if (!fs::exists(tool)) {
        qortest::WriteFile(tool, "#!/bin/sh\nexec cat " + file + "\n");
        fs::permissions(tool, fs::perms::owner_all);
    }
    qortest::WriteFile(file, report);
}

std::string Damaged(std::string text, std::mt19937& random) {
    for (size_t hits = 1 + random() % 3; hits > 0; --hits) {
        const size_t at = random() % text.size();
        const size_t length = 1 + random() % 30;
        switch (random() % 3) {
            case 0:
                text.erase(at, std::min(length, text.size() - 1));
                break;
            case 1:
                text.insert(at, text.substr(random() % text.size(), length));
                break;
            default:
                text[at] = static_cast<char>(random());
                break;
        }
    }
    return text;
}

// Items and success, a rejection and an empty list, or the exception that the header names.
void ExpectDocumentedOutcome(const CLoadedPlugin& plugin, const std::string& report) {
    LetToolPrint(report);
    CAnswer answer;
    try {
        answer.result = plugin->GetPDInfo(0, 252, 5, &answer.items, &answer.errorCode,
                                          &answer.noticeCode, &answer.errorDetail);
        EXPECT_EQ(answer.errorCode, answer.result == 1 ? "" : "04") << report;
        EXPECT_TRUE(answer.result == 1 || answer.items.empty()) << report;
    } catch (const std::out_of_range&) {
        EXPECT_TRUE(answer.items.empty()) << report;
        EXPECT_EQ(answer.errorCode + answer.noticeCode + answer.errorDetail, "none");
    }
    plugin->FreeItemList(&answer.items);
    EXPECT_TRUE(fs::is_empty(qortest::RESULT_DIR));
}

TEST_F(AllSlots, DamagedSmartReportsGiveADocumentedOutcome) {
    const CLoadedPlugin plugin;
    for (const char* name : {"smart/sata.txt", "smart/sas.txt"}) {
        const std::string report = qortest::Golden(name);
        for (size_t size = 0; size <= report.size(); size += 13) {
            ExpectDocumentedOutcome(plugin, report.substr(0, size));
        }
        std::mt19937 random(20261120);
        for (int round = 0; round < 100; ++round) {
            ExpectDocumentedOutcome(plugin, Damaged(report, random));
        }
    }
}

}  // namespace
