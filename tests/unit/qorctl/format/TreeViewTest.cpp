#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "../terminal/Columns.h"
#include "format/Tree.h"

namespace {

constexpr qorctl::CTextStyle UTF8 = {.utf8 = true, .colour = false};
constexpr qorctl::CTextStyle PLAIN = {.utf8 = false, .colour = false};
constexpr qorctl::CTextStyle COLOUR = {.utf8 = true, .colour = true};

struct CRow {
    std::string parent;
    std::string name;
    std::string value = "";
    const char* enable = "TRUE";
};

std::string Format(const std::vector<CRow>& rows, const qorctl::CTextStyle& style) {
    std::vector<std::unique_ptr<CItemDisp>> items;
    std::list<CItemDisp*> list;
    for (const CRow& row : rows) {
        items.push_back(std::make_unique<CItemDisp>(row.parent.c_str(), row.name.c_str(),
                                                    row.value.c_str(), row.enable));
        list.push_back(items.back().get());
    }
    return qorctl::FormatTree(qorctl::CItemTree(list), style);
}

const std::vector<CRow> DRIVE = {
    {"", "Physical Drive Information"},
    {"Physical Drive Information", "### General Information ###"},
    {"### General Information ###", "PD No.", "PD3"},
    {"### General Information ###", "Temperature", "", "FALSE"},
    {"### General Information ###", "Comment"},
    {"Physical Drive Information", "### Enclosure Properties Information ###"},
    {"### Enclosure Properties Information ###", "Enclosure ID", "252"},
};

TEST(TreeViewTest, EmptyTreeGivesNoText) {
    EXPECT_EQ(Format({}, UTF8), "");
}

TEST(TreeViewTest, DriveInBoxDrawingLines) {
    EXPECT_EQ(Format(DRIVE, UTF8),
              "Physical Drive Information\n"
              "├─ [General Information]\n"
              "│  ├─ PD No.      : PD3\n"
              "│  ├─ Temperature : (not reported)\n"
              "│  └─ Comment     :\n"
              "└─ [Enclosure Properties Information]\n"
              "   └─ Enclosure ID : 252\n");
}

TEST(TreeViewTest, LongValueGoesOnBelowItself) {
    EXPECT_EQ(Format({{"", "Root"},
                      {"Root", "### A ###"},
                      {"### A ###", "Key", "one two three"},
                      {"Root", "### B ###"},
                      {"### B ###", "Key", "1234567890123"}},
                     {.utf8 = true, .colour = false, .width = 21}),
              "Root\n"
              "├─ [A]\n"
              "│  └─ Key : one two\n"
              "│           three\n"
              "└─ [B]\n"
              "   └─ Key : 123456789\n"
              "            0123\n");
}

TEST(TreeViewTest, LongNamesAndValuesSayHowLongTheyAre) {
    const std::string name(1000, 'n');
    const std::string value(10'000, 'v');
    EXPECT_EQ(Format({{"", name, value}}, UTF8), qorctl::CutText(name, qorctl::MAX_NAME) + " : " +
                                                     qorctl::CutText(value, qorctl::MAX_VALUE) +
                                                     '\n');
    EXPECT_EQ(Format({{name, "a"}}, UTF8),
              "a : (its parent is missing: " + qorctl::CutText(name, qorctl::MAX_NAME) + ")\n");
}

TEST(TreeViewTest, StateThatIsNotWellHasAColour) {
    EXPECT_EQ(Format({{"", "State", "Degraded"}, {"", "PD Status(Detail)", "ONLINE"}},
                     {.utf8 = true, .colour = true}),
              "State             : \x1b[31mDegraded\x1b[0m\n"
              "PD Status(Detail) : ONLINE\n");
    EXPECT_EQ(Format({{"", "PD Status(Detail)", "Odd"}}, {.utf8 = true, .colour = true}),
              "PD Status(Detail) : \x1b[33mOdd\x1b[0m\n");
}

TEST(TreeViewTest, DriveInPlainAscii) {
    EXPECT_EQ(Format(DRIVE, PLAIN),
              "Physical Drive Information\n"
              "|- [General Information]\n"
              "|  |- PD No.      : PD3\n"
              "|  |- Temperature : (not reported)\n"
              "|  `- Comment     :\n"
              "`- [Enclosure Properties Information]\n"
              "   `- Enclosure ID : 252\n");
}

TEST(TreeViewTest, ColourMakesHeadingsBoldAndMissingValuesDim) {
    EXPECT_EQ(Format(DRIVE, COLOUR),
              "\x1b[1mPhysical Drive Information\x1b[0m\n"
              "├─ \x1b[1m[General Information]\x1b[0m\n"
              "│  ├─ PD No.      : PD3\n"
              "│  ├─ \x1b[2mTemperature : (not reported)\x1b[0m\n"
              "│  └─ Comment     :\n"
              "└─ \x1b[1m[Enclosure Properties Information]\x1b[0m\n"
              "   └─ Enclosure ID : 252\n");
}

TEST(TreeViewTest, GroupWithChildrenIsAHeadingAndKeepsTheColonsOfItsSection) {
    EXPECT_EQ(Format({{"", "Logical Drive Information"},
                      {"Logical Drive Information", "### General Information ###"},
                      {"### General Information ###", "LD No.", "LD0"},
                      {"### General Information ###", "Associated CacheCade LD"},
                      {"Associated CacheCade LD", "LD No.", "LD1"},
                      {"Associated CacheCade LD", "State", "Optimal"},
                      {"### General Information ###", "Name", "data"}},
                     UTF8),
              "Logical Drive Information\n"
              "└─ [General Information]\n"
              "   ├─ LD No. : LD0\n"
              "   ├─ Associated CacheCade LD\n"
              "   │  ├─ LD No. : LD1\n"
              "   │  └─ State  : Optimal\n"
              "   └─ Name   : data\n");
}

TEST(TreeViewTest, TreesAreSeparatedByAnEmptyLineAndSingleLinesAreNot) {
    EXPECT_EQ(
        Format({{"", "A"}, {"A", "Key", "1"}, {"", "B"}, {"B", "Key", "2"}, {"", "C"}, {"", "D"}},
               UTF8),
        "A\n└─ Key : 1\n\nB\n└─ Key : 2\n\nC\nD\n");
}

TEST(TreeViewTest, MissingParentIsNamed) {
    EXPECT_EQ(Format({{"Lost\n", "Key", "1"}}, UTF8), "Key : 1 (its parent is missing: Lost\\n)\n");
}

TEST(TreeViewTest, ValueOfAnItemMarkedNotReportedIsShown) {
    EXPECT_EQ(Format({{"", "A", "1", "FALSE"}}, UTF8), "A : 1 (not reported)\n");
}

TEST(TreeViewTest, UnknownFlagIsShownLikeTrue) {
    EXPECT_EQ(Format({{"", "A", "1", "false"}}, COLOUR), "A : 1\n");
}

TEST(TreeViewTest, TitleWithoutClosingMarksIsATitle) {
    EXPECT_EQ(Format({{"", "### Odd"}, {"", "### "}, {"", "### ###"}}, UTF8), "[Odd]\n[]\n[###]\n");
}

TEST(TreeViewTest, TextsFromTheToolCannotDriveTheTerminal) {
    const std::string evil = "\x1b[2J\r\n\x9b";
    const std::string text = Format(
        {{"", "Root"}, {"Root", "### " + evil + " ###"}, {"### " + evil + " ###", evil, evil}},
        PLAIN);
    EXPECT_EQ(text,
              "Root\n"
              "`- [\\x1b[2J\\r\\n\\x9b]\n"
              "   `- \\x1b[2J\\r\\n\\x9b : \\x1b[2J\\r\\n\\x9b\n");
}

TEST(TreeViewTest, ColonsAlignByCharacters) {
    EXPECT_EQ(Format({{"", "R"}, {"R", "\u00B0", "1"}, {"R", "ab", "2"}}, UTF8),
              "R\n├─ \u00B0  : 1\n└─ ab : 2\n");
}

TEST(TreeViewTest, ColonsOfKeysInAllScriptsLineUp) {
    std::vector<CRow> rows = {{"", "R"}};
    for (const qortest::CWideName& name : qortest::WIDE_NAMES) {
        rows.push_back({"R", name.text, "1"});
    }
    const std::string tree = qortest::Flat(Format(rows, UTF8));
    size_t keys = 0;
    for (size_t end = tree.find(" : 1\n"); end != std::string::npos;
         end = tree.find(" : 1\n", end + 1)) {
        EXPECT_EQ(end - tree.rfind('\n', end), 10U) << tree.substr(0, end);
        ++keys;
    }
    EXPECT_EQ(keys, std::size(qortest::WIDE_NAMES));
}

TEST(TreeViewTest, ValueOfWideCharactersFitsTheWidth) {
    EXPECT_EQ(Format({{"", "R"}, {"R", "\u540D", "\u6570\u636E\u5E93\u6570\u636E\u5E93"}},
                     {.utf8 = true, .colour = false, .width = 17}),
              "R\n"
              "└─ \u540D : \u6570\u636E\u5E93\u6570\n"
              "        \u636E\u5E93\n");
}

TEST(TreeViewTest, OverlongKeyDoesNotPushTheOthersAway) {
    const std::string longKey(qorctl::MAX_ALIGNED_KEY + 1, 'k');
    EXPECT_EQ(Format({{"", "R"}, {"R", longKey, "1"}, {"R", "ab", "2"}, {"R", "abc", "3"}}, PLAIN),
              "R\n|- " + longKey + " : 1\n|- ab  : 2\n`- abc : 3\n");
}

TEST(TreeViewTest, DeepLevelsStopIndentingAndSayTheirLevel) {
    std::vector<CRow> rows = {{"", "0"}};
    for (int i = 1; i < 100'000; ++i) {
        rows.push_back({std::to_string(i - 1), std::to_string(i)});
    }
    const std::string text = Format(rows, PLAIN);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 100'000);
    const std::string indent(3 * (qorctl::MAX_DRAWN_DEPTH - 2), ' ');
    EXPECT_NE(text.find("\n" + indent + "`- 15\n" + indent + "`- (level 17) 16\n"),
              std::string::npos);
    EXPECT_TRUE(text.ends_with("\n" + indent + "`- (level 100000) 99999 :\n"));
}

}  // namespace
