// What docs/fleet.md counts with is what qorctl metrics gives.
#include <gmock/gmock.h>

#include <algorithm>
#include <regex>

#include "FleetFixture.h"

namespace qortest {
namespace {

constexpr int HOSTS = 20;

class PageTest : public CFleetFixture {
protected:
    // The series of a generated server of 24 drives.
    long SeriesOf(int seed) const {
        const std::string host = Folder() / "new.json";
        EXPECT_EQ(Qorsim({"new", "--controllers", "1", "--drives", "24", "--seed",
                          std::to_string(seed), "--output", host})
                      .status,
                  0);
        Collect("new", {"--host", host});
        const CStrings lines = Lines(ReadFile(TextFolder("new") / "qor.prom"));
        return std::count_if(lines.begin(), lines.end(),
                             [](const std::string& line) { return !line.starts_with("#"); });
    }
};

TEST_F(PageTest, ServerOf24DrivesHasTheSeriesThatThePageCountsWith) {
    const std::string page = ReadFile(FLEET_PAGE);
    std::smatch match;
    ASSERT_TRUE(std::regex_search(
        page, match, std::regex("has ([0-9]+) to ([0-9]+) series, ([0-9]+) on average")));
    const long least = std::stol(match[1]);
    const long most = std::stol(match[2]);
    const long average = std::stol(match[3]);
    long sum = 0;
    for (int seed = 1; seed <= HOSTS; ++seed) {
        const long series = SeriesOf(seed);
        EXPECT_GE(series, least) << seed;
        EXPECT_LE(series, most) << seed;
        sum += series;
    }
    EXPECT_NEAR(static_cast<double>(sum) / HOSTS, static_cast<double>(average), 20);
}

// Series = servers times series of a server, within what the servers differ by.
TEST_F(PageTest, RowsOfTheTableFitTogether) {
    const std::string page = ReadFile(FLEET_PAGE);
    const std::regex row("\n\\| ([0-9,]+) \\| ([0-9,]+) \\| ([0-9]+) \\|");
    const auto number = [](const std::string& text) {
        return std::stod(std::regex_replace(text, std::regex(","), ""));
    };
    int rows = 0;
    for (auto one = std::sregex_iterator(page.begin(), page.end(), row);
         one != std::sregex_iterator(); ++one) {
        const double expected = number((*one)[1]) * number((*one)[3]);
        EXPECT_NEAR(number((*one)[2]) / expected, 1, 0.05) << one->str();
        ++rows;
    }
    EXPECT_EQ(rows, 3);
}

TEST_F(PageTest, PrometheusTakesTheConfigurationsOfThePage) {
    const std::string page = ReadFile(FLEET_PAGE);
    const std::regex block("\n```yaml\n([^`]+)```\n");
    int blocks = 0;
    for (auto one = std::sregex_iterator(page.begin(), page.end(), block);
         one != std::sregex_iterator(); ++one) {
        WriteFile(Folder() / "prometheus.yml", (*one)[1]);
        const CEnd end =
            RunProgram({"/usr/bin/promtool", "check", "config", Folder() / "prometheus.yml"});
        EXPECT_EQ(end.status, 0) << end.out << end.err;
        ++blocks;
    }
    EXPECT_EQ(blocks, 2);
}

}  // namespace
}  // namespace qortest
