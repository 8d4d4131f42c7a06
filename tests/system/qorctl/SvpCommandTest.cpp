// `qorctl svp` as a process, with a plug-in that answers as the test tells it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QorctlFixture.h"

namespace {

using qortest::CEnd;
using qortest::CRecord;
using qortest::WriteFile;
using testing::HasSubstr;

constexpr const char* EMPTY_FORM = "00000000000000001000000000000000";
constexpr const char* WHOLE_LIFE =
    "create\nGetCtrlPDInfoBinaryString \nFreeItemList 0\ndelete\nunload\n";
constexpr const char* DECODED =
    "       0  header\n"
    "       0    signature                  : 0000000000\n"
    "       5    format revision            : 0\n"
    "       6    reserved                   : 0000\n"
    "       8    total size                 : 16 bytes\n"
    "      12    number of controllers      : 0\n"
    "      13    number of drives           : 0\n"
    "      14    reserved                   : 0000\n";

class SvpCommandTest : public qortest::CQorctlFixture {
protected:
    CEnd RunSvp(const std::vector<CRecord>& answer,
                const std::vector<std::string>& options = {}) const {
        Answer(answer);
        std::vector<std::string> arguments = {"svp", "--plugin", STAND_IN_PLUGIN};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }

    CEnd DecodeInput(const std::string& digits) const {
        WriteFile(m_Folder / "input", digits);
        return qortest::RunCommand({.program = QORCTL_PROGRAM,
                                    .arguments = {"svp", "--decode", "-"},
                                    .environment = m_Environment,
                                    .input = m_Folder / "input"});
    }
};

TEST_F(SvpCommandTest, DigitsAreWrittenAsTheyAreAndALineFeed) {
    const CEnd outcome = RunSvp({{"digits", "not a form, 0g"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "not a form, 0g\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(SvpCommandTest, FailedRequestWritesNoDigits) {
    const CEnd outcome = RunSvp({{"digits", EMPTY_FORM}, {"result", "0"}, {"error", "01"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::AllOf(testing::StartsWith("qorctl: error code 01: "),
                                            testing::EndsWith("\nqorctl: the request failed\n")));
}

TEST_F(SvpCommandTest, NoticeStandsBesideTheDigits) {
    const CEnd outcome = RunSvp({{"digits", EMPTY_FORM}, {"notice", "01"}});
    EXPECT_EQ(outcome.out, std::string(EMPTY_FORM) + "\n");
    EXPECT_THAT(outcome.err, HasSubstr("notice code 01"));
}

TEST_F(SvpCommandTest, ExceptionIsReported) {
    const CEnd outcome = RunSvp({{"throw", "GetCtrlPDInfoBinaryString", "private"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the request ended with an exception: private to the plug-in\n");
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(SvpCommandTest, DecodeWithoutAFileAsksThePlugin) {
    const CEnd outcome = RunSvp({{"digits", EMPTY_FORM}}, {"--decode"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, DECODED);
    EXPECT_EQ(Log(), WHOLE_LIFE);
}

TEST_F(SvpCommandTest, DecodeReadsAFileAndLoadsNoPlugin) {
    WriteFile(m_Folder / "form", " 0000000000000000\n1000000000000000\n");
    m_Environment["QOR_PLUGIN"] = "/nowhere/plugin.so";
    const CEnd outcome = Run({"svp", "--decode", m_Folder / "form"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, DECODED);
    EXPECT_EQ(outcome.err, "");
}

TEST_F(SvpCommandTest, DecodeReadsStandardInput) {
    const CEnd outcome = DecodeInput(EMPTY_FORM);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, DECODED);
}

TEST_F(SvpCommandTest, MalformedFormIsRejectedWithTheReasonOnly) {
    const CEnd outcome = DecodeInput("0000\x1b");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: not a service-processor form: offset 4 of the text: '\\x1b' is not a "
              "hexadecimal digit\n");
    EXPECT_EQ(DecodeInput("").err,
              "qorctl: not a service-processor form: offset 0: the form ends here, but the "
              "signature takes 5 bytes from offset 0 on\n");
    EXPECT_EQ(RunSvp({{"digits", "0"}}, {"--decode"}).err,
              "qorctl: not a service-processor form: 1 digits, an odd number: the last byte lacks "
              "one\n");
}

TEST_F(SvpCommandTest, FileThatCannotBeReadIsNamed) {
    const CEnd missing = Run({"svp", "--decode", "/nowhere/form"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "qorctl: /nowhere/form could not be read: No such file or directory\n");
    const CEnd directory = Run({"svp", "--decode", m_Folder});
    EXPECT_EQ(directory.status, 1);
    EXPECT_EQ(directory.err, "qorctl: /opt/tarmica/ctl could not be read: Is a directory\n");
    const CEnd input = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                            .arguments = {"svp", "--decode", "-"},
                                            .environment = m_Environment,
                                            .input = m_Folder});
    EXPECT_EQ(input.status, 1);
    EXPECT_EQ(input.err, "qorctl: standard input could not be read: Is a directory\n");
}

TEST_F(SvpCommandTest, MoreThanOneFileIsAUsageError) {
    EXPECT_GT(Run({"svp", "--decode", "a", "b"}).status, 1);
    EXPECT_GT(Run({"svp", "a"}).status, 1);
}

}  // namespace
