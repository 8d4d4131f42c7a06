#include <gtest/gtest.h>

#include "format/JsonScan.h"

namespace {

using qorctl::JsonDepth;

TEST(JsonScanTest, DepthCountsListsAndObjectsOutsideOfTexts) {
    const struct {
        const char* json;
        size_t depth;
    } rows[] = {
        {"", 0},
        {"1", 0},
        {"[]", 1},
        {"{\"a\": [{\"b\": 1}], \"c\": [[]]}", 3},
        {"[\"[[[[\", \"\\\"[[[\"]", 1},
        {"]]]][", 1},
        {"[[[[", 4},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(JsonDepth(row.json), row.depth) << row.json;
    }
}

}  // namespace
