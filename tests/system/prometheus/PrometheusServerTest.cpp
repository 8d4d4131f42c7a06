// What the tests of the rules and the dashboard ask: a real Prometheus of their own.
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <ctime>

#include "PrometheusServer.h"
#include "SimFixture.h"

namespace qortest {
namespace {

using nlohmann::json;

constexpr const char* RULE = "groups: [{name: one, rules: [{record: answer, expr: vector(42)}]}]\n";

class PrometheusServerTest : public CSimFixture {
protected:
    void WriteConfiguration() const {
        const std::string rules = Folder() / "one.yml";
        WriteFile(rules, RULE);
        WriteFile(Folder() / "prometheus.yml",
                  "global: {evaluation_interval: 1s}\nrule_files: ['" + rules + "']\n");
    }
};

TEST_F(PrometheusServerTest, AnswersWhatItsRulesMade) {
    WriteConfiguration();
    CPrometheusServer prometheus(Folder());
    ASSERT_TRUE(prometheus.IsReady()) << prometheus.Output();
    ASSERT_TRUE(prometheus.HasEvaluatedRules()) << prometheus.Output();
    const auto now = static_cast<double>(std::time(nullptr)) + 1;
    const json result = prometheus.Query("answer + 0", now);
    ASSERT_EQ(result.size(), 1U) << result;
    EXPECT_EQ(result.at(0).at("value").at(1), "42");
    EXPECT_EQ(prometheus.QueryRange("answer", now - 60, now, 1).size(), 1U);
}

TEST_F(PrometheusServerTest, QueryThatIsWrongIsAFailure) {
    WriteConfiguration();
    CPrometheusServer prometheus(Folder());
    ASSERT_TRUE(prometheus.IsReady()) << prometheus.Output();
    EXPECT_NONFATAL_FAILURE(prometheus.Query("sum(", 1), "parse error");
}

TEST_F(PrometheusServerTest, ConfigurationThatIsWrongIsNeverReady) {
    WriteFile(Folder() / "prometheus.yml", "no: configuration\n");
    CPrometheusServer prometheus(Folder());
    EXPECT_FALSE(prometheus.IsReady());
    EXPECT_THAT(prometheus.Output(), testing::HasSubstr("field no not found"));
}

}  // namespace
}  // namespace qortest
