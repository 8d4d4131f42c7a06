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

TEST_F(BashCompletionTest, ValuesAreThoseOfTheHelp) {
    const CStrings forms = {"status", "tree", "table", "json", "csv", "xml"};
    EXPECT_EQ(Complete("qorctl", "raid --format \"\""), forms);
    EXPECT_EQ(Complete("qorctl", "raid --format = \"\""), forms);
    EXPECT_EQ(Complete("qorctl", "raid --format ="), forms);
    EXPECT_THAT(Complete("qorctl", "watch --format j"), ElementsAre("json"));
    EXPECT_THAT(Complete("qorctl", "xml --of \"\""), ElementsAre("raid", "storage", "drive"));
    EXPECT_THAT(Complete("qorctl", "check --perfdata \"\""), ElementsAre("none", "counts", "all"));
    EXPECT_THAT(Complete("qorctl", "check --no-hardware o"), ElementsAre("ok"));
    EXPECT_THAT(Complete("qorctl", "help sto"), ElementsAre("storage"));
    EXPECT_THAT(Complete("qorctl", "-"), ElementsAre("--help", "--version"));
}

TEST_F(BashCompletionTest, HostsAndFaultsAreOffered) {
    CStrings all = qortest::ShippedHosts();
    all.emplace_back("prefix");  // a profile may be anywhere, and this is what is here
    for (const std::string words : {"run --host", "install --host", "record --host", "show"}) {
        EXPECT_EQ(Complete("qorsim", words + " \"\""), all) << words;
        EXPECT_THAT(Complete("qorsim", words + " fail"), ElementsAre("failed-drive")) << words;
    }
    EXPECT_THAT(Complete("qorsim", "validate fore"), ElementsAre("foreign"));
    const CStrings faults = Complete("qorsim", "run --fault \"\"");
    EXPECT_EQ(faults.size(), 25U);
    EXPECT_THAT(faults, testing::AllOf(Contains("hang"), Contains("exit"), Contains("truncate=")));
    EXPECT_THAT(Complete("qorsim", "run --host small \"\""), ElementsAre("--"));
}

// Asking the hardware would take seconds, and guessing helps nobody.
TEST_F(BashCompletionTest, NothingIsOfferedWhereNothingIsKnown) {
    qortest::WriteFile(Folder() / "unique.so", "");
    for (const char* words :
         {"drive \"\"", "drive 0 \"\"", "raid --timeout \"\"", "xml --component \"\""}) {
        EXPECT_THAT(Complete("qorctl", words), ElementsAre("")) << words;
    }
}

TEST_F(BashCompletionTest, FilesAreOfferedForAPath) {
    qortest::WriteFile(Folder() / "unique.so", "");
    EXPECT_THAT(Complete("qorctl", "raid --plugin uni"), ElementsAre("unique.so"));
    EXPECT_THAT(Complete("qorctl", "svp --decode uni"), ElementsAre("unique.so"));
    EXPECT_THAT(Complete("qorsim", "show uni"), ElementsAre("unique.so"));
    EXPECT_THAT(Complete("qorsim", "install uni"), ElementsAre("unique.so"));
}

}  // namespace
