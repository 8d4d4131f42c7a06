// The plug-in object's slots for drives, storage, the service processor and XML.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "StandInTool.h"
#include "plugin/MngSrv_QorLibIF.h"
#include "svp/CSvpPdInfoForm.h"
#include "svp/SvpNameTables.h"

#if defined(__SANITIZE_ADDRESS__)
#define QOR_TELLS_FREED_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QOR_TELLS_FREED_MEMORY 1
#endif
#endif
#ifdef QOR_TELLS_FREED_MEMORY
#include <sanitizer/asan_interface.h>
#endif

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* UNTOUCHED = "'error before' 'notice before' 'detail before'";
constexpr const char* EMPTY_FORM = "00000000000000001000000000000000";
constexpr const char* DRIVE =
    "PD3(LD0)\n### General Information ###\nInterface Type : SAS\nTemperature : 31C\n\n"
    "### SMART Information ###\nTemperature : 31C\n";

// A text that was handed out is gone. Only a sanitizer build can tell; reading the text to find out
// would be the very mistake that hosts must not make.
void ExpectFreed([[maybe_unused]] const char* text) {
#ifdef QOR_TELLS_FREED_MEMORY
    EXPECT_TRUE(__asan_address_is_poisoned(text));
#endif
}

struct CLibIFDeleter {
    void operator()(CMngSrv_QorLibIF* object) const { DeleteLibIF(object); }
};

class QorLibIFSlots : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }
    void TearDown() override {
        m_Object.reset();
        CPrivateServerFixture::TearDown();
    }

    CMngSrv_QorLibIF& Object() { return *m_Object; }
    void EndObject() { m_Object.reset(); }

    // A host whose tool has one controller to report.
    static void PlayHost(CStandInTool& tool, const std::string& version = "4.3") {
        PutRaidCard();
        tool.Play("-v", {.out = VersionReport(version)});
        tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
        PlayController(tool, 0);
    }
    // A host whose count of controllers fails; notice "01" comes with it.
    static void PlayBrokenHost(CStandInTool& tool) {
        PutRaidCard();
        tool.Play("-v", {.out = VersionReport("4.3")});
        tool.Play("-ctrlinfo -aAll", {.out = "Error - broken\n"});
    }
    static void PlayDrive(CStandInTool& tool, const std::string& report = DRIVE) {
        tool.Play("-ldpdinfo -a1", {});
        tool.Play("-pdinfo -pd[2:3] -a1", {.out = report});
    }
    static void PutSSD() { WriteFile(DEVICE_LIST, "03:00.0_1aed:2001_0000_00\n"); }

    std::string Texts() const {
        return "'" + m_ErrorCode + "' '" + m_NoticeCode + "' '" + m_ErrorDetail + "'";
    }

    CItems m_Items;
    std::string m_ErrorCode = "error before";
    std::string m_NoticeCode = "notice before";
    std::string m_ErrorDetail = "detail before";

private:
    std::unique_ptr<CMngSrv_QorLibIF, CLibIFDeleter> m_Object{
        static_cast<CMngSrv_QorLibIF*>(CreateLibIF())};
};

// --- null arguments ---

TEST_F(QorLibIFSlots, NullArgumentsAreRefusedAndNothingIsTouched) {
    PutRaidCard();
    const CStandInTool toolThatIsNotAsked;
    AddItem(m_Items, "", "before", "");
    CMngSrv_QorLibIF& o = Object();
    std::string* const e = &m_ErrorCode;
    std::string* const n = &m_NoticeCode;
    std::string* const d = &m_ErrorDetail;
    const std::vector<int> results = {
        o.GetPDInfo(1, 2, 3, nullptr, e, n, d),
        o.GetPDInfo(1, 2, 3, &m_Items, nullptr, n, d),
        o.GetPDInfo(1, 2, 3, &m_Items, e, nullptr, d),
        o.GetPDInfo(1, 2, 3, &m_Items, e, n, nullptr),
        o.GetPDInfo(1, 2, 3, nullptr, e, n),
        o.GetPDInfo(1, 2, 3, &m_Items, nullptr, n),
        o.GetPDInfo(1, 2, 3, &m_Items, e, nullptr),
        o.GetStorageInfo(nullptr, e, n, d),
        o.GetStorageInfo(&m_Items, nullptr, n, d),
        o.GetStorageInfo(&m_Items, e, nullptr, d),
        o.GetStorageInfo(&m_Items, e, n, nullptr),
        o.GetCtrlPDInfoBinaryString(nullptr, e, n),
        o.GetCtrlPDInfoBinaryString(d, nullptr, n),
        o.GetCtrlPDInfoBinaryString(d, e, nullptr),
    };
    EXPECT_EQ(results, std::vector<int>(14, 0));
    EXPECT_EQ(Texts(), UNTOUCHED);
    EXPECT_EQ(m_Items.Text(), " | before |  | TRUE\n");
    EXPECT_TRUE(FakeComLib().TracesWithoutFlow().empty());
}

// --- slots 5 and 6: one drive ---

TEST_F(QorLibIFSlots, DriveComesWithItsTexts) {
    CStandInTool tool;
    PlayDrive(tool);
    EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail),
              1);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_EQ(m_Items.size(), 11U);
    EXPECT_EQ(m_Items.front()->ItemName(), "Physical Drive Information");
    EXPECT_EQ(m_Items.back()->ItemName(), "SMART Detail(SAS)");
}

TEST_F(QorLibIFSlots, ShortFormOfDriveGivesTheSameWithoutTheDetail) {
    for (const char* report : {DRIVE, "Error - broken\n", "PD3\n"}) {
        CItems longForm;
        CItems shortForm;
        std::string errorCode;
        std::string noticeCode;
        std::string detail;
        fs::remove_all(TOOL_DIR);
        CStandInTool tool;
        PlayDrive(tool, report);
        PlayDrive(tool, report);
        const int result = Object().GetPDInfo(1, 2, 3, &longForm, &errorCode, &noticeCode, &detail);
        EXPECT_EQ(result, report == DRIVE ? 1 : 0);
        EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &shortForm, &m_ErrorCode, &m_NoticeCode), result);
        EXPECT_EQ(shortForm.Text(), longForm.Text());
        EXPECT_EQ(Texts(), "'" + errorCode + "' '" + noticeCode + "' 'detail before'");
    }
}

TEST_F(QorLibIFSlots, DriveNumbersArePassedOnAsTheyAre) {
    CStandInTool tool;
    tool.Play("-ldpdinfo -a-9223372036854775808", {});
    tool.Play("-pdinfo -pd[-1:1] -a-9223372036854775808", {});
    EXPECT_EQ(Object().GetPDInfo(-9223372036854775807 - 1, -1, 4294967297, &m_Items, &m_ErrorCode,
                                 &m_NoticeCode),
              1);
}

TEST_F(QorLibIFSlots, DriveFailureNamesTheCommand) {
    CStandInTool tool;
    PlayDrive(tool, "Error - broken\n");
    EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail),
              0);
    EXPECT_EQ(Texts(), "'01' '' 'krzcli -pdinfo -pd[2:3] -a1'");
    EXPECT_TRUE(m_Items.empty());
}

TEST_F(QorLibIFSlots, DriveFailureWithoutADetailReplacesNone) {
    CStandInTool tool;
    PlayDrive(tool, "PD3\n");
    EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail),
              0);
    EXPECT_EQ(Texts(), "'04' '' ''");
}

TEST_F(QorLibIFSlots, DriveWithoutTheToolIsFailure02) {
    EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail),
              0);
    EXPECT_EQ(Texts(), "'02' '' 'none'");
}

TEST_F(QorLibIFSlots, ExceptionPassesThroughAndLeavesNothing) {
    CStandInTool tool;
    PlayDrive(tool, GoldenBad("smart/sas_row_too_short.txt"));
    AddItem(m_Items, "", "before", "");
    EXPECT_THROW(Object().GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail),
                 std::out_of_range);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_TRUE(m_Items.empty());
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
}

// --- slot 8: storage ---

TEST_F(QorLibIFSlots, StorageComesWithItsTexts) {
    PutSSD();
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("7.0")});
    tool.Play("-pssdinfo -aAll", {.out = "Bus : 3\n"});
    EXPECT_EQ(Object().GetStorageInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 1);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_EQ(m_Items.Text(), " | PCIe SSD Information |  | TRUE\n");
}

TEST_F(QorLibIFSlots, StorageFailureNamesTheCommandAndKeepsTheNotice) {
    CStandInTool tool;
    PlayBrokenHost(tool);
    EXPECT_EQ(Object().GetStorageInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(Texts(), "'01' '01' 'krzcli -ctrlinfo -aAll'");
    EXPECT_TRUE(m_Items.empty());
}

TEST_F(QorLibIFSlots, StorageWithoutTheToolIsFailure02) {
    PutSSD();
    EXPECT_EQ(Object().GetStorageInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(Texts(), "'02' '' 'none'");
}

// --- short forms through the object's table ---

class CObjectDouble : public CMngSrv_QorLibIF {
public:
    using CMngSrv_QorLibIF::GetPDInfo;
    using CMngSrv_QorLibIF::GetRAIDInfo;

    unsigned char GetPDInfo(long ctrlNo, long enclosure, long slot, std::list<CItemDisp*>*,
                            std::string* errorCode, std::string* noticeCode,
                            std::string* errorDetail) override {
        *errorCode = std::to_string(ctrlNo) + std::to_string(enclosure) + std::to_string(slot);
        *noticeCode = "n";
        EXPECT_EQ(*errorDetail, "");
        return 7;
    }
    unsigned char GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                              std::string* noticeCode) override {
        EXPECT_EQ(*errorCode + *noticeCode, "");
        EXPECT_TRUE(items->empty());
        AddItem(*items, "", "Controller Information", "");
        AddItem(*items, "### General Information ###", "Product Name", "Card");
        *errorCode = "e";
        *noticeCode = "n";
        return static_cast<unsigned char>(raidResult);
    }
    void FreeItemList(std::list<CItemDisp*>* items) override {
        freed += ItemText(*items);
        CMngSrv_QorLibIF::FreeItemList(items);
    }

    int raidResult = 1;
    std::string freed;
};

TEST_F(QorLibIFSlots, ShortFormOfDriveCallsTheLongFormThroughTheTable) {
    CObjectDouble object;
    EXPECT_EQ(object.GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode), 7);
    EXPECT_EQ(Texts(), "'123' 'n' 'detail before'");
}

// --- slot 7: the service processor's form ---

TEST_F(QorLibIFSlots, FormIsThatOfTheRAIDInformation) {
    CStandInTool tool;
    PlayHost(tool);
    PlayHost(tool);
    ASSERT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode), 1);
    CSvpPdInfoForm form;
    Object().ChangeToSvpPdInfoForm(&form, &m_Items);
    form.SetDataSize();
    std::string expected;
    form.DumpMe(&expected);

    std::string binary = "before";
    m_ErrorCode = m_NoticeCode = "before";
    EXPECT_EQ(Object().GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 1);
    EXPECT_EQ(binary, expected);
    EXPECT_EQ(Texts(), "'' '01' 'detail before'");
    ASSERT_GT(binary.size(), 2U * 16U);
    EXPECT_EQ(std::stoul(binary.substr(16, 2), nullptr, 16), binary.size() / 2);
    EXPECT_EQ(binary.substr(18, 14), "00000001010000") << "one controller, one drive";
}

TEST_F(QorLibIFSlots, HostWithoutACardGivesTheEmptyForm) {
    std::string binary = "before";
    EXPECT_EQ(Object().GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 1);
    EXPECT_EQ(binary, EMPTY_FORM);
    EXPECT_EQ(Texts(), "'' '' 'detail before'");
}

TEST_F(QorLibIFSlots, FailureGivesTheEmptyFormAndItsCodes) {
    CStandInTool tool;
    PlayBrokenHost(tool);
    std::string binary = "before";
    EXPECT_EQ(Object().GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 0);
    EXPECT_EQ(binary, EMPTY_FORM);
    EXPECT_EQ(Texts(), "'01' '01' 'detail before'");
}

TEST_F(QorLibIFSlots, FormTakesItsListThroughTheTableAndFreesItThere) {
    CObjectDouble object;
    std::string binary = "before";
    EXPECT_EQ(object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 1);
    EXPECT_NE(binary, EMPTY_FORM);
    EXPECT_EQ(Texts(), "'e' 'n' 'detail before'");
    EXPECT_EQ(object.freed,
              " | Controller Information |  | TRUE\n"
              "### General Information ### | Product Name | Card | TRUE\n");
}

TEST_F(QorLibIFSlots, FailedFormFreesItsItemsWithoutTheTable) {
    CObjectDouble object;
    object.raidResult = 0;
    std::string binary = "before";
    EXPECT_EQ(object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 0);
    EXPECT_EQ(binary, EMPTY_FORM);
    EXPECT_EQ(object.freed, "") << "a sanitizer build tells that nothing leaks all the same";
}

TEST_F(QorLibIFSlots, EveryResultButZeroIsASuccessOfTheForm) {
    for (const int result : {2, 255}) {
        CObjectDouble object;
        object.raidResult = result;
        std::string binary;
        EXPECT_EQ(object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 1);
        EXPECT_NE(binary, EMPTY_FORM) << result;
        EXPECT_NE(object.freed, "") << result;
    }
}

TEST_F(QorLibIFSlots, FormIsTracedBeforeItsItemsAreFreed) {
    std::string binary;
    EXPECT_EQ(Object().GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 1);
    const std::vector<CTraceLine>& traces = FakeComLib().traces;
    const std::vector<CTraceLine> end(traces.end() - 7, traces.end());
    EXPECT_EQ(end, (std::vector<CTraceLine>{{4, "CSvpPdInfoForm::OutPutMemberToDebugLog[END]"},
                                            {4, "CMSRAID_InterFace::CMSRAID_InterFace [START]"},
                                            {4, "CMSRAID_InterFace::CMSRAID_InterFace [END]"},
                                            {4, "CMSRAID_InterFace::FreeItemList [START]"},
                                            {4, "CMSRAID_InterFace::FreeItemList [END]"},
                                            {4, "CMSRAID_InterFace::~CMSRAID_InterFace [START]"},
                                            {4, "CMSRAID_InterFace::~CMSRAID_InterFace [END]"}}));
}

TEST_F(QorLibIFSlots, FormIsTracedOnEveryWayOut) {
    for (const int result : {0, 1}) {
        ResetFakeComLib();
        CObjectDouble object;
        object.raidResult = result;
        std::string binary;
        object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode);
        const std::vector<std::string> lines = FakeComLib().Traces(1);
        const auto sized = [](const std::string& line) {
            return line.find("m_TotalDataSize") != std::string::npos;
        };
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(), sized), 1);
    }
}

TEST_F(QorLibIFSlots, ExceptionLeavesTheFormsTextsEmpty) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version :\n"});
    std::string binary = "before";
    EXPECT_THROW(Object().GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode),
                 std::out_of_range);
    EXPECT_EQ(binary, "");
    EXPECT_EQ(Texts(), "'' '' 'detail before'");
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
}

TEST_F(QorLibIFSlots, TextsOfAnOverrideThatThrowsStay) {
    class CThrowing : public CMngSrv_QorLibIF {
    public:
        using CMngSrv_QorLibIF::GetRAIDInfo;
        unsigned char GetRAIDInfo(std::list<CItemDisp*>*, std::string* errorCode,
                                  std::string* noticeCode) override {
            *errorCode = "e";
            *noticeCode = "n";
            throw std::runtime_error("of the host");
        }
    } object;
    std::string binary = "before";
    EXPECT_THROW(object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode),
                 std::runtime_error);
    EXPECT_EQ(binary, "");
    EXPECT_EQ(Texts(), "'e' 'n' 'detail before'");
}

TEST_F(QorLibIFSlots, OverrideGetsTheCallersOwnTexts) {
    class CNoting : public CMngSrv_QorLibIF {
    public:
        using CMngSrv_QorLibIF::GetRAIDInfo;
        unsigned char GetRAIDInfo(std::list<CItemDisp*>*, std::string* errorCode,
                                  std::string* noticeCode) override {
            texts = {errorCode, noticeCode};
            return 1;
        }
        std::pair<std::string*, std::string*> texts;
    } object;
    std::string binary;
    EXPECT_EQ(object.GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode), 1);
    EXPECT_EQ(object.texts, std::make_pair(&m_ErrorCode, &m_NoticeCode));
}

// --- one text in two places ---

TEST_F(QorLibIFSlots, CodesArePutInFrontOfWhatTheTextHolds) {
    std::string both = "before";
    std::string detail;
    EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &m_Items, &both, &both, &detail), 0);
    EXPECT_EQ(both, "02");
    both = "before";
    EXPECT_EQ(Object().GetPDInfo(1, 2, 3, &m_Items, &both, &both), 0);
    EXPECT_EQ(both, "02");
    PutRaidCard();
    both = "before";
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &both, &both, &detail), 1);
    EXPECT_EQ(both, "0202") << "neither tool nor disk";
    EXPECT_EQ(Object().GetStorageInfo(&m_Items, &both, &both, &both), 1);
    EXPECT_EQ(both, "none") << "the detail is assigned last";
}

TEST_F(QorLibIFSlots, FormIsAppendedToWhatTheTextHolds) {
    std::string both = "before";
    EXPECT_EQ(Object().GetCtrlPDInfoBinaryString(&both, &both, &m_NoticeCode), 1);
    EXPECT_EQ(both, EMPTY_FORM);
    PutRaidCard();
    EXPECT_EQ(Object().GetCtrlPDInfoBinaryString(&both, &both, &m_NoticeCode), 1);
    EXPECT_EQ(both, std::string("02") + EMPTY_FORM);
    EXPECT_EQ(m_NoticeCode, "02");
}

TEST_F(QorLibIFSlots, SearchKnowsTheTables) {
    EXPECT_TRUE(Object().SerchStringList("Product Name", tsCtrlGenList));
    EXPECT_FALSE(Object().SerchStringList("product name", tsCtrlGenList));
    EXPECT_FALSE(Object().SerchStringList("", tsCtrlGenList));
}

// --- slot 2: XML ---

constexpr const char* DOCUMENT =
    "<dispdata><component>C</component>"
    "<item><name>R</name><val/><enbl>TRUE</enbl><item/></item></dispdata>";

class QorLibIFXml : public QorLibIFSlots {
protected:
    void SetUp() override {
        QorLibIFSlots::SetUp();
        AddItem(m_Items, "", "R", "");
    }

    unsigned int Serialize(char** out, unsigned int type = 0) {
        return Object().XmlSerialize(type, "C", &m_Items, out);
    }
    // The text of a first call.
    char* First() {
        char* first = nullptr;
        EXPECT_EQ(Serialize(&first), 0U);
        EXPECT_STREQ(first, DOCUMENT);
        return first;
    }
};

TEST_F(QorLibIFXml, RequestIsHandedToTheSerializer) {
    First();
}

TEST_F(QorLibIFXml, ArgumentFailuresTouchNothingAndKeepTheTextBefore) {
    char* const first = First();
    char* none = nullptr;
    char* set = first;
    EXPECT_EQ(Object().XmlSerialize(0, nullptr, &m_Items, &none), 0x01000000U);
    EXPECT_EQ(Object().XmlSerialize(0, "C", nullptr, &none), 0x01000000U);
    EXPECT_EQ(Object().XmlSerialize(0, "C", &m_Items, &set), 0x01000000U);
    EXPECT_EQ(Object().XmlSerialize(1, "C", &m_Items, &set), 0x01000000U);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(set, first);
    EXPECT_STREQ(first, DOCUMENT);
}

TEST_F(QorLibIFXml, OtherRequestsKeepTheText) {
    char* const first = First();
    std::string binary;
    Object().GetPDInfo(1, 2, 3, &m_Items, &m_ErrorCode, &m_NoticeCode);
    Object().GetStorageInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail);
    Object().GetCtrlPDInfoBinaryString(&binary, &m_ErrorCode, &m_NoticeCode);
    Object().FreeItemList(&m_Items);
    EXPECT_STREQ(first, DOCUMENT) << "the text does not depend on the items it was made from";
}

TEST_F(QorLibIFXml, EveryObjectHasATextOfItsOwn) {
    char* const first = First();
    auto* const other = static_cast<CMngSrv_QorLibIF*>(CreateLibIF());
    char* second = nullptr;
    EXPECT_EQ(other->XmlSerialize(0, "D", &m_Items, &second), 0U);
    EXPECT_NE(std::strstr(second, "<component>D</component>"), nullptr);
    DeleteLibIF(other);
    ExpectFreed(second);
    EXPECT_STREQ(first, DOCUMENT);
}

TEST_F(QorLibIFXml, SecondTextReplacesTheFirst) {
    char* const first = First();
    char* second = nullptr;
    AddItem(m_Items, "R", "A", "1");
    EXPECT_EQ(Serialize(&second), 0U);
    EXPECT_NE(std::strstr(second, "<name>A</name>"), nullptr);
    if (second != first) {
        ExpectFreed(first);
    }
}

TEST_F(QorLibIFXml, SecondCallThatFailsEndsTheFirstText) {
    char* out = nullptr;
    char* first = First();
    EXPECT_EQ(Serialize(&out, 1), 0x02000000U);
    ExpectFreed(first);
    first = First();
    AddItem(m_Items, "other", "A", "");
    EXPECT_EQ(Serialize(&out) & 0xFF000000U, 0x03000000U);
    ExpectFreed(first);
    Object().FreeItemList(&m_Items);
    EXPECT_EQ(Serialize(&out), 0x01000000U) << "an empty list is an invalid argument too";
    EXPECT_EQ(out, nullptr);
}

TEST_F(QorLibIFXml, TextEndsWithItsObject) {
    char* const first = First();
    EndObject();
    ExpectFreed(first);
}

}  // namespace
