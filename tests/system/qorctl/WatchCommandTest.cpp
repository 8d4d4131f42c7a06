// `qorctl watch` as a process: lines without a terminal, and a screen that comes back on one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>

#include "QorctlFixture.h"

namespace fs = std::filesystem;

namespace {

using qortest::CEnd;
using qortest::CRecord;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

constexpr const char* ENTER = "\x1b[?1049h";
constexpr const char* LEAVE = "\x1b[?1049l";
// What stays of the screen.
constexpr const char* LAST_WORDS =
    "Z OK\r\n0 controllers, 0 logical drives, 1 drive, 0 PCIe SSDs\r\n";
constexpr int PATIENCE = 60000;  // milliseconds; a broken program is given up after that

std::vector<CRecord> Drive(const std::string& state) {
    const char* const root = "Physical Drive Information";
    const char* const general = "### General Information ###";
    return {{"item", "", root, "", "TRUE"},
            {"item", root, general, "", "TRUE"},
            {"item", general, "PD No.", "PD3", "TRUE"},
            {"item", general, "PD Status(Detail)", state, "TRUE"}};
}

// The program on a terminal of its own.
class CSession {
public:
    CSession(const std::vector<std::string>& arguments,
             const std::map<std::string, std::string>& environment,
             const std::string& program = QORCTL_PROGRAM) {
        std::vector<std::string> texts = {program};
        texts.insert(texts.end(), arguments.begin(), arguments.end());
        const size_t count = texts.size();
        for (const auto& [name, value] : environment) {
            texts.push_back(name + "=" + value);
        }
        std::vector<char*> words;
        std::vector<char*> variables;
        for (size_t i = 0; i < texts.size(); ++i) {
            (i < count ? words : variables).push_back(texts[i].data());
        }
        words.push_back(nullptr);
        variables.push_back(nullptr);
        winsize size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        qortest::ProvideTerminals();
        m_Child = forkpty(&m_Terminal, nullptr, nullptr, &size);
        if (m_Child == 0) {
            const rlimit none = {};
            setrlimit(RLIMIT_CORE, &none);
            execve(words[0], words.data(), variables.data());
            _exit(127);
        }
        EXPECT_GT(m_Child, 0) << "no terminal";
    }
    ~CSession() {
        if (m_Child > 0) {
            kill(m_Child, SIGKILL);
            waitpid(m_Child, nullptr, 0);
        }
        close(m_Terminal);
    }
    CSession(const CSession&) = delete;  // one owner of the process
    CSession& operator=(const CSession&) = delete;

    // Reads on until `text` was written after what was waited for before. False at the end.
    bool WaitFor(const std::string& text) {
        for (;;) {
            const size_t found = m_Output.find(text, m_Seen);
            if (found != std::string::npos) {
                m_Seen = found + text.size();
                return true;
            }
            if (!ReadSome()) {
                return false;
            }
        }
    }

    void Signal(int signal) const { kill(m_Child, signal); }
    // Whether keys are echoed and come in lines, as a shell has it.
    bool IsUsable() const {
        termios modes = {};
        EXPECT_EQ(tcgetattr(m_Terminal, &modes), 0);
        return (modes.c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
    }
    // What came behind the screen; everything when it stays.
    std::string AfterScreen() const {
        return m_Output.substr(std::min(m_Output.rfind(LEAVE), m_Output.size()));
    }
    void HangUp() {
        close(m_Terminal);
        m_Terminal = -1;
    }
    void Type(const std::string& keys) const {
        EXPECT_EQ(write(m_Terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    void Resize(unsigned short rows, unsigned short columns) const {
        const winsize size = {.ws_row = rows, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
        EXPECT_EQ(ioctl(m_Terminal, TIOCSWINSZ, &size), 0);
    }

    // After reading everything.
    CEnd End() {
        while (m_Terminal >= 0 && ReadSome()) {
        }
        int status = 0;
        EXPECT_EQ(waitpid(m_Child, &status, 0), m_Child);
        m_Child = -1;
        return qortest::EndOf(status);
    }

    const std::string& Output() const { return m_Output; }

private:
    bool ReadSome() {
        pollfd ready = {.fd = m_Terminal, .events = POLLIN, .revents = 0};
        if (poll(&ready, 1, PATIENCE) <= 0) {
            ADD_FAILURE() << "nothing comes any more after: " << m_Output;
            return false;
        }
        std::array<char, 4096> block = {};
        const ssize_t count = read(m_Terminal, block.data(), block.size());
        m_Output.append(block.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
        return count > 0;
    }

    pid_t m_Child = -1;
    int m_Terminal = -1;
    std::string m_Output;
    size_t m_Seen = 0;
};

class WatchCommandTest : public qortest::CQorctlFixture {
protected:
    void AnswerTo(int request, const std::vector<CRecord>& records) {
        Answer(records);
        fs::rename(m_Folder / "answer", m_Folder / ("answer." + std::to_string(request)));
    }

    static std::vector<std::string> Watch(std::vector<std::string> options) {
        options.insert(options.begin(), {"watch", "--plugin", STAND_IN_PLUGIN});
        return options;
    }
};

TEST_F(WatchCommandTest, ChangesAreLinesWithoutATerminal) {
    AnswerTo(1, Drive("ONLINE"));
    AnswerTo(2, {{"result", "0"}, {"error", "05"}, {"detail", "krzcli -ctrlinfo -a0"}});
    AnswerTo(3, Drive("FAILED"));
    const CEnd outcome = Run(Watch({"--interval", "1", "--count", "3"}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out,
                MatchesRegex("[-0-9T:]+Z watching 0 controllers, 0 logical drives, 1 drive, 0 PCIe "
                             "SSDs: OK\n"
                             "[-0-9T:]+Z no answer: the RAID tool did not answer in time .krzcli "
                             "-ctrlinfo -a0.\n"
                             "[-0-9T:]+Z answers again\n"
                             "[-0-9T:]+Z controller . drive PD3: ONLINE -> FAILED\n"
                             "[-0-9T:]+Z server: OK -> CRITICAL\n"));
    EXPECT_THAT(Log(), EndsWith("delete\nunload\n"));
}

TEST_F(WatchCommandTest, JsonIsLinesEvenOnATerminal) {
    Answer(Drive("ONLINE"));
    CSession session(Watch({"--count", "1", "--format", "json"}), m_Environment);
    EXPECT_EQ(session.End().status, 0);
    EXPECT_THAT(session.Output(), StartsWith("{\"schema_version\":2,\"command\":\"watch\","));
}

TEST_F(WatchCommandTest, DumbTerminalGetsLines) {
    Answer(Drive("ONLINE"));
    m_Environment["TERM"] = "dumb";
    CSession session(Watch({"--count", "1"}), m_Environment);
    EXPECT_EQ(session.End().status, 0);
    EXPECT_THAT(session.Output(), Not(HasSubstr("\x1b")));
}

TEST_F(WatchCommandTest, TerminalThatNobodyDescribesGetsLines) {
    Answer(Drive("ONLINE"));
    for (const char* type : {"foo", ""}) {
        m_Environment["TERM"] = type;
        CSession session(Watch({"--count", "1"}), m_Environment);
        EXPECT_EQ(session.End().status, 0);
        EXPECT_THAT(session.Output(),
                    StartsWith(std::string("qorctl: this system does not describe a terminal of "
                                           "the type TERM=") +
                               type));
        EXPECT_THAT(session.Output(), EndsWith(" 1 drive, 0 PCIe SSDs: OK\r\n"));
        EXPECT_THAT(session.Output(), Not(HasSubstr("\x1b")));
    }
}

TEST_F(WatchCommandTest, ScreenIsDrawnAndComesBackAtTheEnd) {
    Answer(Drive("ONLINE"));
    CSession session(Watch({"--count", "1"}), m_Environment);
    EXPECT_EQ(session.End().status, 0);
    EXPECT_THAT(session.Output(), StartsWith(ENTER));
    const size_t text = session.Output().find("3  ONLINE");
    ASSERT_NE(text, std::string::npos);
    // No cursor, and no line that goes on in the next one; and both again at the end.
    for (const std::string mode : {"\x1b[?25", "\x1b[?7"}) {
        EXPECT_GT(session.Output().rfind(mode, text), 0U);
        EXPECT_EQ(session.Output().rfind(mode, text), session.Output().rfind(mode + 'l', text));
        EXPECT_LT(text, session.Output().rfind(mode));
        EXPECT_EQ(session.Output().rfind(mode), session.Output().rfind(mode + 'h'));
    }
    EXPECT_THAT(session.AfterScreen(), AllOf(StartsWith(LEAVE), EndsWith(LAST_WORDS)));
    EXPECT_TRUE(session.IsUsable());
}

TEST_F(WatchCommandTest, EveryKindOfTerminalThatIsDescribedHasTheScreen) {
    Answer(Drive("ONLINE"));
    // The description of "linux" has no size, that of "vt100" no colours and no way back.
    for (const char* type : {"linux", "vt100", "screen", "xterm-256color"}) {
        m_Environment["TERM"] = type;
        CSession session(Watch({"--count", "1"}), m_Environment);
        EXPECT_EQ(session.End().status, 0) << type;
        EXPECT_THAT(session.Output(), AllOf(HasSubstr("q ends"), EndsWith(LAST_WORDS))) << type;
    }
}

TEST_F(WatchCommandTest, LastWordsHaveTheChangesAndTheirTimes) {
    AnswerTo(1, Drive("ONLINE"));
    AnswerTo(2, Drive("FAILED"));
    CSession session(Watch({"--interval", "1", "--count", "2"}), m_Environment);
    EXPECT_EQ(session.End().status, 0);
    EXPECT_THAT(session.AfterScreen(),
                testing::ContainsRegex("Z CRITICAL\r\n"
                                       "CRITICAL: controller . drive PD3: FAILED\r\n"
                                       "0 controllers, 0 logical drives, 1 drive, 0 PCIe SSDs\r\n"
                                       "Changes\r\n"
                                       "[-0-9T:]+Z controller . drive PD3: ONLINE -> FAILED\r\n"
                                       "[-0-9T:]+Z server: OK -> CRITICAL\r\n$"));
}

TEST_F(WatchCommandTest, ScreenComesBackAfterEverySignalThatWantsAnEnd) {
    Answer(Drive("ONLINE"));
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        CSession session(Watch({"--interval", "3600"}), m_Environment);
        ASSERT_TRUE(session.WaitFor("3  ONLINE"));
        session.Signal(signal);
        EXPECT_EQ(session.End().status, 128 + signal);
        EXPECT_THAT(session.AfterScreen(), AllOf(StartsWith(LEAVE), EndsWith(LAST_WORDS)));
        EXPECT_TRUE(session.IsUsable());
    }
}

TEST_F(WatchCommandTest, ScreenComesBackAfterEveryOtherEnd) {
    Answer(Drive("ONLINE"));
    for (const int signal : {SIGQUIT, SIGUSR1, SIGABRT}) {
        CSession session(Watch({"--interval", "3600"}), m_Environment);
        ASSERT_TRUE(session.WaitFor("3  ONLINE"));
        EXPECT_FALSE(session.IsUsable());
        session.Signal(signal);
        EXPECT_EQ(session.End().signal, signal);
        EXPECT_THAT(session.AfterScreen(), StartsWith(LEAVE));
        EXPECT_TRUE(session.IsUsable());
    }
}

TEST_F(WatchCommandTest, CtrlCIsUnderstood) {
    Answer(Drive("ONLINE"));
    CSession session(Watch({"--interval", "3600"}), m_Environment);
    ASSERT_TRUE(session.WaitFor("3  ONLINE"));
    session.Type("\x03");
    EXPECT_EQ(session.End().status, 130);
    EXPECT_THAT(session.AfterScreen(), EndsWith(LAST_WORDS));
}

TEST_F(WatchCommandTest, QEndsItAsTheLastRequestDid) {
    Answer(Drive("ONLINE"));
    CSession session(Watch({"--interval", "3600"}), m_Environment);
    ASSERT_TRUE(session.WaitFor("3  ONLINE"));
    session.Type("q");
    EXPECT_EQ(session.End().status, 0);
    EXPECT_THAT(session.AfterScreen(), EndsWith(LAST_WORDS));
    EXPECT_TRUE(session.IsUsable());
}

TEST_F(WatchCommandTest, WaitForAnAnswerIsCountedAndCanBeEnded) {
    AnswerTo(1, {{"wait", m_Folder / "fifo"}});
    ASSERT_EQ(mkfifo((m_Folder / "fifo").c_str(), 0600), 0);
    CSession session(Watch({"--interval", "3600"}), m_Environment);
    ASSERT_TRUE(session.WaitFor("no data yet"));
    ASSERT_TRUE(session.WaitFor("; asking for 1 s"));
    session.Type("q");
    EXPECT_EQ(session.End().status, 1);
    EXPECT_TRUE(session.IsUsable());
}

TEST_F(WatchCommandTest, SignalDuringARequestEndsItAtOnce) {
    AnswerTo(1, {{"wait", m_Folder / "fifo"}});
    ASSERT_EQ(mkfifo((m_Folder / "fifo").c_str(), 0600), 0);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        CSession session(Watch({"--interval", "3600"}), m_Environment);
        ASSERT_TRUE(session.WaitFor(ENTER));
        session.Signal(signal);
        EXPECT_EQ(session.End().status, 128 + signal);
        EXPECT_THAT(session.AfterScreen(), StartsWith(LEAVE));
        EXPECT_TRUE(session.IsUsable());
        fs::remove(m_Folder / "log");
    }
}

TEST_F(WatchCommandTest, TerminalThatHangsUpEndsItWhoeverIgnoresTheSignal) {
    Answer(Drive("ONLINE"));
    signal(SIGHUP, SIG_IGN);
    for (const char* input : {"/dev/tty", "/dev/null"}) {
        std::vector<std::string> words = Watch({"--interval", "3600"});
        words.insert(words.begin(), {"-c", "exec \"$@\" < $0", input, QORCTL_PROGRAM});
        CSession session(words, m_Environment, "/bin/sh");
        ASSERT_TRUE(session.WaitFor("3  ONLINE"));
        session.HangUp();
        EXPECT_EQ(session.End().status, 1) << input;
    }
    signal(SIGHUP, SIG_DFL);
}

TEST_F(WatchCommandTest, KeysAreHeardFromATerminalOnly) {
    Answer(Drive("ONLINE"));
    for (const char* input : {"</dev/null", "<&-"}) {
        std::vector<std::string> words = Watch({"--interval", "1", "--count", "2"});
        words.insert(words.begin(),
                     {"-c", std::string("exec \"$0\" \"$@\" ") + input, QORCTL_PROGRAM});
        CSession session(words, m_Environment, "/bin/sh");
        ASSERT_TRUE(session.WaitFor("3  ONLINE"));
        session.Type("q");
        EXPECT_EQ(session.End().status, 0) << input;
        EXPECT_THAT(session.AfterScreen(), EndsWith(LAST_WORDS)) << input;
        EXPECT_TRUE(session.IsUsable());
    }
}

TEST_F(WatchCommandTest, ResizedTerminalIsRedrawnToItsSizeAndScrolls) {
    Answer(Drive("ONLINE"));
    CSession session(Watch({"--interval", "3600"}), m_Environment);
    ASSERT_TRUE(session.WaitFor("3  ONLINE"));
    session.Resize(6, 60);
    EXPECT_TRUE(session.WaitFor("lines 1-3 of 5; q ends; Up"));
    session.Type("\x1bOF");  // End
    EXPECT_TRUE(session.WaitFor("3  ONLINE"));
    session.Type("\x1bOH");  // Home
    EXPECT_TRUE(session.WaitFor("1 drive, 0 PCIe SSDs"));
    session.Type("jj");
    EXPECT_TRUE(session.WaitFor("3  ONLINE"));
    session.Resize(1, 1);
    session.Resize(24, 10000);
    EXPECT_TRUE(session.WaitFor("3  ONLINE"));
    session.Signal(SIGINT);
    EXPECT_EQ(session.End().status, 130);
    EXPECT_THAT(session.AfterScreen(), EndsWith(LAST_WORDS));
}

TEST_F(WatchCommandTest, PluginThatCannotBeLoadedIsAFailureBeforeTheScreen) {
    const CEnd outcome = Run({"watch", "--plugin", "/nowhere/plugin.so"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("qorctl: the plug-in could not be loaded; tried:\n"));
}

TEST_F(WatchCommandTest, FullDiskEndsIt) {
    Answer(Drive("ONLINE"));
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = Watch({}),
                                              .environment = m_Environment,
                                              .output = "/dev/full"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("No space left on device"));
}

TEST_F(WatchCommandTest, UsageErrorsLoadNothing) {
    for (const auto& options : std::vector<std::vector<std::string>>{
             {"--interval", "0"}, {"--interval", "x"}, {"--count", "-1"}, {"--format", "xml"}}) {
        const CEnd outcome = Run(Watch(options));
        EXPECT_GT(outcome.status, 3);
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(fs::exists(m_Folder / "log"));
}

}  // namespace
