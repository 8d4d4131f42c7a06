#include <gtest/gtest.h>

#include "health/PerformanceData.h"

namespace {

using qorctl::CPerformanceValue;

std::string Formatted(const std::vector<CPerformanceValue>& values) {
    return qorctl::FormatPerformanceData(values).text;
}

TEST(PerformanceDataTest, ValuesAreSeparatedByBlanks) {
    EXPECT_EQ(Formatted({}), "");
    EXPECT_EQ(Formatted({{"drives", 9, "", "", ""},
                         {"c0_PD3_media_errors", 2, "c", "", ""},
                         {"ssd177_wear", 12, "%", "80", "100"},
                         {"c0_PD3_temperature", -5, "", "50", "60"}}),
              "drives=9;; c0_PD3_media_errors=2c;; ssd177_wear=12%;80;100 "
              "c0_PD3_temperature=-5;50;60");
}

TEST(PerformanceDataTest, ValuesThatThereIsNoRoomForAreCounted) {
    const std::vector<CPerformanceValue> values(100'000, {"a", 1, "", "", ""});
    const qorctl::CPerformanceText out = qorctl::FormatPerformanceData(values);
    EXPECT_LE(out.text.size(), qorctl::MAX_PERFORMANCE_TEXT);
    EXPECT_EQ(out.leftOut, values.size() - (out.text.size() + 1) / sizeof("a=1;;"));
    EXPECT_GT(out.leftOut, 0U);
    EXPECT_TRUE(out.text.ends_with(" a=1;;"));
}

TEST(PerformanceDataTest, LabelsAreQuotedWhereTheyHaveTo) {
    const struct {
        const char* label;
        const char* text;
    } rows[] = {{"plain_1", "plain_1"},
                {"two words", "'two words'"},
                {"o'clock", "'o''clock'"},
                {"a=b", "a_b"},
                {"a|b", "a_b"},
                {"", "''"},
                {"a\nb", "a\\nb"},
                {"\xff", "\\xff"}};
    for (const auto& row : rows) {
        EXPECT_EQ(Formatted({{row.label, 1, "", "", ""}}), std::string(row.text) + "=1;;");
    }
}

TEST(PerformanceDataTest, TextsStayOnTheirLineAndHoldNoPipe) {
    EXPECT_EQ(qorctl::MonitoringText("a|b\n\x1b[31m\xc3\xa9"), "a_b\\n\\x1b[31m\\xc3\\xa9");
}

}  // namespace
