// The shipped file for NRPE, with the real one at both ends of a connection on this machine.
#include <gmock/gmock.h>

#include "MonitoringFixture.h"

namespace qortest {
namespace {

// What version 2 of the protocol has room for; one byte is the text's end.
constexpr size_t PACKET_VERSION_2 = 1024;

class CNrpeTest : public CMonitoringFixture {
protected:
    void SetUp() override {
        CMonitoringFixture::SetUp();
        ASSERT_NO_FATAL_FAILURE(DemandInstalled({NRPE, CHECK_NRPE, "/usr/bin/sudo"}));
    }
};

TEST_F(CNrpeTest, CheckArrivesWhole) {
    for (const char* host : {"small", "failed-drive", "large"}) {
        const int port = FreePort();
        const std::unique_ptr<CEngine> nrpe = StartNrpe(host, port);
        const CAnswer answer = AnswerOf(CheckNrpe(port, {"-c", "check_qor"}));
        nrpe->End();
        ExpectSame(answer, Expected(host, CHECK_COUNTS), host);
    }
}

TEST_F(CNrpeTest, AllPerformanceDataArriveFromVersion4) {
    const int port = FreePort();
    const std::unique_ptr<CEngine> nrpe = StartNrpe("large", port);
    const CAnswer answer = AnswerOf(CheckNrpe(port, {"-c", "check_qor_all"}));
    nrpe->End();
    ExpectSame(answer, Expected("large", CHECK_ALL), "large");
    EXPECT_GT(answer.performance.size(), 25000U);
}

// An old check_nrpe: what does not fit is cut, but only from the details.
TEST_F(CNrpeTest, OldVersionsPassTheFirstLineOnWhole) {
    const int port = FreePort();
    const std::unique_ptr<CEngine> nrpe = StartNrpe("large", port);
    const CEnd ends[] = {CheckNrpe(port, {"-2", "-c", "check_qor"}),
                         CheckNrpe(port, {"-3", "-c", "check_qor"})};
    nrpe->End();
    const CAnswer expected = Expected("large", CHECK_COUNTS);
    for (const CEnd& end : ends) {
        const CAnswer answer = AnswerOf(end);
        EXPECT_EQ(end.out.size(), PACKET_VERSION_2);
        EXPECT_EQ(answer.status, expected.status);
        EXPECT_EQ(answer.summary, expected.summary);
        EXPECT_EQ(answer.performance, expected.performance);
        EXPECT_TRUE(expected.details.starts_with(answer.details)) << answer.details;
    }
}

}  // namespace
}  // namespace qortest
