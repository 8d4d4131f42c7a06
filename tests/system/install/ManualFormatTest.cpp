#include <gmock/gmock.h>

#include "InstallFixture.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;

class ManualFormatTest : public qortest::CInstallFixture {};

TEST_F(ManualFormatTest, PagesAreFormattedWithoutAWarning) {
    for (const char* page : {"man1/qorctl.1", "man1/qorsim.1", "man7/qor.7"}) {
        const CEnd end = Shell("MANWIDTH=120 man --warnings -E UTF-8 -l '" +
                               (Share() / "man" / page).string() + "'");
        EXPECT_EQ(end.status, 0) << page;
        EXPECT_EQ(end.err, "") << page;
        EXPECT_THAT(end.out, HasSubstr("EXAMPLES\n")) << page;
    }
}

}  // namespace
