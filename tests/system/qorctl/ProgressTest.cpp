// Progress and the tool's version, as the trace lines of the plug-in tell them.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QorctlFixture.h"
#include "RaidHost.h"
#include "host/Worker.h"

namespace {

using qorctl::CTraceReader;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr const char* CARD = "Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_005D)";

TEST(TraceReaderTest, CommandAndControllerAreTold) {
    CTraceReader reader;
    EXPECT_EQ(reader.Text(), "");
    reader.Take(CARD);
    reader.Take(CARD);
    reader.Take("execute krzcli command.(krzcli -ctrlinfo -aAll)");
    EXPECT_EQ(reader.Text(), "krzcli -ctrlinfo -aAll");
    reader.Take("execute krzcli command.(krzcli -pdinfo -nosmart -a1)");
    EXPECT_EQ(reader.Text(), "krzcli -pdinfo -nosmart -a1 (controller 2 of 2)");
    reader.Take("execute krzcli command.(krzcli -ctrlinfo -a2)");
    EXPECT_EQ(reader.Text(), "krzcli -ctrlinfo -a2 (controller 3)");
    reader.Take("execute krzcli command.(krzcli -pssdinfo -aAll)");
    EXPECT_EQ(reader.Text(), "krzcli -pssdinfo -aAll");
    reader.Take("Execute LSI RAID Utilty command. storcli show");
    EXPECT_EQ(reader.Text(), "storcli show");
}

TEST(TraceReaderTest, CardsFoundLaterAreNoControllers) {
    CTraceReader reader;
    reader.Take("execute krzcli command.(krzcli -v)");
    reader.Take(CARD);
    reader.Take("execute krzcli command.(krzcli -ctrlinfo -a0)");
    EXPECT_EQ(reader.Text(), "krzcli -ctrlinfo -a0 (controller 1)");
}

TEST(TraceReaderTest, VersionIsTheOneThatThePluginRead) {
    CTraceReader reader;
    EXPECT_EQ(reader.ToolVersion(), std::nullopt);
    reader.Take("KRZ Version is 7.0.");
    EXPECT_EQ(reader.ToolVersion(), "7.0");
    reader.Take("KRZ Version is .");
    EXPECT_EQ(reader.ToolVersion(), std::nullopt);
    reader.Take("KRZ Version is ");
    EXPECT_EQ(reader.ToolVersion(), std::nullopt);
}

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
    const qortest::CQorctlOutcome outcome = qortest::RunQorctl(
        m_Folder, {.program = {},
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
