// The machines of docs/install.md are those that scripts/everywhere tries, in a table of its
// making.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "Process.h"

namespace {

using Texts = std::vector<std::string>;

Texts MachinesOfTheScript() {
    const qortest::CEnd end = qortest::RunProgram({SOURCE_DIR "/scripts/everywhere", "--list"});
    EXPECT_EQ(end.status, 0) << end.err;
    Texts machines;
    std::istringstream lines(end.out);
    for (std::string line; std::getline(lines, line);) {
        machines.push_back(line);
    }
    EXPECT_TRUE(end.out.ends_with('\n'));
    return machines;
}

// The line of the script that has the titles of the columns.
std::string TitlesOfTheScript() {
    std::ifstream script(SOURCE_DIR "/scripts/everywhere");
    const std::regex definition("readonly COLUMNS_OF_TABLE='(.*)'");
    std::smatch match;
    for (std::string line; std::getline(script, line);) {
        if (std::regex_match(line, match, definition)) {
            return match[1];
        }
    }
    return "";
}

// The page's table with these titles: the machine of each line, once where several follow.
Texts MachinesOfThePage(const std::string& titles) {
    std::ifstream page(DOCS_DIR "/install.md");
    std::string line;
    while (std::getline(page, line) && line != titles) {
    }
    EXPECT_TRUE(std::getline(page, line)) << "no table with the titles " << titles;
    const std::regex row(R"(\| `(\w+)` \|.*\|)");
    Texts machines;
    for (std::smatch match; std::getline(page, line) && std::regex_match(line, match, row);) {
        if (machines.empty() || machines.back() != match[1]) {
            machines.push_back(match[1]);
        }
    }
    return machines;
}

TEST(MachinesTest, PageHasThoseThatTheScriptTries) {
    const Texts machines = MachinesOfTheScript();
    EXPECT_FALSE(machines.empty());
    EXPECT_EQ(MachinesOfThePage(TitlesOfTheScript()), machines);
}

}  // namespace
