// qorctl as a person sees it: on a real terminal, which tmux draws, in a narrow and in a wide one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>

#include "Process.h"
#include "TerminalFixture.h"

namespace fs = std::filesystem;

namespace {

using qortest::CStrings;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* RED = "\x1b[31m";

// The characters of a UTF-8 text, each of which is one column wide here.
std::ptrdiff_t Columns(const std::string& text) {
    return std::count_if(text.begin(), text.end(),
                         [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
}

using TerminalTest = qortest::CTerminalFixture;

TEST_F(TerminalTest, NothingIsWiderThanTheTerminal) {
    for (const int width : {60, 200}) {
        for (const char* command :
             {"raid", "raid --format table", "drive 0 252 3 --format table", "doctor", "version"}) {
            Start("--host failed-drive", command, width, 50);
            for (const std::string& line : qortest::Lines(Await("status="))) {
                EXPECT_LE(Columns(line), width) << command;
            }
            Tmux({"kill-session"});
        }
    }
}

TEST_F(TerminalTest, ProblemsStandOutAndAreRepeatedAtTheEnd) {
    Start("--host failed-drive", "raid --format table", 200, 50);
    const std::string shown = Await("status=0", {"-e"});
    EXPECT_THAT(shown, HasSubstr(std::string(RED) + "!!     0   3     252:3  FAILED"));
    EXPECT_THAT(shown,
                HasSubstr("Controller 0 drive 252:3 (PD3, serial K4H1R12B, KESTREL K2000NX0253 "
                          "1.819TB) is FAILED: it is out of service; "
                          "replace it.\n"));
}

TEST_F(TerminalTest, StateIsColouredInTheTree) {
    Start("--host failed-drive", "raid", 60, 50);
    EXPECT_THAT(Await("status=0", {"-e"}), HasSubstr(std::string(": ") + RED + "FAILED"));
}

TEST_F(TerminalTest, NoColorIsObeyed) {
    setenv("NO_COLOR", "1", 1);
    Start("--host failed-drive", "raid", 60, 50);
    unsetenv("NO_COLOR");
    EXPECT_THAT(Await("status=0", {"-e"}), AllOf(HasSubstr("FAILED"), Not(HasSubstr("\x1b["))));
}

TEST_F(TerminalTest, ProgressIsShownAndCtrlCEndsTheTool) {
    Start("--host small --fault hang@-pdinfo", "raid", 60, 24);
    EXPECT_THAT(
        Await("krzcli -pdinfo -nosmart -a0 (controller 1"),
        testing::ContainsRegex("qorctl: [0-9]+ s, krzcli -pdinfo -nosmart -a0 .controller 1"));
    Tmux({"send-keys", "C-c"});
    EXPECT_THAT(Await("status=130"), Not(HasSubstr("qorctl: ")));
    EXPECT_EQ(CountProcesses(), 0U);
}

TEST_F(TerminalTest, WatchFitsTheTerminalAndLeavesItAsItWas) {
    Start("--host lifecycle --start-at 1000000", "watch --interval 3600", 60, 40);
    const std::string shown = Await("Unconfig GOOD");
    EXPECT_THAT(shown, HasSubstr("CRITICAL  qorctl watch, every 3600 s: "));
    EXPECT_THAT(shown, AllOf(HasSubstr("\nNot shown: "), Not(HasSubstr("^["))));
    for (const std::string& line : qortest::Lines(shown)) {
        EXPECT_LE(Columns(line), 60);
    }
    Tmux({"send-keys", "C-c"});
    EXPECT_THAT(Await("status=130"), Not(HasSubstr("qorctl watch")));
    EXPECT_EQ(CountProcesses(), 0U);
}

// A shell that controls jobs, as a person has it.
TEST_F(TerminalTest, WatchThatIsPausedGivesTheTerminalBackAndGoesOn) {
    StartProgram("--host small --fault hang@-pdinfo", "bash --norc --noprofile -i", 80, 24);
    Tmux({"send-keys", QORCTL_PROGRAM " watch --interval 3600", "Enter"});
    Await("; asking for 1 s");
    Tmux({"send-keys", "C-z"});
    EXPECT_THAT(Await("Stopped"), Not(HasSubstr("asking for")));
    Tmux({"send-keys", "stty -a | grep -wo -e -icanon -e icanon; echo usable=$((1 + 1))", "Enter"});
    EXPECT_THAT(Await("usable=2"), HasSubstr("\nicanon\n"));
    Tmux({"send-keys", "clear; fg; echo ended=$?", "Enter"});
    EXPECT_THAT(Await("; asking for "), Not(HasSubstr("usable")));
    Tmux({"send-keys", "q"});
    Await("ended=1");
    Tmux({"send-keys", "exit 0", "Enter"});
    Await("status=0");
    EXPECT_EQ(CountProcesses(), 0U);
}

}  // namespace
