#include <gmock/gmock.h>

#include <algorithm>

#include "InstallFixture.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;

// Of a text whose characters are one column wide.
size_t Columns(const std::string& line) {
    return static_cast<size_t>(std::count_if(
        line.begin(), line.end(), [](unsigned char byte) { return (byte & 0xC0U) != 0x80; }));
}

class ManualFormatTest : public qortest::CInstallFixture {};

TEST_F(ManualFormatTest, PagesAreFormattedWithoutAWarningAndFitATerminal) {
    for (const char* page : {"man1/qorctl.1", "man1/qorsim.1", "man7/qor.7"}) {
        const CEnd end = Shell("MANWIDTH=80 man --warnings=w -E UTF-8 -l '" +
                               (Share() / "man" / page).string() + "'");
        EXPECT_EQ(end.status, 0) << page;
        EXPECT_EQ(end.err, "") << page;
        EXPECT_THAT(end.out, HasSubstr("EXAMPLES\n")) << page;
        for (const std::string& line : qortest::Lines(end.out)) {
            EXPECT_LE(Columns(line), 80U) << page << ": " << line;
        }
    }
}

#ifdef QOR_MANDOC
TEST_F(ManualFormatTest, TheOtherFormatterHasNoWarningEither) {
    for (const char* page : {"man1/qorctl.1", "man1/qorsim.1", "man7/qor.7"}) {
        const CEnd end =
            Shell("mandoc -T lint -W warning '" + (Share() / "man" / page).string() + "'");
        EXPECT_EQ(end.status, 0) << page;
        EXPECT_EQ(end.out, "") << page;
    }
}
#endif

}  // namespace
