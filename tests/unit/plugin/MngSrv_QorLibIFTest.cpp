#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "RaidHost.h"
#include "StandInTool.h"
#include "TraceText.h"
#include "plugin/MngSrv_QorLibIF.h"

using namespace qortest;
namespace fs = std::filesystem;

namespace {

constexpr const char* OUTPUT = "/opt/tarmica/output.txt";

struct CLibIFDeleter {
    void operator()(CMngSrv_QorLibIF* object) const { DeleteLibIF(object); }
};

class MngSrv_QorLibIF : public CPrivateServerFixture {
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

    // A host whose tool has one controller to report.
    static void PlayHost(CStandInTool& tool) {
        PutRaidCard();
        tool.Play("-v", {.out = VersionReport("4.3")});
        tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
        PlayController(tool, 0);
    }

    CItems m_Items;
    std::string m_ErrorCode = "error before";
    std::string m_NoticeCode = "notice before";
    std::string m_ErrorDetail = "detail before";

    std::string Texts() const {
        return "'" + m_ErrorCode + "' '" + m_NoticeCode + "' '" + m_ErrorDetail + "'";
    }

private:
    std::unique_ptr<CMngSrv_QorLibIF, CLibIFDeleter> m_Object{
        static_cast<CMngSrv_QorLibIF*>(CreateLibIF())};
};

constexpr const char* UNTOUCHED = "'error before' 'notice before' 'detail before'";

TEST_F(MngSrv_QorLibIF, DeleteOfNullIsHarmless) {
    DeleteLibIF(nullptr);
}

TEST_F(MngSrv_QorLibIF, EveryObjectIsItsOwn) {
    void* const other = CreateLibIF();
    EXPECT_NE(other, nullptr);
    EXPECT_NE(other, &Object());
    DeleteLibIF(other);
}

// --- GetRAIDInfo ---

TEST_F(MngSrv_QorLibIF, NullArgumentsAreRefusedAndNothingIsTouched) {
    PutRaidCard();
    const CStandInTool toolThatIsNotAsked;
    CMngSrv_QorLibIF& object = Object();
    AddItem(m_Items, "", "before", "");
    EXPECT_EQ(object.GetRAIDInfo(nullptr, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(object.GetRAIDInfo(&m_Items, nullptr, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(object.GetRAIDInfo(&m_Items, &m_ErrorCode, nullptr, &m_ErrorDetail), 0);
    EXPECT_EQ(object.GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, nullptr), 0);
    EXPECT_EQ(object.GetRAIDInfo(nullptr, &m_ErrorCode, &m_NoticeCode), 0);
    EXPECT_EQ(object.GetRAIDInfo(&m_Items, nullptr, &m_NoticeCode), 0);
    EXPECT_EQ(object.GetRAIDInfo(&m_Items, &m_ErrorCode, nullptr), 0);
    EXPECT_EQ(object.GetRAIDInfo(nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(Texts(), UNTOUCHED);
    EXPECT_EQ(m_Items.Text(), " | before |  | TRUE\n");
    EXPECT_EQ(TraceTextWithoutFlow(), "");
}

constexpr const char* ORCHESTRATOR_THAT_IS_NOT_ASKED =
    "4: CMSRAID_InterFace::CMSRAID_InterFace [START]\n"
    "4: CMSRAID_InterFace::CMSRAID_InterFace [END]\n"
    "4: CMSRAID_InterFace::~CMSRAID_InterFace [START]\n"
    "4: CMSRAID_InterFace::~CMSRAID_InterFace [END]\n";

TEST_F(MngSrv_QorLibIF, RefusedRequestHasItsOrchestratorAllTheSame) {
    EXPECT_EQ(Object().GetRAIDInfo(nullptr, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(TraceText(), ORCHESTRATOR_THAT_IS_NOT_ASKED);
}

TEST_F(MngSrv_QorLibIF, InformationComesWithItsTexts) {
    CStandInTool tool;
    PlayHost(tool);
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 1);
    EXPECT_EQ(Texts(), "'' '01' 'none'");
    EXPECT_EQ(m_Items.size(), 17U);
    EXPECT_EQ(m_Items.front()->ItemName(), "Controller Information");
    EXPECT_EQ(m_Items.back()->ItemName(), "Temperature");
}

TEST_F(MngSrv_QorLibIF, ShortFormGivesTheSameWithoutTheDetail) {
    CItems longForm;
    std::string errorCode;
    std::string noticeCode;
    std::string errorDetail;
    {
        CStandInTool tool;
        PlayHost(tool);
        EXPECT_EQ(Object().GetRAIDInfo(&longForm, &errorCode, &noticeCode, &errorDetail), 1);
    }
    fs::remove_all(TOOL_DIR);
    CStandInTool tool;
    PlayHost(tool);
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode), 1);
    EXPECT_EQ(m_Items.Text(), longForm.Text());
    EXPECT_EQ(m_ErrorCode, errorCode);
    EXPECT_EQ(m_NoticeCode, noticeCode);
}

TEST_F(MngSrv_QorLibIF, ShortFormFailsAsTheLongForm) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("4.3")});
    tool.Play("-ctrlinfo -aAll", {.out = "Error - broken\n"});
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode), 0);
    EXPECT_EQ(m_ErrorCode, "01");
    EXPECT_EQ(m_NoticeCode, "01");
    EXPECT_TRUE(m_Items.empty());
}

class CLongFormOnly : public CMngSrv_QorLibIF {
public:
    using CMngSrv_QorLibIF::GetRAIDInfo;
    unsigned char GetRAIDInfo(std::list<CItemDisp*>*, std::string* errorCode,
                              std::string* noticeCode, std::string* errorDetail) override {
        *errorCode = "code";
        *noticeCode = "notice";
        EXPECT_EQ(*errorDetail, "");
        return 7;
    }
};

TEST_F(MngSrv_QorLibIF, ShortFormCallsTheLongFormThroughTheTable) {
    CLongFormOnly object;
    EXPECT_EQ(object.GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode), 7);
    EXPECT_EQ(Texts(), "'code' 'notice' 'detail before'");
}

TEST_F(MngSrv_QorLibIF, FailureNamesTheCommand) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("7.2")});
    tool.Play("-ctrlinfo -aAll", {.out = "Error - broken\n"});
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(Texts(), "'01' '' 'krzcli -ctrlinfo -aAll'");
    EXPECT_TRUE(m_Items.empty());
}

TEST_F(MngSrv_QorLibIF, EmptyDetailReplacesNone) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("7.2")});
    tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
    tool.Play("-ctrlinfo -a0", {.out = "### Title before any header ###\n"});
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    EXPECT_EQ(Texts(), "'04' '' ''");
}

TEST_F(MngSrv_QorLibIF, NoticeIsPutInFrontOfTheErrorWhereBothHaveOneText) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("4.3")});
    tool.Play("-ctrlinfo -aAll", {.out = ControllerList(1)});
    tool.Play("-ctrlinfo -a0", {.out = "### Title before any header ###\n"});
    std::string both;
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &both, &both, &m_ErrorDetail), 0);
    EXPECT_EQ(both, "0104");
}

TEST_F(MngSrv_QorLibIF, HostWithoutACardAnswersNone) {
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 1);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_TRUE(m_Items.empty());
}

TEST_F(MngSrv_QorLibIF, MissingToolWithoutDisksAnswersBothCodes) {
    PutRaidCard();
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 1);
    EXPECT_EQ(Texts(), "'02' '02' 'none'");
}

TEST_F(MngSrv_QorLibIF, ExceptionPassesThroughAndLeavesNothing) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = "Product Version :\n"});
    AddItem(m_Items, "", "before", "");
    EXPECT_THROW(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail),
                 std::out_of_range);
    EXPECT_EQ(Texts(), "'' '' 'none'");
    EXPECT_TRUE(m_Items.empty());
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
}

TEST_F(MngSrv_QorLibIF, RequestsAreIndependentOfOneAnother) {
    PutRaidCard();
    CStandInTool tool;
    tool.Play("-v", {.out = VersionReport("7.2")});
    tool.Play("-ctrlinfo -aAll", {.out = "Error - broken\n"});
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 0);
    tool.Play("-v", {.out = VersionReport("7.2")});
    tool.Play("-ctrlinfo -aAll", {});
    EXPECT_EQ(Object().GetRAIDInfo(&m_Items, &m_ErrorCode, &m_NoticeCode, &m_ErrorDetail), 1);
    EXPECT_EQ(Texts(), "'' '' 'none'");
}

// --- FreeItemList ---

TEST_F(MngSrv_QorLibIF, FreeItemListEmptiesTheList) {
    AddItem(m_Items, "", "one", "");
    m_Items.push_back(nullptr);
    Object().FreeItemList(&m_Items);
    EXPECT_TRUE(m_Items.empty());
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_InterFace::CMSRAID_InterFace [START]\n"
              "4: CMSRAID_InterFace::CMSRAID_InterFace [END]\n"
              "4: CMSRAID_InterFace::FreeItemList [START]\n"
              "4: CMSRAID_InterFace::FreeItemList [END]\n"
              "4: CMSRAID_InterFace::~CMSRAID_InterFace [START]\n"
              "4: CMSRAID_InterFace::~CMSRAID_InterFace [END]\n");
}

TEST_F(MngSrv_QorLibIF, FreeItemListOfNullIsHarmless) {
    Object().FreeItemList(nullptr);
    EXPECT_EQ(TraceText(), ORCHESTRATOR_THAT_IS_NOT_ASKED);
}

TEST_F(MngSrv_QorLibIF, FreeItemListOfAnEmptyListIsTracedAsAny) {
    Object().FreeItemList(&m_Items);
    EXPECT_NE(TraceText().find("4: CMSRAID_InterFace::FreeItemList [START]\n"), std::string::npos);
}

// --- KRZExecCli ---

TEST_F(MngSrv_QorLibIF, CommandRunsWithItsOutputInTheFile) {
    CStandInTool tool;
    tool.Play("-x", {.out = "out\n", .err = "err\n"});
    unsigned long exitCode = 99;
    EXPECT_EQ(Object().KRZExecCli("krzcli -x", &exitCode, OUTPUT), 0U);
    EXPECT_EQ(exitCode, 0U);
    EXPECT_EQ(ReadFile(OUTPUT), "out\nerr\n");
}

TEST_F(MngSrv_QorLibIF, CommandResultIsPassedOn) {
    CStandInTool tool;
    for (int i = 0; i < 3; ++i) {
        tool.Play("-x", {.status = 3});
    }
    unsigned long exitCode = 99;
    EXPECT_EQ(Object().KRZExecCli("krzcli -x", &exitCode, OUTPUT), 1U);
    EXPECT_EQ(exitCode, 3U);
    for (int i = 0; i < 3; ++i) {
        tool.Play("-y", {.run = KILL_TOOL});
    }
    EXPECT_EQ(Object().KRZExecCli("krzcli -y", &exitCode, OUTPUT), 2U);
    EXPECT_EQ(exitCode, 255U);
}

TEST_F(MngSrv_QorLibIF, MissingToolIsPassedOn) {
    unsigned long exitCode = 99;
    EXPECT_EQ(Object().KRZExecCli("krzcli -x", &exitCode, OUTPUT), 3U);
    EXPECT_EQ(exitCode, 255U);
    EXPECT_FALSE(fs::exists(OUTPUT));
}

TEST_F(MngSrv_QorLibIF, NullExitCodeRunsNothing) {
    const CStandInTool toolThatIsNotAsked;
    EXPECT_EQ(Object().KRZExecCli("krzcli -x", nullptr, OUTPUT), 2U);
    EXPECT_FALSE(fs::exists(OUTPUT));
    EXPECT_EQ(TraceTextWithoutFlow(), "");
}

TEST_F(MngSrv_QorLibIF, CommandAndPathEndAtAnEmbeddedNul) {
    using namespace std::string_literals;
    CStandInTool tool;
    tool.Play("-x", {.out = "out\n"});
    unsigned long exitCode = 99;
    EXPECT_EQ(Object().KRZExecCli("krzcli -x\0 -y"s, &exitCode, OUTPUT + "\0.more"s), 0U);
    EXPECT_EQ(ReadFile(OUTPUT), "out\n");
    EXPECT_FALSE(fs::exists(OUTPUT + ".more"s));
}

TEST_F(MngSrv_QorLibIF, PathThatBeginsWithANulIsEmpty) {
    using namespace std::string_literals;
    const CStandInTool toolThatIsNotAsked;
    unsigned long exitCode = 99;
    EXPECT_EQ(Object().KRZExecCli("krzcli -x", &exitCode, "\0"s + OUTPUT), 2U);
    EXPECT_EQ(exitCode, 0U);
}

}  // namespace
