#include <gtest/gtest.h>

#include "health/Advice.h"

namespace {

using qorctl::CHealthFinding;
using qorctl::EHealth;

TEST(ProblemsTest, StateIsASentence) {
    EXPECT_EQ(qorctl::ProblemSentence(
                  {EHealth::CRITICAL, "drive-failed", "controller 0 drive PD3", "FAILED"}),
              "Controller 0 drive PD3 is FAILED: it is out of service; replace it.");
}

TEST(ProblemsTest, NameThatIsWiderThanTheTerminalLosesTheProductFirst) {
    const qorctl::CDriveIdentity drive = {
        .controller = 0, .number = 3, .serial = "S1", .product = "ST600"};
    const std::vector<CHealthFinding> findings = {
        {EHealth::CRITICAL, "drive-failed", DriveName(drive), "FAILED", drive}};
    EXPECT_EQ(qorctl::FormatProblems(findings, {.width = 42}),
              "\nController 0 drive PD3 (serial S1, ST600)\n"
              "  is FAILED: it is out of service; replace\n  it.\n");
    EXPECT_EQ(qorctl::FormatProblems(findings, {.width = 40}),
              "\nController 0 drive PD3 (serial S1) is\n"
              "  FAILED: it is out of service; replace\n  it.\n");
}

TEST(ProblemsTest, MeasurementIsASentence) {
    EXPECT_EQ(qorctl::ProblemSentence({EHealth::WARNING, "drive-media-errors",
                                       "controller 0 drive PD5", "2 media errors"}),
              "Controller 0 drive PD5 has 2 media errors: it may be failing; look at its SMART "
              "data.");
}

TEST(ProblemsTest, UnknownStateSaysSo) {
    EXPECT_EQ(qorctl::ProblemSentence({EHealth::UNKNOWN, "logical-drive-state",
                                       "controller 0 logical drive LD1", "unknown state \"Odd\""}),
              "Controller 0 logical drive LD1: unknown state \"Odd\".");
}

TEST(ProblemsTest, SentencesAreVisibleAndColouredWhereThereIsColour) {
    const std::vector<CHealthFinding> findings = {
        {EHealth::CRITICAL, "drive-failed", "drive 1", "FAILED"},
        {EHealth::UNKNOWN, "drive-state", "drive 2", "state \x1b"}};
    EXPECT_EQ(qorctl::FormatProblems(findings, {}),
              "\nDrive 1 is FAILED: it is out of service; replace it.\n"
              "Drive 2: state \\x1b.\n");
    EXPECT_EQ(qorctl::FormatProblems(findings, {.utf8 = true, .colour = true}),
              "\n\x1b[31mDrive 1 is FAILED: it is out of service; replace it.\x1b[0m\n"
              "\x1b[33mDrive 2: state \\x1b.\x1b[0m\n");
    EXPECT_EQ(qorctl::FormatProblems({}, {}), "");
}

TEST(ProblemsTest, MarkIsTheWorstOfAnObject) {
    const std::vector<CHealthFinding> findings = {{EHealth::WARNING, "a", "drive 1", ""},
                                                  {EHealth::CRITICAL, "b", "drive 1", ""},
                                                  {EHealth::WARNING, "a", "drive 2", ""}};
    const qorctl::CProblemMarks marks(findings);
    EXPECT_EQ(marks.Of("drive 1"), EHealth::CRITICAL);
    EXPECT_EQ(marks.Of("drive 2"), EHealth::WARNING);
    EXPECT_EQ(marks.Of("drive 3"), EHealth::OK);
}

TEST(ProblemsTest, ProblemOfTheServerIsASentence) {
    EXPECT_EQ(qorctl::ProblemSentence({EHealth::UNKNOWN, "no-controller", "", "none is there"}),
              "None is there.");
}

}  // namespace
