#include <gtest/gtest.h>

#include "Columns.h"
#include "terminal/TerminalText.h"

namespace {

using qorctl::CountColumns;
using qorctl::CTextStyle;
using qorctl::MakeVisible;

constexpr CTextStyle UTF8 = {.utf8 = true, .colour = false};
constexpr CTextStyle ASCII = {.utf8 = false, .colour = false};

TEST(TerminalTextTest, PrintableAsciiStays) {
    std::string text;
    for (char character = ' '; character <= '~'; ++character) {
        text += character;
    }
    EXPECT_EQ(MakeVisible(text, ASCII), text);
    EXPECT_EQ(MakeVisible(text, UTF8), text);
}

TEST(TerminalTextTest, EveryByteOutsidePrintableAsciiIsEscapedInAscii) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string out = MakeVisible(std::string(1, static_cast<char>(byte)), ASCII);
        const bool printable = byte >= 0x20 && byte <= 0x7E;
        EXPECT_EQ(out.size() == 1, printable) << byte;
        for (const char character : out) {
            EXPECT_TRUE(character >= ' ' && character <= '~') << byte;
        }
    }
}

struct CCase {
    const char* what;
    std::string text;
    std::string utf8;
    std::string ascii;
};

TEST(TerminalTextTest, TextsBecomeVisible) {
    const CCase cases[] = {
        {"empty", "", "", ""},
        {"tab, line feed, carriage return", "a\tb\nc\rd", "a\\tb\\nc\\rd", "a\\tb\\nc\\rd"},
        {"escape sequence", "\x1b[31mred", "\\x1b[31mred", "\\x1b[31mred"},
        {"zero byte", std::string("a\0b", 3), "a\\x00b", "a\\x00b"},
        {"delete", "\x7f", "\\x7f", "\\x7f"},
        {"two bytes", "25 \u00B0C", "25 \u00B0C", "25 \\xc2\\xb0C"},
        {"three bytes", "\u20AC", "\u20AC", "\\xe2\\x82\\xac"},
        {"four bytes", "\U0001F600", "\U0001F600", "\\xf0\\x9f\\x98\\x80"},
        {"second set of control characters", "\u009B1m", "\\xc2\\x9b1m", "\\xc2\\x9b1m"},
        {"right-to-left override", "\u202E", "\\xe2\\x80\\xae", "\\xe2\\x80\\xae"},
        {"letter that shows as nothing", "\u3164", "\\xe3\\x85\\xa4", "\\xe3\\x85\\xa4"},
        {"variant of a character", "\uFE0F", "\\xef\\xb8\\x8f", "\\xef\\xb8\\x8f"},
        {"joiner without width", "\u034F", "\\xcd\\x8f", "\\xcd\\x8f"},
        {"no character", "\U0001FFFE", "\\xf0\\x9f\\xbf\\xbe", "\\xf0\\x9f\\xbf\\xbe"},
        {"private use", "\uE000", "\\xee\\x80\\x80", "\\xee\\x80\\x80"},
        {"line separator", "\u2028", "\\xe2\\x80\\xa8", "\\xe2\\x80\\xa8"},
        {"byte of another character set", "25 \xB0\x43", "25 \\xb0C", "25 \\xb0C"},
        {"character cut off", "\xE2\x82", "\\xe2\\x82", "\\xe2\\x82"},
        {"character interrupted", "\xE2(\u20AC", "\\xe2(\u20AC", "\\xe2(\\xe2\\x82\\xac"},
        {"overlong form", "\xC0\x9B", "\\xc0\\x9b", "\\xc0\\x9b"},
        {"surrogate", "\xED\xA0\x80", "\\xed\\xa0\\x80", "\\xed\\xa0\\x80"},
        {"beyond the character set", "\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80",
         "\\xf4\\x90\\x80\\x80"},
        {"lead byte that does not exist", "\xFF", "\\xff", "\\xff"},
    };
    for (const CCase& row : cases) {
        EXPECT_EQ(MakeVisible(row.text, UTF8), row.utf8) << row.what;
        EXPECT_EQ(MakeVisible(row.text, ASCII), row.ascii) << row.what;
    }
}

TEST(TerminalTextTest, LinesAndTabsOfADocumentStay) {
    EXPECT_EQ(qorctl::MakeLinesVisible("a\tb\r\nc\rd\n\x1b[1m\xff\u00B0", UTF8),
              "a\tb\r\nc\\rd\n\\x1b[1m\\xff\u00B0");
    EXPECT_EQ(qorctl::MakeLinesVisible("\u00B0\r", ASCII), "\\xc2\\xb0\\r");
}

TEST(TerminalTextTest, JsonIsEscapedAsItsReadersKnow) {
    EXPECT_EQ(qorctl::MakeJsonVisible("{\n\"\x7f\u202E\u00B0\U000E0041\"}", UTF8),
              "{\n\"\\u007f\\u202e\u00B0\\udb40\\udc41\"}");
    EXPECT_EQ(qorctl::MakeJsonVisible("\"\u00B0\U0001F600\"", ASCII), "\"\\u00b0\\ud83d\\ude00\"");
}

TEST(TerminalTextTest, LongTextsAreCutAndSayHowLongTheyWere) {
    EXPECT_EQ(qorctl::CutText(std::string(40, 'x'), 40), std::string(40, 'x'));
    EXPECT_EQ(qorctl::CutText(std::string(41, 'x'), 40), std::string(26, 'x') + "... (41 bytes)");
    std::string wide;  // of characters of three bytes each
    for (int i = 0; i < 30; ++i) {
        wide += "\u20AC";
    }
    EXPECT_EQ(qorctl::CutText(wide, 40), wide.substr(0, 24) + "... (90 bytes)");
    EXPECT_EQ(qorctl::CutText(std::string(90, '\x80'), 40).size(), 37U);
}

TEST(TerminalTextTest, ColumnsAreNeitherBytesNorCharacters) {
    EXPECT_EQ(CountColumns(""), 0U);
    EXPECT_EQ(CountColumns("abc"), 3U);
    EXPECT_EQ(CountColumns("\u00B0\u20AC\U0001F600"), 4U);
}

TEST(TerminalTextTest, EachScriptHasItsOwnWidth) {
    for (const qortest::CWideName& name : qortest::WIDE_NAMES) {
        EXPECT_EQ(MakeVisible(name.text, UTF8), name.text) << name.what;
        EXPECT_EQ(CountColumns(name.text), name.columns) << name.what;
        EXPECT_EQ(CountColumns("a" + name.text + "\u00B0"), name.columns + 2) << name.what;
    }
}

TEST(TerminalTextTest, FirstColumnsEndAtAWholeCharacterWithItsMarks) {
    EXPECT_EQ(qorctl::FirstColumns("\u6570\u636E", 4), "\u6570\u636E");
    EXPECT_EQ(qorctl::FirstColumns("\u6570\u636E", 3), "\u6570");
    EXPECT_EQ(qorctl::FirstColumns("\u6570\u636E", 1), "");
    EXPECT_EQ(qorctl::FirstColumns("e\u0301\u0302a", 1), "e\u0301\u0302");
    EXPECT_EQ(qorctl::FirstColumns("\u05E9\u05B8\u05DC", 1), "\u05E9\u05B8");
    EXPECT_EQ(qorctl::FirstColumns("\u1112\u1161\u11AB.", 2), "\u1112\u1161\u11AB");
    EXPECT_EQ(qorctl::FirstColumns("ab", 0), "");
}

TEST(TerminalTextTest, WideCharactersAreWrappedByTheirColumns) {
    EXPECT_EQ(qorctl::WrapText("\u6570\u636E\u5E93\u6570\u636E", 9, 0, ""),
              "\u6570\u636E\u5E93\u6570\n\u636E");
    EXPECT_EQ(qorctl::WrapText("\u6570\u636E \u5E93\u6570\u636E", 8, 0, ""),
              "\u6570\u636E\n\u5E93\u6570\u636E");
}

TEST(TerminalTextTest, LinesEndAtABlankThatFits) {
    EXPECT_EQ(qorctl::WrapText("one two three four", 11, 0, "  "), "one two\n  three\n  four");
    EXPECT_EQ(qorctl::WrapText("one two three four", 13, 0, "  "), "one two three\n  four");
    EXPECT_EQ(qorctl::WrapText("one two three four", qorctl::ANY_WIDTH, 0, "  "),
              "one two three four");
    EXPECT_EQ(qorctl::WrapText("", 10, 0, "  "), "");
}

TEST(TerminalTextTest, WordThatIsTooLongIsMovedAndThenBroken) {
    EXPECT_EQ(qorctl::WrapText("/a/path/too/long", 10, 0, ""), "/a/path/to\no/long");
    EXPECT_EQ(qorctl::WrapText("/a/longpath", 20, 10, "      "), "\n      /a/longpath");
    EXPECT_EQ(qorctl::WrapText("ääääääääää", 8, 0, ""), "ääääääää\nää");
}

}  // namespace
