#include <gmock/gmock.h>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "RunnerDouble.h"
#include "cli/CMSRAID_KRZ.h"
#include "cli/ExecForeignModule.h"
#include "getters/CMSRAID_InfoGetter.h"
#include "plugin/ComLib.h"

namespace {

using namespace qortest;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string OUT = "/opt/tarmica/run/out.txt";
const std::string RUN_COMMAND = "/opt/tarmica/krz/cli/krzcli -x";
const std::string INVALID = "Error - Invalid input at or near token -x\n";

// A getter that takes every line.
class CAnyGetter : public CMSRAID_InfoGetter {
public:
    CAnyGetter() { m_CommandFormat = "krzcli -x -a%s"; }
    bool CreateRAIDItem(std::ifstream&, std::string) override { return true; }
};

class CToolTimeoutTest : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        RunnerDouble() = CRunnerDouble();
        WriteFile("/opt/tarmica/krz/cli/krzcli", "");
    }
    void TearDown() override {
        EXPECT_THAT(RunnerDouble().runs.size(), 0U) << "runs that never came";
        CPrivateServerFixture::TearDown();
    }
    unsigned int Exec() { return CMSRAID_KRZ::ExecCli("krzcli -x", &m_CliRtn, OUT); }
    static std::vector<std::string> Failures() {
        return FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE);
    }

    unsigned long m_CliRtn = 4711;
};

TEST_F(CToolTimeoutTest, TimeOutIsNotTriedAgain) {
    RunnerDouble().runs = {{EXEC_TIMEOUT, 255, "half a rep"}};
    EXPECT_EQ(Exec(), KRZ_TIMEOUT);
    EXPECT_EQ(m_CliRtn, 255U);
    EXPECT_THAT(RunnerDouble().commands, ElementsAre(RUN_COMMAND));
    EXPECT_THAT(Failures(), ElementsAre("krzcli command timeout.(krzcli -x)"));
    EXPECT_THAT(FakeComLib().sleeps, IsEmpty());
}

TEST_F(CToolTimeoutTest, TimeOutOfALaterAttemptEndsTheAttempts) {
    RunnerDouble().runs = {{EXEC_OK, 3, ""}, {EXEC_TIMEOUT, 255, ""}};
    EXPECT_EQ(Exec(), KRZ_TIMEOUT);
    EXPECT_EQ(m_CliRtn, 255U);
    EXPECT_THAT(FakeComLib().sleeps, ElementsAre(1000U));
}

TEST_F(CToolTimeoutTest, RejectionComesBeforeTheTimeOut) {
    RunnerDouble().runs = {{EXEC_TIMEOUT, 255, INVALID}};
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute krzcli command.(krzcli -x)"));
}

TEST_F(CToolTimeoutTest, OtherErrorLineDoesNotHideTheTimeOut) {
    RunnerDouble().runs = {{EXEC_TIMEOUT, 255, "Error - busy\n"}};
    EXPECT_EQ(Exec(), KRZ_TIMEOUT);
}

TEST_F(CToolTimeoutTest, RunnerThatKeepsFailingIsToldApart) {
    RunnerDouble().runs = {{EXEC_FAILED, 255, ""}, {EXEC_FAILED, 255, ""}, {EXEC_FAILED, 255, ""}};
    EXPECT_EQ(Exec(), KRZ_RUN_FAILED);
    EXPECT_EQ(m_CliRtn, 255U);
    EXPECT_THAT(FakeComLib().sleeps, ElementsAre(1000U, 1000U));
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute krzcli command.(krzcli -x,cliRtn=255)"));
}

TEST_F(CToolTimeoutTest, LastAttemptDecidesTheCode) {
    RunnerDouble().runs = {{EXEC_FAILED, 255, ""}, {EXEC_FAILED, 255, ""}, {EXEC_OK, 3, ""}};
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 3U);
}

TEST_F(CToolTimeoutTest, VersionAfterATimeOutIsEmpty) {
    RunnerDouble().runs = {{EXEC_TIMEOUT, 255, "Product Version : 4.5\n"}};
    EXPECT_EQ(CMSRAID_KRZ::GetKRZVersion(OUT), "");
    EXPECT_FALSE(std::filesystem::exists(OUT));
}

TEST_F(CToolTimeoutTest, GetterTellsATimeOut) {
    RunnerDouble().runs = {{EXEC_TIMEOUT, 255, "half a rep"}};
    CAnyGetter getter;
    std::list<CItemDisp*> items;
    EXPECT_FALSE(getter.GetInfo(7, items));
    EXPECT_EQ(getter.ErrCode(), "05");
    EXPECT_EQ(getter.ErrDetail(), "krzcli -x -a7");
    EXPECT_THAT(items, IsEmpty());
    EXPECT_THAT(Failures(), ElementsAre("krzcli command timeout.(krzcli -x -a7)",
                                        "Failed to execute krzcli command ret=00000004."));
}

}  // namespace
