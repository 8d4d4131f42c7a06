#include <gmock/gmock.h>

#include <chrono>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "StandInTool.h"
#include "cli/CMSRAID_KRZ.h"
#include "plugin/ComLib.h"

namespace {

using namespace qortest;
using testing::ElementsAre;

class CToolTimeLimitTest : public CPrivateServerFixture {};

TEST_F(CToolTimeLimitTest, ToolThatRuns150SecondsIsKilled) {
    ResetFakeComLib();
    const std::string out = "/opt/tarmica/out.txt";
    CStandInTool tool;
    tool.Play("-x", {.run = "echo begun; exec sleep 600"});
    unsigned long cliRtn = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(CMSRAID_KRZ::ExecCli("krzcli -x", &cliRtn, out), KRZ_TIMEOUT);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::seconds(150));
    EXPECT_LT(elapsed, std::chrono::seconds(160));
    EXPECT_EQ(cliRtn, 255U);
    EXPECT_EQ(ReadFile(out), "begun\n");
    EXPECT_THAT(FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE),
                ElementsAre("krzcli command timeout.(krzcli -x)"));
}

}  // namespace
