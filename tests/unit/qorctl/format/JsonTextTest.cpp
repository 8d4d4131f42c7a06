#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "format/JsonDocument.h"

namespace {

using qorctl::JsonText;
using qorctl::ValidUtf8;
using CJson = nlohmann::ordered_json;

TEST(JsonTextTest, DocumentIsIndentedOrALine) {
    const CJson json = {{"a", 1}, {"b", "x"}};
    EXPECT_EQ(JsonText(json, qorctl::NO_INDENTATION), "{\"a\":1,\"b\":\"x\"}\n");
    EXPECT_EQ(JsonText(json, 2), "{\n  \"a\": 1,\n  \"b\": \"x\"\n}\n");
}

TEST(JsonTextTest, EveryCharacterIsReadBack) {
    const std::string text = "\t\n\x01\x1b\x7f\u009B\u00B0\u200B\u202E\u2028\uFEFF\uFFFE\U0001F600";
    const std::string json = JsonText(CJson(text), qorctl::NO_INDENTATION);
    EXPECT_EQ(json,
              "\"\\t\\n\\u0001\\u001b\\u007f\\u009b\u00B0\\u200b\\u202e\\u2028\\ufeff\\ufffe"
              "\U0001F600\"\n");
    EXPECT_EQ(CJson::parse(json), text);
}

TEST(JsonTextTest, BytesThatAreNoUtf8AreReplacedAsInADocument) {
    for (const char* text : {"", "plain", "\u00B0", "\xff", "a\xe2\x82", "\xc3(", "\xed\xa0\x80"}) {
        EXPECT_EQ(JsonText(CJson(ValidUtf8(text)), qorctl::NO_INDENTATION),
                  JsonText(CJson(text), qorctl::NO_INDENTATION));
    }
    EXPECT_EQ(ValidUtf8("a\xff"), "a\uFFFD");
}

}  // namespace
