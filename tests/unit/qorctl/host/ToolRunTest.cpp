#include <gtest/gtest.h>

#include "host/ToolRun.h"

namespace {

struct CVersionCase {
    const char* output;
    const char* version;
};

TEST(ProductVersionTest, VersionIsReadAsThePluginReadsIt) {
    constexpr CVersionCase CASES[] = {
        {"Product Version : 4.5\r\n", "4.5"},
        {"a\nthe Product Version : 4.5 \t\nb", "4.5"},
        {"Product Version :4.5\n", ".5"},
        {"Product Version\n: 4.5\n", ""},
        {"Product Version :\n", ""},
        {"Version : 4.5\n", ""},
        {"", ""},
        {"a : b\nProduct Version : 7.0", "7.0"},
    };
    for (const CVersionCase& one : CASES) {
        EXPECT_EQ(qorctl::ProductVersion(one.output), one.version) << one.output;
    }
}

}  // namespace
