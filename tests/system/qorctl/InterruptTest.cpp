// However a request ends, nothing of it stays: no process, no result file.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <random>
#include <thread>

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
                                 const std::vector<std::string>& arguments,
                                 const std::string& command = "-ldpdinfo -a0") const {
        qortest::CStandInTool tool;
        const std::string script = Replaced(INTERRUPT_AND_HANG, "SIGNAL", signal);
        tool.Play(command, {.run = Replaced(script, "PIPE", m_Pipe)});
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

TEST_F(InterruptTest, CommandsForSupportEndTheSameWay) {
    qortest::PutRaidCard();
    const std::vector<std::string> rows[] = {
        {"exec", "--", "krzcli", "-v"}, {"version"}, {"doctor"}};
    for (const std::vector<std::string>& arguments : rows) {
        const qortest::CEnd end = RunInterrupted("INT", arguments, "-v");
        EXPECT_EQ(end.status, 130) << arguments[0];
        EXPECT_EQ(end.out, "") << arguments[0];
        EXPECT_TRUE(EverythingIsGone()) << arguments[0];
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

// The RAID tool as a script of the test's. Whatever the program starts is known by a variable of
// its environment.
class RequestEndTest : public qortest::CRealPluginFixture {
protected:
    void SetUp() override {
        CRealPluginFixture::SetUp();
        qortest::PutRaidCard();
        m_Environment[MARK] = std::to_string(getpid());
    }

    static void PutTool(const std::string& script) {
        qortest::WriteFile(TOOL, "#!/bin/sh\n" + script);
        fs::permissions(TOOL, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                  fs::perms::others_read | fs::perms::others_exec);
    }

    static int CountProcesses() {
        const std::string mark = std::string(MARK) + "=" + std::to_string(getpid());
        int count = 0;
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "environ", std::ios::binary);
            for (std::string variable; std::getline(file, variable, '\0');) {
                count += variable == mark ? 1 : 0;
            }
        }
        return count;
    }

    // What was killed takes a moment to be gone.
    static bool NothingIsLeft() {
        for (int i = 0; i < 1000; ++i) {
            if (CountProcesses() == 0) {
                return !fs::exists(qortest::RESULT_DIR) || fs::is_empty(qortest::RESULT_DIR);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    static constexpr const char* MARK = "QORTEST_OF_THE_REQUEST";
    static constexpr const char* TOOL = "/opt/tarmica/krz/cli/krzcli";
    static constexpr const char* HANG = "sleep 1000\n";
    static constexpr const char* HANG_LATER =
        "[ \"$1\" = -v ] || exec sleep 1000\n"
        "echo 'Product Version : 7.0'\n";
};

TEST_F(RequestEndTest, TimeLimitEndsTheToolWhateverIsAsked) {
    PutTool(HANG);
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string says;
    } rows[] = {
        {{"status"}, 1, "UNKNOWN: there was no answer within 1 s (krzcli -v)\n"},
        {{"raid"}, 1, "qorctl: there was no answer within 1 s\n"},
        {{"storage"}, 1, "qorctl: there was no answer within 1 s\n"},
        {{"drive", "0", "252", "3"}, 1, "the command that failed: krzcli -ldpdinfo -a0\n"},
        {{"xml"}, 1, "qorctl: there was no answer within 1 s\n"},
        {{"svp"}, 1, "qorctl: there was no answer within 1 s\n"},
        {{"check"}, 3, "RAID UNKNOWN - there was no answer within 1 s (krzcli -v)\n"},
        {{"exec", "--", "krzcli", "-v"}, 124, "the RAID tool did not end in time and was killed"},
        {{"version"}, 0, "unknown (the RAID tool did not end in time and was killed)\n"},
        {{"doctor"}, 1, "krzcli -v: the RAID tool did not end in time and was killed\n"},
        {{"watch", "--count", "1"}, 1, "Z there was no answer within 1 s (krzcli -v)\n"},
    };
    for (const auto& row : rows) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin() + 1, {"--timeout", "1"});
        const qortest::CEnd end = Run(arguments);
        EXPECT_EQ(end.status, row.status) << row.arguments[0];
        EXPECT_THAT(end.out + end.err, testing::HasSubstr(row.says)) << row.arguments[0];
        EXPECT_TRUE(NothingIsLeft()) << row.arguments[0];
    }
}

TEST_F(RequestEndTest, KilledAtAnyMomentItLeavesNothing) {
    PutTool(HANG_LATER);
    std::mt19937 random(20261122);
    for (int i = 0; i < 50; ++i) {
        const std::string moment = std::to_string(random() % 80);
        const bool group = i % 2 == 0;
        const qortest::CEnd end = qortest::RunCommand(
            {.program = "sh",
             .arguments = {"-c",
                           "setsid \"$0\" raid > /dev/null 2>&1 & p=$!; sleep 0.0\"$1\"; "
                           "until kill -9 \"$2$p\" 2> /dev/null; do :; done; wait $p; true",
                           QORCTL_PROGRAM, moment.size() == 1 ? "0" + moment : moment,
                           group ? "-" : ""},
             .environment = m_Environment});
        ASSERT_TRUE(NothingIsLeft()) << i << ", killed after 0.0" << moment << " s: " << end.err;
    }
}

TEST_F(RequestEndTest, PluginThatDiesIsTold) {
    PutTool(
        "worker=$PPID\n"
        "while [ \"$(cat /proc/$worker/comm)\" != qorctl-worker ]; do\n"
        "    worker=$(sed -n 's/^PPid:[^0-9]*//p' /proc/$worker/status)\n"
        "done\n"
        "kill -SEGV $worker\n"
        "sleep 1000\n");
    const qortest::CEnd end = Run({"raid"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.err, "qorctl: the plug-in ended the process that held it: Segmentation fault\n");
    EXPECT_TRUE(NothingIsLeft());
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool IS_SANITIZED = true;
#elif defined(__has_feature)
constexpr bool IS_SANITIZED = __has_feature(address_sanitizer) != 0;
#else
constexpr bool IS_SANITIZED = false;
#endif

// With too few descriptors no process can be made at one point or another. A sanitizer looks at
// memory through a pipe, and ends the process when it gets none: that is its own affair.
TEST_F(RequestEndTest, ProcessThatCannotBeMadeIsNotThePluginsFault) {
    PutTool("exit 3");
    int notMade = 0;
    for (int files = 5; files < 16; ++files) {
        const qortest::CEnd end =
            qortest::RunCommand({.program = "sh",
                                 .arguments = {"-c", "ulimit -n \"$1\"; exec \"$0\" raid",
                                               QORCTL_PROGRAM, std::to_string(files)},
                                 .environment = m_Environment});
        EXPECT_NE(end.status, 0) << files;
        if (!IS_SANITIZED || end.err.find("<memory cannot be printed>") == std::string::npos) {
            EXPECT_THAT(end.err, testing::Not(testing::HasSubstr("the plug-in ended"))) << files;
        }
        notMade += end.err ==
                           "qorctl: no process for the plug-in could be made: Too many open "
                           "files\n"
                       ? 1
                       : 0;
    }
    EXPECT_GE(notMade, 2);
}

#if !QORTEST_NEEDS_PROC
// As Ctrl-Z does it: the limit is over when the program goes on, but the answer came before.
TEST_F(RequestEndTest, AnswerThatCameInTimeCountsAfterAPause) {
    PutTool(
        "asker=$PPID\n"
        "while [ \"$(cat /proc/$asker/comm)\" != qorctl ]; do\n"
        "    asker=$(sed -n 's/^PPid:[^0-9]*//p' /proc/$asker/status)\n"
        "done\n"
        "kill -STOP $asker\n"
        "exit 3\n");
    const qortest::CEnd end = qortest::RunCommand(
        {.program = "sh",
         .arguments = {"-c",
                       "\"$0\" raid --timeout 2 & p=$!\n"
                       "until grep -q '^State:.T' /proc/$p/status; do sleep 0.02; done\n"
                       "read -r keeper < /proc/$p/task/$p/children\n"
                       "until grep -q '^State:.Z' /proc/${keeper%% *}/status; do sleep 0.02; done\n"
                       "sleep 2\n"
                       "kill -CONT $p; wait $p",
                       QORCTL_PROGRAM},
         .environment = m_Environment});
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.err, testing::HasSubstr("error code 01"));
    EXPECT_THAT(end.err, testing::Not(testing::HasSubstr("there was no answer")));
}

TEST_F(RequestEndTest, SignalIsHeardWithoutProc) {
    PutTool(HANG);
    ASSERT_EQ(mount("none", "/proc", "tmpfs", 0, nullptr), 0);
    const qortest::CEnd interrupted = qortest::RunCommand(
        {.program = "sh",
         .arguments = {"-c", "\"$0\" raid & sleep 1; kill -TERM $!; wait $!", QORCTL_PROGRAM},
         .environment = m_Environment});
    const qortest::CEnd late = Run({"raid", "--timeout", "1"});
    ASSERT_EQ(umount2("/proc", MNT_DETACH), 0);
    EXPECT_EQ(interrupted.status, 143);
    EXPECT_EQ(late.status, 1);
    EXPECT_TRUE(NothingIsLeft());
}
#endif

}  // namespace
