// The tests that pages name as their evidence exist.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string TextOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// "Suite.Name" for each match of a pattern with these two groups.
std::set<std::string> Names(const std::string& text, const std::regex& pattern) {
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end;
         ++match) {
        names.insert((*match)[1].str() + '.' + (*match)[2].str());
    }
    return names;
}

std::set<std::string> TestsOfTheTree() {
    const std::regex definition(R"(\nTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\))");
    std::set<std::string> tests;
    for (const auto& entry : fs::recursive_directory_iterator(TESTS_DIR)) {
        if (entry.path().extension() == ".cpp") {
            tests.merge(Names(TextOf(entry.path()), definition));
        }
    }
    return tests;
}

void ExpectTestsNamedIn(const std::string& page, size_t least) {
    const std::set<std::string> tests = TestsOfTheTree();
    const std::set<std::string> named =
        Names(TextOf(fs::path(DOCS_DIR) / page), std::regex(R"(`([A-Z]\w+)\.([A-Z]\w+)`)"));
    EXPECT_GT(named.size(), least);
    for (const std::string& name : named) {
        EXPECT_EQ(tests.count(name), 1U) << "no test is called " << name;
    }
}

TEST(NamedTests, EvidenceOfTheSecurityPageExists) {
    ExpectTestsNamedIn("security.md", 30);
}

TEST(NamedTests, EvidenceOfTheReliabilityPageExists) {
    ExpectTestsNamedIn("reliability.md", 10);
}

}  // namespace
