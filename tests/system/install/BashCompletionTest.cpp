#include <gmock/gmock.h>

#include "InstallFixture.h"

namespace {

using qortest::CEnd;
using qortest::CStrings;
using testing::Contains;
using testing::ElementsAre;

class BashCompletionTest : public qortest::CInstallFixture {
protected:
    std::string File(const std::string& program) const {
        return (Share() / "bash-completion/completions" / program).string();
    }

    // What is offered for the last of the words.
    CStrings Complete(const std::string& program, const std::string& words) const {
        const CEnd end = Shell("bash -c 'source " + File(program) + "; COMP_WORDS=(" + program +
                               " " + words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _" +
                               program + "; printf \"%s\\n\" \"${COMPREPLY[@]}\"'");
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.err, "");
        return qortest::Lines(end.out);
    }
};

TEST_F(BashCompletionTest, FilesParse) {
    for (const char* program : {"qorctl", "qorsim"}) {
        const CEnd end = Shell("bash -n " + File(program));
        EXPECT_EQ(end.status, 0) << end.err;
    }
}

TEST_F(BashCompletionTest, SubcommandsAreOffered) {
    const CStrings all = Complete("qorctl", "\"\"");
    for (const char* name : {"raid", "storage", "drive", "xml", "svp", "doctor", "exec"}) {
        EXPECT_THAT(all, Contains(name));
    }
    EXPECT_THAT(Complete("qorctl", "do"), ElementsAre("doctor"));
    EXPECT_THAT(Complete("qorsim", "\"\""), Contains("run"));
}

TEST_F(BashCompletionTest, OptionsOfTheSubcommandAreOffered) {
    EXPECT_THAT(Complete("qorctl", "doctor --f"), ElementsAre("--format"));
    EXPECT_THAT(Complete("qorctl", "doctor --"), Contains("--plugin"));
    EXPECT_THAT(Complete("qorctl", "doctor --"), Contains("--help"));
    EXPECT_THAT(Complete("qorsim", "run --ho"), ElementsAre("--host"));
}

TEST_F(BashCompletionTest, ValuesOfAnOptionAreOffered) {
    EXPECT_THAT(Complete("qorctl", "doctor --format \"\""), ElementsAre("tree", "json"));
    EXPECT_THAT(Complete("qorctl", "version --format j"), ElementsAre("json"));
}

TEST_F(BashCompletionTest, FilesAreOfferedForAPath) {
    qortest::WriteFile(Folder() / "unique.so", "");
    EXPECT_THAT(Complete("qorctl", "raid --plugin uni"), ElementsAre("unique.so"));
}

}  // namespace
