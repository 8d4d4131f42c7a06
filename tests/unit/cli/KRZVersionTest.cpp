#include <gtest/gtest.h>

#include <climits>

#include "cli/KRZVersion.h"

namespace {

TEST(KRZVersion, HasTwoParts) {
    struct {
        const char* text;
        int major;
        int minor;
    } const rows[] = {
        {"4.5", 4, 5},
        {"7.0", 7, 0},
        {"10.12", 10, 12},
        {"04.05", 4, 5},
        {"4.5-3", 4, 5},
        {"4x.5y", 4, 5},
        {"x.y", 0, 0},
        {".5", 0, 5},
        {"4.", 4, 0},
        {".", 0, 0},
        {" 4. 5", 4, 5},
        {"-1.5", -1, 5},
        {"2147483647.1", INT_MAX, 1},
    };
    for (const auto& row : rows) {
        const std::optional<CKRZVersion> version = CKRZVersion::Parse(row.text);
        ASSERT_TRUE(version) << row.text;
        EXPECT_EQ(version->major, row.major) << row.text;
        EXPECT_EQ(version->minor, row.minor) << row.text;
    }
}

TEST(KRZVersion, OtherNumbersOfPartsAreNoVersion) {
    for (const char* text : {"", "4", "4.5.6", "4.5.", "...", "unknown"}) {
        EXPECT_FALSE(CKRZVersion::Parse(text)) << text;
    }
}

}  // namespace
