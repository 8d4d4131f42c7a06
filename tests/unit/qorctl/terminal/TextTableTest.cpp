#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Columns.h"
#include "terminal/TextTable.h"

namespace {

using qorctl::ANY_WIDTH;
using qorctl::CTableRow;
using qorctl::EAlign;
using testing::StartsWith;

constexpr qorctl::CTextStyle WIDE_STYLE = {.utf8 = true, .colour = false};
constexpr qorctl::CTableColumn COLUMNS[] = {
    {"NO", 0, 0, EAlign::RIGHT},
    {"NAME", 1, 4, EAlign::LEFT},
    {"EXTRA", 2, 0, EAlign::LEFT},
};

const std::vector<CTableRow> ROWS = {{{"1", "a long name", "x"}, ""}, {{"10", "b", "yy"}, ""}};

std::string Format(const std::vector<CTableRow>& rows, size_t width, qorctl::CTextStyle style) {
    style.width = width;
    return qorctl::FormatTextTable(COLUMNS, rows, style);
}

TEST(TextTableTest, ColumnsAreAlignedAndLinesEndWithoutBlanks) {
    EXPECT_EQ(Format(ROWS, ANY_WIDTH, WIDE_STYLE),
              "NO  NAME         EXTRA\n"
              " 1  a long name  x\n"
              "10  b            yy\n");
}

TEST(TextTableTest, TableThatJustFitsIsLeftAlone) {
    EXPECT_EQ(Format(ROWS, 22, WIDE_STYLE), Format(ROWS, ANY_WIDTH, WIDE_STYLE));
}

TEST(TextTableTest, ColumnIsShortenedBeforeAnyIsLeftOut) {
    EXPECT_EQ(Format(ROWS, 21, WIDE_STYLE),
              "NO  NAME        EXTRA\n"
              " 1  a long na…  x\n"
              "10  b           yy\n");
}

TEST(TextTableTest, LeastImportantColumnIsLeftOutFirst) {
    EXPECT_EQ(Format(ROWS, 14, WIDE_STYLE),
              "NO  NAME\n"
              " 1  a l…\n"
              "10  b\n"
              "Not shown:\n"
              "  EXTRA\n");
}

TEST(TextTableTest, MostImportantColumnStaysAndIsCutToTheWidth) {
    EXPECT_THAT(Format(ROWS, 2, WIDE_STYLE), StartsWith("NO\n"
                                                        " 1\n"
                                                        "10\n"
                                                        "Not"));
    EXPECT_THAT(Format(ROWS, 1, WIDE_STYLE), StartsWith("N\n"
                                                        " \n"
                                                        "1\n"
                                                        "Not"));
}

TEST(TextTableTest, AsciiShortensWithATilde) {
    EXPECT_NE(Format(ROWS, 21, {}).find("a long na~  x\n"), std::string::npos);
}

TEST(TextTableTest, CharactersCountNotBytes) {
    const std::vector<CTableRow> rows = {{{"1", "ääääää", "x"}, ""}};
    EXPECT_EQ(Format(rows, 16, WIDE_STYLE),
              "NO  NAME   EXTRA\n"
              " 1  ääää…  x\n");
}

TEST(TextTableTest, RowsOfAllScriptsLineUp) {
    std::vector<CTableRow> rows;
    for (const qortest::CWideName& name : qortest::WIDE_NAMES) {
        rows.push_back({{"1", name.text, "end"}, ""});
    }
    const std::string table = qortest::Flat(Format(rows, ANY_WIDTH, WIDE_STYLE));
    size_t lines = 0;
    for (size_t begin = 0, end; (end = table.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const std::string line = table.substr(begin, end - begin);
        EXPECT_EQ(line.find(lines == 0 ? "EXTRA" : "end"), 12U) << line;
        ++lines;
    }
    EXPECT_EQ(lines, rows.size() + 1);
}

TEST(TextTableTest, WideCharacterThatDoesNotFitLeavesABlank) {
    const std::vector<CTableRow> rows = {{{"1", "\u6570\u636E\u5E93", "x"}, ""},
                                         {{"2", "De\u0301mo\u0302ab", "y"}, ""},
                                         {{"3", "\u05E9\u05B8\u05DC\u05D5\u05B9\u05DD!", "z"}, ""}};
    EXPECT_EQ(Format(rows, 15, WIDE_STYLE),
              "NO  NAME  EXTRA\n"
              " 1  \u6570\u2026   x\n"
              " 2  De\u0301m\u2026  y\n"
              " 3  \u05E9\u05B8\u05DC\u05D5\u05B9\u2026  z\n");
    EXPECT_NE(Format(rows, 16, WIDE_STYLE).find("\n 1  \u6570\u636E\u2026  x\n"),
              std::string::npos);
}

TEST(TextTableTest, ColumnWithoutTextIsLeftOut) {
    const std::vector<CTableRow> rows = {{{"1", "", "x"}, ""}};
    EXPECT_EQ(Format(rows, ANY_WIDTH, WIDE_STYLE),
              "NO  EXTRA\n"
              " 1  x\n");
}

TEST(TextTableTest, NoRowsNoTable) {
    EXPECT_EQ(Format({}, ANY_WIDTH, WIDE_STYLE), "");
}

TEST(TextTableTest, ColourSurroundsLinesOnlyWhereTheStyleHasIt) {
    const std::vector<CTableRow> rows = {{{"1", "a", "x"}, "\x1b[31m"}};
    EXPECT_EQ(Format(rows, ANY_WIDTH, {.utf8 = true, .colour = true}),
              "\x1b[1mNO  NAME  EXTRA\x1b[0m\n"
              "\x1b[31m 1  a     x\x1b[0m\n");
    EXPECT_EQ(Format(rows, ANY_WIDTH, WIDE_STYLE).find('\x1b'), std::string::npos);
}

TEST(TextTableTest, WidthIsUnlimitedWithoutATerminal) {
    EXPECT_EQ(qorctl::DetectWidth(-1), ANY_WIDTH);
}

TEST(TextTableTest, NoCellIsWiderThanTheLimit) {
    constexpr qorctl::CTableColumn TWO_COLUMNS[] = {{"A", 0, 0, qorctl::EAlign::LEFT},
                                                    {"B", 0, 0, qorctl::EAlign::LEFT}};
    const std::vector<qorctl::CTableRow> rows = {{{std::string(1000, 'x'), "b"}, ""}};
    const std::string table = qorctl::FormatTextTable(TWO_COLUMNS, rows, {});
    EXPECT_EQ(table, "A" + std::string(qorctl::MAX_CELL + 1, ' ') + "B\n" +
                         std::string(qorctl::MAX_CELL - 1, 'x') + "~  b\n");
}

}  // namespace
