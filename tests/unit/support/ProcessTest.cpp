// What tests run programs with.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <csignal>

#include "PrivateServerFixture.h"
#include "Process.h"

namespace {

using qortest::CEnd;
using qortest::CEnvironment;
using qortest::RunCommand;
using qortest::RunProgram;
using std::chrono::milliseconds;

class ProcessTest : public qortest::CPrivateServerFixture {};

TEST_F(ProcessTest, BothOutputsAndTheStatusAreTold) {
    const CEnd end = RunProgram({"sh", "-c", "echo out; echo err >&2; exit 3"});
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.signal, 0);
    EXPECT_EQ(end.out, "out\n");
    EXPECT_EQ(end.err, "err\n");
}

TEST_F(ProcessTest, SignalIsNoStatus) {
    const CEnd killed = RunProgram({"sh", "-c", "kill -KILL $$"});
    EXPECT_EQ(killed.status, -1);
    EXPECT_EQ(killed.signal, SIGKILL);
    const CEnd ended = RunProgram({"sh", "-c", "exit 137"});
    EXPECT_EQ(ended.status, 137);
    EXPECT_EQ(ended.signal, 0);
}

TEST_F(ProcessTest, ProgramThatIsNotThereHasTheShellsStatus) {
    EXPECT_EQ(RunProgram({"/nowhere/program"}).status, 127);
}

TEST_F(ProcessTest, InputEnvironmentAndFolderAreTheRuns) {
    qortest::WriteFile("/opt/tarmica/input", "line\n");
    const CEnd end = RunCommand({.program = "sh",
                                 .arguments = {"-c", "cat; pwd; env | grep ONLY; echo $HOME"},
                                 .environment = CEnvironment{{"ONLY", "this"}},
                                 .folder = "/opt/tarmica",
                                 .input = "/opt/tarmica/input"});
    EXPECT_EQ(end.out, "line\n/opt/tarmica\nONLY=this\n\n");
}

TEST_F(ProcessTest, OutputOfADescendantIsAwaited) {
    EXPECT_EQ(RunProgram({"sh", "-c", "(sleep 0.2; echo late) & echo early"}).out, "early\nlate\n");
}

TEST_F(ProcessTest, LargeOutputBesideATerminalIsWhole) {
    const CEnd end = RunCommand({.program = "sh",
                                 .arguments = {"-c", "head -c 1000000 /dev/zero; echo end >&2"},
                                 .errorTerminal = true});
    EXPECT_EQ(end.out.size(), 1'000'000U);
    EXPECT_EQ(end.terminal, "end\n");
    EXPECT_EQ(end.err, "");
}

TEST_F(ProcessTest, ProgramThatDoesNotEndIsKilledAndFailsTheTest) {
    CEnd end;
    EXPECT_NONFATAL_FAILURE(
        end = RunCommand({.program = "sleep", .arguments = {"1000"}, .limit = milliseconds(50)}),
        "sleep or what it started does not end");
    EXPECT_EQ(end.signal, SIGKILL);
}

TEST_F(ProcessTest, ProgramThatClosesItsOutputIsLimited) {
    CEnd end;
    EXPECT_NONFATAL_FAILURE(end = RunCommand({.program = "sh",
                                              .arguments = {"-c", "exec sleep 1000 >&-"},
                                              .limit = milliseconds(50)}),
                            "sh or what it started does not end");
    EXPECT_EQ(end.signal, SIGKILL);
}

}  // namespace
