#include <gmock/gmock.h>

#include "InstallFixture.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;

class ZshCompletionTest : public qortest::CInstallFixture {
protected:
    // Runs the function with the completion system's own functions replaced by ones that print.
    std::string Complete(const std::string& program, const std::string& words) const {
        const CEnd end = Shell(
            "zsh -f -c '_describe() { print -l -- ${(P)4}; }; compadd() { print -l -- ${(P)2}; }; "
            "_files() { print FILES; }; _command_names() { print PROGRAMS; }; words=(" +
            program + " " + words + "); CURRENT=${#words}; complete_it() { source " +
            (Share() / "zsh/site-functions" / ("_" + program)).string() + "; }; complete_it'");
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(end.err, "");
        return end.out;
    }
};

TEST_F(ZshCompletionTest, FilesParse) {
    for (const char* program : {"qorctl", "qorsim"}) {
        const CEnd end =
            Shell(std::string("zsh -n ") + (Share() / "zsh/site-functions/_").string() + program);
        EXPECT_EQ(end.status, 0) << end.err;
    }
}

TEST_F(ZshCompletionTest, SubcommandsOptionsAndValuesAreOffered) {
    EXPECT_THAT(Complete("qorctl", "\"\""), HasSubstr("doctor:Examine "));
    EXPECT_THAT(Complete("qorctl", "doctor --"), HasSubstr("--format\n"));
    EXPECT_EQ(Complete("qorctl", "doctor --format \"\""), "tree\njson\n");
    EXPECT_EQ(
        Complete("qorctl", "raid \"\""),
        "--help\n--plugin\n--timeout\n--format\n--output\n--problems\n--controller\n--enclosure\n");
    EXPECT_EQ(Complete("qorsim", "run --host small -- q"), "PROGRAMS\n");
}

TEST_F(ZshCompletionTest, ValuesHostsAndFaultsAreOffered) {
    EXPECT_EQ(Complete("qorctl", "raid --format \"\""), "status\ntree\ntable\njson\ncsv\nxml\n");
    EXPECT_EQ(Complete("qorctl", "xml --of \"\""), "raid\nstorage\ndrive\n");
    EXPECT_EQ(Complete("qorctl", "check --perfdata \"\""), "none\ncounts\nall\n");
    EXPECT_EQ(Complete("qorctl", "raid --plugin \"\""), "FILES\n");
    EXPECT_EQ(Complete("qorctl", "drive \"\""), "");
    EXPECT_EQ(Complete("qorctl", "raid --timeout \"\""), "");
    EXPECT_THAT(Complete("qorctl", "help \"\""), HasSubstr("storage:"));
    const std::string hosts = qortest::Joined(qortest::ShippedHosts(), "\n") + "\nFILES\n";
    EXPECT_EQ(Complete("qorsim", "run --host \"\""), hosts);
    EXPECT_EQ(Complete("qorsim", "show \"\""), hosts);
    EXPECT_THAT(Complete("qorsim", "run --fault \"\""),
                testing::AllOf(HasSubstr("hang\n"), HasSubstr("truncate=\n")));
    EXPECT_EQ(Complete("qorsim", "run \"\""), "--\n");
}

}  // namespace
