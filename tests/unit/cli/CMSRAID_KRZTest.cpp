#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <vector>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "StandInTool.h"
#include "cli/CMSRAID_KRZ.h"
#include "plugin/ComLib.h"

namespace {

namespace fs = std::filesystem;
using namespace qortest;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string OUT = "/opt/tarmica/run/out.txt";
const std::string COMMAND = "krzcli -ctrlinfo -aAll";
const std::string ARGUMENTS = "-ctrlinfo -aAll";
const std::string INVALID = "Error - Invalid input at or near token -aAll\n";

CTraceLine Result(const std::string& text) {
    return {CTraceUtility::TRACE_DBG_RESULT, text};
}
CTraceLine Failure(const std::string& text) {
    return {CTraceUtility::TRACE_DBG_FAILURE, text};
}
const CTraceLine EXECUTE = Result("execute krzcli command.(" + COMMAND + ")");
const CTraceLine EXECUTE_VERSION = Result("execute krzcli command.(krzcli -v)");

class CMSRAID_KRZTest : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
        fs::create_directories(fs::path(OUT).parent_path());
    }

    unsigned int Exec() { return CMSRAID_KRZ::ExecCli(COMMAND, &m_CliRtn, OUT); }
    unsigned int ExecNoRetry() { return CMSRAID_KRZ::ExecCliNoRetry(COMMAND, &m_CliRtn, OUT); }

    // Plays the same step so often as the tool is to be called.
    static void PlayTimes(CStandInTool& tool, int times, const CToolStep& step) {
        for (int i = 0; i < times; ++i) {
            tool.Play(ARGUMENTS, step);
        }
    }
    static std::string VersionOf(const std::string& report) {
        CStandInTool tool;
        tool.Play("-v", {.out = report});
        const std::string version = CMSRAID_KRZ::GetKRZVersion(OUT);
        EXPECT_FALSE(fs::exists(OUT));
        return version;
    }

    unsigned long m_CliRtn = 4711;
};

TEST_F(CMSRAID_KRZTest, IsInstalledWhenTheProgramExists) {
    EXPECT_FALSE(CMSRAID_KRZ::IsKRZInstalled());
    WriteFile("/opt/tarmica/krz/cli/krzcli", "");
    EXPECT_TRUE(CMSRAID_KRZ::IsKRZInstalled());
}

TEST_F(CMSRAID_KRZTest, DirectoryWithoutTheProgramIsNoInstallation) {
    WriteFile("/opt/tarmica/krz/cli/krzcli.old", "");
    EXPECT_FALSE(CMSRAID_KRZ::IsKRZInstalled());
}

TEST_F(CMSRAID_KRZTest, MissingToolIsToldAtOnce) {
    EXPECT_EQ(Exec(), KRZ_NOT_INSTALLED);
    EXPECT_EQ(m_CliRtn, 255U);
    EXPECT_FALSE(fs::exists(OUT));
    EXPECT_THAT(FakeComLib().traces, ElementsAre(Failure("KRZ is not installed.")));
    EXPECT_THAT(FakeComLib().sleeps, IsEmpty());
}

TEST_F(CMSRAID_KRZTest, ReportOfTheToolIsInTheFile) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.out = "out\n", .err = "err\n"});
    EXPECT_EQ(Exec(), KRZ_OK);
    EXPECT_EQ(m_CliRtn, 0U);
    EXPECT_EQ(ReadFile(OUT), "out\nerr\n");
    EXPECT_THAT(FakeComLib().traces, ElementsAre(EXECUTE));
    EXPECT_THAT(FakeComLib().sleeps, IsEmpty());
}

TEST_F(CMSRAID_KRZTest, RejectedCommandIsNotTriedAgain) {
    for (const unsigned long status : {1UL, 3UL, 255UL}) {
        ResetFakeComLib();
        CStandInTool tool;
        tool.Play(ARGUMENTS, {.out = INVALID, .status = static_cast<int>(status)});
        EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
        EXPECT_EQ(m_CliRtn, status);
        EXPECT_THAT(
            FakeComLib().traces,
            ElementsAre(EXECUTE, Failure("Failed to execute krzcli command.(" + COMMAND + ")")));
        EXPECT_THAT(FakeComLib().sleeps, IsEmpty());
    }
}

TEST_F(CMSRAID_KRZTest, RejectionOnStandardErrorCounts) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.err = INVALID, .status = 1});
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_EQ(tool.Calls().size(), 1U);
}

TEST_F(CMSRAID_KRZTest, RejectionOnTheSecondLineIsTriedAgain) {
    CStandInTool tool;
    PlayTimes(tool, 3, {.out = "first\n" + INVALID, .status = 1});
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
}

TEST_F(CMSRAID_KRZTest, RejectionOfAToolThatWasKilledCounts) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.run = "echo 'Error - Invalid input at or near token x'; kill -KILL 0"});
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
}

TEST_F(CMSRAID_KRZTest, RejectionIsTheWholeText) {
    CStandInTool tool;
    PlayTimes(tool, 3, {.out = "Error - Invalid input at or near\n", .status = 1});
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_THAT(FakeComLib().sleeps, ElementsAre(1000U, 1000U));
}

TEST_F(CMSRAID_KRZTest, OtherErrorWithFailingStatusIsTriedAgain) {
    CStandInTool tool;
    PlayTimes(tool, 2, {.out = "Error - busy\n", .status = 3});
    tool.Play(ARGUMENTS, {.out = "report\n"});
    EXPECT_EQ(Exec(), KRZ_OK);
    EXPECT_EQ(m_CliRtn, 0U);
    EXPECT_EQ(ReadFile(OUT), "report\n");
    EXPECT_THAT(FakeComLib().traces, ElementsAre(EXECUTE));
    EXPECT_THAT(FakeComLib().sleeps, ElementsAre(1000U, 1000U));
}

TEST_F(CMSRAID_KRZTest, ErrorInTheFirstLineOfASuccessfulRunIsAnError) {
    for (const std::string& line : {std::string("Error - No RAID controller is found.\n"),
                                    std::string("Error - "), INVALID}) {
        ResetFakeComLib();
        CStandInTool tool;
        tool.Play(ARGUMENTS, {.out = line});
        EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
        EXPECT_EQ(m_CliRtn, 0U);
        EXPECT_THAT(FakeComLib().traces,
                    ElementsAre(EXECUTE, Failure("KRZ CLI has an error(" + COMMAND + ").")));
    }
}

TEST_F(CMSRAID_KRZTest, ErrorOnAnotherPlaceOfASuccessfulRunIsNone) {
    for (const char* report : {"first\nError - No RAID controller is found.\n", " Error - x\n",
                               "Error -\n", "Error\n"}) {
        CStandInTool tool;
        tool.Play(ARGUMENTS, {.out = report});
        EXPECT_EQ(Exec(), KRZ_OK) << report;
    }
}

TEST_F(CMSRAID_KRZTest, EmptyReportIsASuccess) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {});
    EXPECT_EQ(Exec(), KRZ_OK);
    EXPECT_EQ(ReadFile(OUT), "");
}

TEST_F(CMSRAID_KRZTest, MissingReportIsASuccess) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.run = "rm " + OUT});
    EXPECT_EQ(Exec(), KRZ_OK);
    EXPECT_FALSE(fs::exists(OUT));
}

TEST_F(CMSRAID_KRZTest, ToolThatKeepsFailingIsTriedThreeTimes) {
    CStandInTool tool;
    PlayTimes(tool, 3, {.out = "busy\n", .status = 3});
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 3U);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(EXECUTE, Failure("Failed to execute krzcli command.(" + COMMAND +
                                             ",cliRtn=3)")));
    EXPECT_THAT(FakeComLib().sleeps, ElementsAre(1000U, 1000U));
}

TEST_F(CMSRAID_KRZTest, LastStatusIsHandedOver) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.status = 3});
    tool.Play(ARGUMENTS, {.status = 4});
    tool.Play(ARGUMENTS, {.status = 5});
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 5U);
}

TEST_F(CMSRAID_KRZTest, NoRetryMeansOneAttempt) {
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.status = 3});
    EXPECT_EQ(ExecNoRetry(), KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 3U);
    EXPECT_THAT(FakeComLib().sleeps, IsEmpty());
}

TEST_F(CMSRAID_KRZTest, RetryCountIsSigned) {
    struct {
        int retry;
        int attempts;
    } const rows[] = {{-1, 1}, {0, 1}, {1, 2}, {4, 5}};
    for (const auto& row : rows) {
        CStandInTool tool;
        PlayTimes(tool, row.attempts, {.status = 3});
        EXPECT_EQ(CMSRAID_KRZ::_ExecCli(COMMAND, &m_CliRtn, OUT, row.retry), KRZ_TOOL_ERROR);
    }
}

TEST_F(CMSRAID_KRZTest, RunThatKeepsFailingIsToldApart) {
    CStandInTool tool;
    // The shell in between, too: it would report its tool's signal as an exit status.
    PlayTimes(tool, 3, {.run = "kill -KILL 0"});
    EXPECT_EQ(Exec(), KRZ_RUN_FAILED);
    EXPECT_EQ(m_CliRtn, 255U);
    EXPECT_EQ(FakeComLib().traces.back(),
              Failure("Failed to execute krzcli command.(" + COMMAND + ",cliRtn=255)"));
    EXPECT_THAT(FakeComLib().sleeps, ElementsAre(1000U, 1000U));
}

TEST_F(CMSRAID_KRZTest, EmptyFileNameIsAFailedRun) {
    CStandInTool tool;
    EXPECT_EQ(CMSRAID_KRZ::ExecCli(COMMAND, &m_CliRtn, std::string()), KRZ_RUN_FAILED);
    EXPECT_EQ(m_CliRtn, 0U);
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(EXECUTE, Failure("Failed to execute krzcli command.(" + COMMAND +
                                             ",cliRtn=0)")));
}

TEST_F(CMSRAID_KRZTest, FileThatCannotBeWrittenIsAToolError) {
    CStandInTool tool;
    EXPECT_EQ(CMSRAID_KRZ::ExecCliNoRetry(COMMAND, &m_CliRtn,
                                          std::string("/opt/tarmica/missing/out.txt")),
              KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 1U);
    EXPECT_THAT(
        FakeComLib().traces,
        ElementsAre(EXECUTE, Failure("ExecForeignModule open Error 00000002."),
                    Failure("Failed to execute krzcli command.(" + COMMAND + ",cliRtn=1)")));
}

TEST_F(CMSRAID_KRZTest, VersionStandsTwoBytesBehindTheColon) {
    struct {
        const char* report;
        const char* version;
    } const rows[] = {
        {"Product Version : 4.5\n", "4.5"},
        {"Product Version : 4.5\r\n", "4.5"},
        {"Product Version : 4.5 \t\r\r\n", "4.5"},
        {"Product Version : 4.5", "4.5"},
        {"Product Version :4.5\n", ".5"},
        {"Product Version :  4.5\n", " 4.5"},
        {"Product Version : \n", ""},
        {"Product Version :\r\n", ""},
        {"Product Version : 4.5 : beta\n", "4.5 : beta"},
        {"Product Version 4.5\n", ""},
        {"Product Version\nProduct Version : 4.5\n", ""},
        {"KRZ CLI\n\nThe Product Version is : 7.0\nProduct Version : 4.5\n", "7.0"},
        {"Name : Product Version : 4.5\n", "Product Version : 4.5"},
        {"product version : 4.5\n", ""},
        {"Version : 4.5\n", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        ResetFakeComLib();
        EXPECT_EQ(VersionOf(row.report), row.version) << row.report;
        EXPECT_THAT(FakeComLib().traces, ElementsAre(EXECUTE_VERSION)) << row.report;
    }
}

TEST_F(CMSRAID_KRZTest, VersionLineThatEndsAtItsColonThrowsAndLeavesNothing) {
    for (const char* report : {"Product Version :", "Product Version :\n"}) {
        ResetFakeComLib();
        CStandInTool tool;
        tool.Play("-v", {.out = report});
        EXPECT_THROW(CMSRAID_KRZ::GetKRZVersion(OUT), std::out_of_range);
        EXPECT_FALSE(fs::exists(OUT));
        EXPECT_THAT(FakeComLib().traces, ElementsAre(EXECUTE_VERSION));
    }
}

TEST_F(CMSRAID_KRZTest, VersionOfAToolThatFailsIsEmpty) {
    CStandInTool tool;
    for (int i = 0; i < 3; ++i) {
        tool.Play("-v", {.out = "Product Version : 4.5\n", .status = 2});
    }
    EXPECT_EQ(CMSRAID_KRZ::GetKRZVersion(OUT), "");
    EXPECT_FALSE(fs::exists(OUT));
    EXPECT_THAT(FakeComLib().traces,
                ElementsAre(EXECUTE_VERSION,
                            Failure("Failed to execute krzcli command.(krzcli -v,cliRtn=2)")));
}

TEST_F(CMSRAID_KRZTest, VersionOfAMissingToolIsEmpty) {
    EXPECT_EQ(CMSRAID_KRZ::GetKRZVersion(OUT), "");
    EXPECT_THAT(FakeComLib().traces, ElementsAre(Failure("KRZ is not installed."),
                                                 Failure("Failed to delete file(" + OUT + ").")));
}

TEST_F(CMSRAID_KRZTest, PipeIsNotReadBack) {
    ASSERT_EQ(mkfifo(OUT.c_str(), 0600), 0);
    const int reader = open(OUT.c_str(), O_RDONLY | O_NONBLOCK);
    CStandInTool tool;
    tool.Play(ARGUMENTS, {.out = "Error - for the reader of the pipe\n"});
    EXPECT_EQ(Exec(), KRZ_OK);
    std::array<char, 100> text = {};
    EXPECT_GT(read(reader, text.data(), text.size()), 0);
    close(reader);
    EXPECT_STREQ(text.data(), "Error - for the reader of the pipe\n");
}

TEST_F(CMSRAID_KRZTest, PipeThatNobodyReadsIsAFailure) {
    ASSERT_EQ(mkfifo(OUT.c_str(), 0600), 0);
    const CStandInTool toolThatIsNotRun;
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 1U);
}

TEST_F(CMSRAID_KRZTest, ExitStatusIsHandedOverAtTheEnd) {
    CStandInTool tool;
    PlayTimes(tool, 3, {.status = 3});
    std::vector<unsigned long> between;
    FakeComLib().onSleep = [&] { between.push_back(m_CliRtn); };
    EXPECT_EQ(Exec(), KRZ_TOOL_ERROR);
    EXPECT_EQ(m_CliRtn, 3U);
    EXPECT_THAT(between, ElementsAre(255U, 255U));
}

TEST_F(CMSRAID_KRZTest, VersionInAHugeReportIsNotTold) {
    CStandInTool tool;
    tool.Play("-v",
              {.out = "Product Version : 7.0\n", .run = "truncate -s 16777217 /proc/self/fd/1"});
    EXPECT_EQ(CMSRAID_KRZ::GetKRZVersion(OUT), "");
}

}  // namespace
