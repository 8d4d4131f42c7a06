#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <limits>

#include "plugin/ComLib.h"

namespace {

using Texts = std::list<std::string>;

struct CNumberCase {
    std::string text;
    long number;
};

TEST(CStringUtil, NumberIsPlainDecimalText) {
    EXPECT_EQ(CStringUtil::NumberToTString(0), "0");
    EXPECT_EQ(CStringUtil::NumberToTString(7), "7");
    EXPECT_EQ(CStringUtil::NumberToTString(1234567), "1234567");
    EXPECT_EQ(CStringUtil::NumberToTString(-12), "-12");
    EXPECT_EQ(CStringUtil::NumberToTString(LONG_MAX), "9223372036854775807");
    EXPECT_EQ(CStringUtil::NumberToTString(LONG_MIN), "-9223372036854775808");
}

TEST(CStringUtil, LeadingNumberIsRead) {
    const CNumberCase CASES[] = {
        {"0", 0},
        {"42", 42},
        {"007", 7},
        {"+5", 5},
        {"-5", -5},
        {"-0", 0},
        {" \t\n\v\f\r12", 12},
        {"12 34", 12},
        {"12abc", 12},
        {"4.5", 4},
        {"0x10", 0},
        {"1,234", 1},
        {std::string("1\0002", 3), 1},
        {"9223372036854775807", LONG_MAX},
        {"9223372036854775808", LONG_MAX},
        {"99999999999999999999999999", LONG_MAX},
        {"9223372036854775806", LONG_MAX - 1},
        {"-9223372036854775807", -LONG_MAX},
        {"-9223372036854775808", LONG_MIN},
        {"-9223372036854775809", LONG_MIN},
        {"-99999999999999999999999999", LONG_MIN},
    };
    for (const CNumberCase& row : CASES) {
        EXPECT_EQ(CStringUtil::TStringToNumber(row.text), row.number) << '"' << row.text << '"';
    }
}

TEST(CStringUtil, TextWithoutNumberGivesZero) {
    for (const char* text : {"", " ", "abc", "-", "+", "+-5", "-+5", "--5", "- 5", ".5",
                             "\xa0"
                             "5"}) {
        EXPECT_EQ(CStringUtil::TStringToNumber(text), 0) << '"' << text << '"';
    }
}

TEST(CStringUtil, OnlyTheLettersOfAsciiBecomeUpperCase) {
    EXPECT_EQ(CStringUtil::StringToUpperCase("00:1f.2_8086:a1b2"), "00:1F.2_8086:A1B2");
    EXPECT_EQ(CStringUtil::StringToUpperCase("azAZ`{@["), "AZAZ`{@[");
    EXPECT_EQ(CStringUtil::StringToUpperCase("\xe4\xc3\xa4\xff"), "\xe4\xc3\xa4\xff");
    EXPECT_EQ(CStringUtil::StringToUpperCase(std::string("a\0b", 3)), std::string("A\0B", 3));
    EXPECT_EQ(CStringUtil::StringToUpperCase(""), "");
}

TEST(CStringUtil, LocaleOfTheHostChangesNothing) {
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    EXPECT_EQ(CStringUtil::StringToUpperCase("i\xc3\xa4"), "I\xc3\xa4");
    EXPECT_EQ(CStringUtil::TStringToNumber("\xc2\xa0"
                                           "5"),
              0);
    EXPECT_EQ(CStringUtil::NumberToTString(1234567), "1234567");
    std::setlocale(LC_ALL, "C");
}

TEST(CStringUtil, TextIsSplitAtEveryDot) {
    EXPECT_EQ(CStringUtil::SplitByDot("4.5"), (Texts{"4", "5"}));
    EXPECT_EQ(CStringUtil::SplitByDot("1.2.3"), (Texts{"1", "2", "3"}));
    EXPECT_EQ(CStringUtil::SplitByDot("4."), (Texts{"4", ""}));
    EXPECT_EQ(CStringUtil::SplitByDot(".5"), (Texts{"", "5"}));
    EXPECT_EQ(CStringUtil::SplitByDot("1..2"), (Texts{"1", "", "2"}));
    EXPECT_EQ(CStringUtil::SplitByDot("."), (Texts{"", ""}));
    EXPECT_EQ(CStringUtil::SplitByDot("text"), (Texts{"text"}));
    EXPECT_EQ(CStringUtil::SplitByDot(""), (Texts{""}));
}

struct CReplaceCase {
    std::string text;
    std::string what;
    std::string with;
    std::string result;
};

TEST(CStringUtil, EveryOccurrenceIsReplacedFromLeftToRight) {
    const CReplaceCase CASES[] = {
        {"a\tb\tc", "\t", " ", "a b c"},
        {"\t\t", "\t", " ", "  "},
        {"aaa", "aa", "b", "ba"},
        {"aaa", "a", "aa", "aaaaaa"},
        {"abc", "b", "", "ac"},
        {"abc", "abc", "", ""},
        {"abc", "x", "y", "abc"},
        {"abc", "", "y", "abc"},
        {"", "a", "y", ""},
        {"", "", "y", ""},
    };
    for (const CReplaceCase& row : CASES) {
        std::string text = row.text;
        CStringUtil::strReplace(text, row.what, row.with);
        EXPECT_EQ(text, row.result) << '"' << row.text << '"';
    }
}

TEST(CStringUtil, TextMayBeReplacedByItself) {
    std::string text = "ab";
    CStringUtil::strReplace(text, text, "c");
    EXPECT_EQ(text, "c");
    text = "aa";
    CStringUtil::strReplace(text, "a", text);
    EXPECT_EQ(text, "aaaa");
}

}  // namespace
