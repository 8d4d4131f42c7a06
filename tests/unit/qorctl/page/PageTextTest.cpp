#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "page/PageText.h"

namespace {

using qorctl::HtmlText;
using qorctl::ScriptJson;

TEST(PageTextTest, MarkupIsText) {
    EXPECT_EQ(HtmlText("<b class=\"x\">a & 'b'</b>"),
              "&lt;b class=&quot;x&quot;&gt;a &amp; &#39;b&#39;&lt;/b&gt;");
}

TEST(PageTextTest, WhatNobodyWouldSeeIsVisible) {
    const struct {
        std::string text;
        const char* html;
    } rows[] = {
        {std::string("a\0b", 3), "a\\x00b"},
        {"a\x1b[31mb", "a\\x1b[31mb"},
        {"a\nb\tc", "a\\nb\\tc"},
        {"a\xff"
         "b",
         "a\\xffb"},
        {"\xe2\x80\xae"
         "abc",
         "\\xe2\\x80\\xaeabc"},
        {"Gr\xc3\xbc\xc3\x9f", "Gr\xc3\xbc\xc3\x9f"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(HtmlText(row.text), row.html);
    }
}

TEST(PageTextTest, JsonKeepsItsValuesAndLosesItsBlanks) {
    EXPECT_EQ(ScriptJson("\xEF\xBB\xBF{ \"a b\" : [ 1,\t-2.5e3 ],\r\n \"\\\" c\" : \" \\\\\" }\n"),
              "{\"a b\":[1,-2.5e3],\"\\\" c\":\" \\\\\"}");
}

TEST(PageTextTest, NothingInJsonEndsAScript) {
    const std::string value = "</script><!-- <script> ]]> & \xe2\x80\xa8 \xe2\x80\xa9 \xe2\x80\xaa";
    const std::string text = ScriptJson(nlohmann::json({{value, value}}).dump());
    EXPECT_EQ(text.find_first_of("<>&"), std::string::npos) << text;
    EXPECT_EQ(text.find("\xe2\x80\xa8"), std::string::npos);
    EXPECT_EQ(text.find("\xe2\x80\xa9"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(text), nlohmann::json({{value, value}}));
}

}  // namespace
