// Ctrl-C and its like while the RAID tool runs.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "RealPluginFixture.h"

namespace fs = std::filesystem;

namespace {

// Sends SIGNAL to the program that asked, from a child of the tool, and goes on for long. The pipe
// stays open for writing as long as the tool or its child lives.
constexpr const char* INTERRUPT_AND_HANG =
    "exec 9> PIPE\n"
    "asker=$PPID\n"
    "while [ \"$(cat /proc/$asker/comm)\" != qorctl ]; do\n"
    "    asker=$(sed -n 's/^PPid:[^0-9]*//p' /proc/$asker/status)\n"
    "done\n"
    "kill -SIGNAL $asker\n"
    "sleep 1000\n";

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
    return text.replace(text.find(what), what.size(), with);
}

class InterruptTest : public qortest::CRealPluginFixture {
protected:
    void SetUp() override {
        CRealPluginFixture::SetUp();
        ASSERT_EQ(mkfifo(m_Pipe.c_str(), 0600), 0);
        m_Reader = open(m_Pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    void TearDown() override {
        close(m_Reader);
        CRealPluginFixture::TearDown();
    }

    qortest::CEnd RunInterrupted(const std::string& signal,
                                 const std::vector<std::string>& arguments) const {
        qortest::CStandInTool tool;
        const std::string script = Replaced(INTERRUPT_AND_HANG, "SIGNAL", signal);
        tool.Play("-ldpdinfo -a0", {.run = Replaced(script, "PIPE", m_Pipe)});
        return Run(arguments);
    }

    // The end of the pipe comes when the last process that has it open for writing is gone.
    bool EverythingIsGone() const {
        pollfd end = {.fd = m_Reader, .events = POLLIN, .revents = 0};
        return poll(&end, 1, 10'000) == 1 && (end.revents & POLLHUP) != 0;
    }

    const std::string m_Pipe = m_Folder / "pipe";
    int m_Reader = -1;
};

TEST_F(InterruptTest, SignalEndsTheToolAndLeavesNoResultFile) {
    const struct {
        const char* signal;
        int status;
    } rows[] = {{"INT", 130}, {"TERM", 143}, {"HUP", 129}};
    for (const auto& row : rows) {
        const qortest::CEnd outcome =
            RunInterrupted(row.signal, {"drive", "0", "252", "5", "--format", "json"});
        EXPECT_EQ(outcome.status, row.status) << row.signal;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "");
        EXPECT_TRUE(EverythingIsGone()) << row.signal;
        EXPECT_TRUE(fs::is_empty(qortest::RESULT_DIR));
    }
}

TEST_F(InterruptTest, OutputFileStaysAsItWas) {
    qortest::WriteFile(m_Folder / "report", "old");
    const auto outcome =
        RunInterrupted("INT", {"drive", "0", "252", "5", "--output", m_Folder / "report"});
    EXPECT_EQ(outcome.status, 130);
    EXPECT_EQ(qortest::ReadFile(m_Folder / "report"), "old");
    EXPECT_TRUE(EverythingIsGone());
}

TEST_F(InterruptTest, XmlAndFormEndTheSameWay) {
    const auto outcome = RunInterrupted("INT", {"xml", "--of", "drive", "0", "252", "5"});
    EXPECT_EQ(outcome.status, 130);
    EXPECT_TRUE(EverythingIsGone());
}

}  // namespace
