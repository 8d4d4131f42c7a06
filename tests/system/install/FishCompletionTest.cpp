#include <gmock/gmock.h>

#include "InstallFixture.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;

class FishCompletionTest : public qortest::CInstallFixture {
protected:
    std::string File(const std::string& program) const {
        return (Share() / "fish/vendor_completions.d" / (program + ".fish")).string();
    }

    std::string Complete(const std::string& program, const std::string& line) const {
        const CEnd end = Shell("HOME=$PWD fish --no-config -c 'source " + File(program) +
                               "; complete -C \"" + line + "\"'");
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(end.err, "");
        return end.out;
    }
};

TEST_F(FishCompletionTest, FilesParse) {
    for (const char* program : {"qorctl", "qorsim"}) {
        const CEnd end = Shell("HOME=$PWD fish -n " + File(program));
        EXPECT_EQ(end.status, 0) << end.err;
    }
}

TEST_F(FishCompletionTest, SubcommandsOptionsAndValuesAreOffered) {
    EXPECT_EQ(Complete("qorctl", "qorctl doct"),
              "doctor\tExamine what the plug-in needs on this server\n");
    EXPECT_THAT(Complete("qorctl", "qorctl doctor --f"), HasSubstr("--format"));
    EXPECT_THAT(Complete("qorctl", "qorctl doctor --format j"), HasSubstr("json"));
    EXPECT_THAT(Complete("qorsim", "qorsim ru"), HasSubstr("run"));
}

TEST_F(FishCompletionTest, ValuesHostsAndFaultsAreOffered) {
    qortest::WriteFile(Folder() / "unique.so", "");
    EXPECT_EQ(Complete("qorctl", "qorctl raid --format "), "csv\njson\nstatus\ntable\ntree\nxml\n");
    EXPECT_EQ(Complete("qorctl", "qorctl xml --of "), "drive\nraid\nstorage\n");
    EXPECT_EQ(Complete("qorctl", "qorctl check --perfdata "), "all\ncounts\nnone\n");
    EXPECT_THAT(Complete("qorctl", "qorctl raid --plugin uni"), HasSubstr("unique.so"));
    EXPECT_EQ(Complete("qorctl", "qorctl drive "), "");
    EXPECT_EQ(Complete("qorctl", "qorctl raid --timeout "), "");
    EXPECT_THAT(Complete("qorctl", "qorctl help sto"), HasSubstr("storage\t"));
    EXPECT_EQ(Complete("qorsim", "qorsim run --host fail"), "failed-drive\n");
    EXPECT_EQ(Complete("qorsim", "qorsim show fail"), "failed-drive\n");
    EXPECT_EQ(Complete("qorsim", "qorsim run --fault trun"), "truncate=\n");
    EXPECT_EQ(Complete("qorsim", "qorsim run --host small "), "");
}

}  // namespace
