#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Quoted.h"

namespace {

using qorapps::NearestName;
using qorapps::Quoted;
using qorapps::Shown;

const std::vector<std::string> NAMES = {"raid", "storage", "drive", "svp", "--format", "--fault"};

TEST(QuotedTest, NearestNameIsThatWithTheFewestMistakes) {
    const std::pair<const char*, const char*> rows[] = {
        {"storge", "storage"},
        {"stroage", "storage"},
        {"sto", "storage"},
        {"RAID", "raid"},
        {"dirve", "drive"},
        {"svg", "svp"},
        {"raids", "raid"},
        {"-format", "--format"},
        {"--fromat", "--format"},
        {"form", "--format"},
        {"--faul", "--fault"},
        {"", ""},
        {"-", ""},
        {"x", ""},
        {"st", ""},
        {"elephant", ""},
        {"foo", ""},
    };
    for (const auto& [word, name] : rows) {
        EXPECT_EQ(NearestName(word, NAMES), name) << word;
    }
    EXPECT_EQ(NearestName(std::string(1'000'000, 'r'), NAMES), "");
}

TEST(QuotedTest, LongWordsAreCutBetweenCharacters) {
    EXPECT_EQ(Quoted("word"), "\"word\"");
    EXPECT_EQ(Quoted(""), "\"\"");
    EXPECT_EQ(Quoted("a\nb"), "\"a\\nb\"");
    EXPECT_EQ(Quoted(std::string(60, 'x')), '"' + std::string(60, 'x') + '"');
    EXPECT_EQ(Quoted(std::string(61, 'x')), '"' + std::string(60, 'x') + "...\"");
    EXPECT_EQ(Quoted(std::string(59, 'x') + "\u00fcx"), '"' + std::string(59, 'x') + "...\"");
    EXPECT_EQ(Quoted(std::string(100, '\x80')), '"' + std::string(60, '\x80') + "...\"");
}

TEST(QuotedTest, ShortWordsCanStandBare) {
    EXPECT_EQ(Shown("128"), "128");
    EXPECT_EQ(Shown(""), "\"\"");
    EXPECT_EQ(Shown("1 2"), "\"1 2\"");
    EXPECT_EQ(Shown(std::string(25, '1')), '"' + std::string(25, '1') + '"');
}

}  // namespace
