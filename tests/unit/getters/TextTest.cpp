#include <gtest/gtest.h>

#include "getters/Text.h"

namespace {

using namespace std::string_literals;

TEST(Text, TrimmingKnowsTwoSetsOfCharacters) {
    struct {
        std::string text;
        std::string trimmed;
    } const rows[] = {
        {"", ""},
        {"a", "a"},
        {"  a", "a"},
        {"\ta", "a"},
        {" \t \ta b", "a b"},
        {"a ", "a"},
        {"a\t", "a"},
        {"a\r", "a"},
        {"a\n", "a"},
        {"a \t\r\n\r\n \t", "a"},
        {" \t a \t b \r\n", "a \t b"},
        // Line ends are removed from the end only.
        {"\r a", "\r a"},
        {"\na", "\na"},
        {" \ra", "\ra"},
        // Other white space is text.
        {"\v a\f", "\v a\f"},
        {"\xc2\xa0"s + "a\xc2\xa0", "\xc2\xa0"s + "a\xc2\xa0"},
        {"\0a\0"s, "\0a\0"s},
        // Nothing but white space.
        {" ", ""},
        {"\t", ""},
        {"\r", ""},
        {"\n", ""},
        {"\r\n", ""},
        {" \t\r\n", ""},
        {"\r \t\n", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Trimmed(row.text), row.trimmed) << row.text;
        EXPECT_EQ(TrimmedView(row.text), row.trimmed) << row.text;
    }
}

TEST(Text, KeyValueLineHasAColonBehindItsFirstCharacter) {
    for (const char* line : {"k:", "k:v", "k : v", " :", "k : v : w", "k::"}) {
        EXPECT_TRUE(IsKeyValueLine(line)) << line;
    }
    for (const char* line : {"", ":", ": v", ":v:w", "k", "### General Information ###"}) {
        EXPECT_FALSE(IsKeyValueLine(line)) << line;
    }
}

TEST(Text, ValueIsBehindTheFirstColon) {
    EXPECT_EQ(ValueOfLine("k : v : w\r"), "v : w");
    EXPECT_EQ(ValueOfLine("k:"), "");
    EXPECT_EQ(ValueOfLine("k: \t"), "");
}

TEST(Text, NumberedMeansADigitDirectlyBehindTheHead) {
    EXPECT_TRUE(BeginsWithNumbered("RG0", "RG"));
    EXPECT_TRUE(BeginsWithNumbered("RG9 (RAID 1)", "RG"));
    for (const char* text : {"", "R", "RG", "RG ", "RG/", "RG:", "RGx", "sRG0", " RG0", "rg0"}) {
        EXPECT_FALSE(BeginsWithNumbered(text, "RG")) << text;
    }
}

TEST(Text, ContainsLooksAnywhere) {
    EXPECT_TRUE(Contains("a>>PD0", ">>PD"));
    EXPECT_TRUE(Contains("a", ""));
    EXPECT_FALSE(Contains(">>P", ">>PD"));
}

TEST(Text, CommandTakesTheArgumentOnce) {
    EXPECT_EQ(FormatCommand("krzcli -ctrlinfo -a%s", "0"), "krzcli -ctrlinfo -a0");
    EXPECT_EQ(FormatCommand("krzcli -pssdinfo -aAll", "0"), "krzcli -pssdinfo -aAll");
    EXPECT_EQ(FormatCommand("a%s", "%s"), "a%s");
    EXPECT_EQ(FormatCommand("a%s b%s", "0"), "a0 b%s");
    EXPECT_EQ(FormatCommand("", "0"), "");
}

TEST(Text, CommandIsCutToTheBuffer) {
    EXPECT_EQ(FormatCommand(std::string(766, 'x') + "%s", "1"), std::string(766, 'x') + "1");
    EXPECT_EQ(FormatCommand(std::string(766, 'x') + "%s", "12"), std::string(766, 'x') + "1");
    EXPECT_EQ(FormatCommand("%s", std::string(1000, 'y')), std::string(767, 'y'));
}

}  // namespace
