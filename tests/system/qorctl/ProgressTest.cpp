// Progress as a person sees it, from the trace lines of the plug-in.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QorctlFixture.h"
#include "RaidHost.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ProgressTest : public qortest::CQorctlFixture {
protected:
    void SetUp() override {
        CQorctlFixture::SetUp();
        m_Environment = {{"LC_ALL", "C.UTF-8"},
                         {"TERM", "xterm"},
                         {"PATH", "/usr/bin:/bin"},
                         {"QOR_TRACE", "none"},
                         {"QOR_PLUGIN", REAL_PLUGIN}};
    }
};

TEST_F(ProgressTest, TerminalShowsTheCommandThatRunsAndIsCleared) {
    const std::string gate = m_Folder / "gate";
    ASSERT_EQ(mkfifo(gate.c_str(), 0600), 0);
    const int fd = open(gate.c_str(), O_RDWR | O_CLOEXEC);
    qortest::CStandInTool tool;
    // The tool goes on when its command was seen on the terminal.
    tool.Play("-ldpdinfo -a0",
              {.out = qortest::Golden("smart/groups.txt"), .run = "read line < " + gate});
    tool.Play("-pdinfo -pd[252:5] -a0", {.out = qortest::Golden("smart/sata.txt")});
    bool isOpen = false;
    const qortest::CEnd outcome = qortest::RunCommand(
        {.program = QORCTL_PROGRAM,
         .arguments = {"drive", "0", "252", "5", "--format", "json"},
         .environment = m_Environment,
         .errorTerminal = true,
         .terminalWidth = 60,
         .onTerminal = [&](const std::string& text) {
             if (!isOpen && text.find("krzcli -ldpdinfo -a0") != std::string::npos) {
                 isOpen = write(fd, "\n", 1) == 1;
             }
         }});
    close(fd);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.terminal,
                HasSubstr("\r\x1b[Kqorctl: 0 s, krzcli -ldpdinfo -a0 (controller 1)"));
    EXPECT_THAT(outcome.terminal, EndsWith("\r\x1b[K"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("\x1b")));
}

TEST_F(ProgressTest, StandardErrorThatIsNoTerminalStaysEmpty) {
    qortest::CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = qortest::Golden("smart/groups.txt"), .run = "sleep 0.5"});
    tool.Play("-pdinfo -pd[252:5] -a0", {.out = qortest::Golden("smart/sata.txt")});
    EXPECT_EQ(Run({"drive", "0", "252", "5"}).err, "");
}

}  // namespace
