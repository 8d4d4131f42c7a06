// The shipped library in a host process of its own (comlib_caller), from configuration to sink.
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <future>
#include <regex>

#include "ComLibFixture.h"
#include "Process.h"
#include "plugin/ComLib.h"
#include "util/UniqueFd.h"

namespace {

namespace fs = std::filesystem;
using qortest::CEnd;
using qortest::CEnvironment;
using qortest::Lines;
using qortest::ReadFile;
using qortest::RunCommand;
using qortest::WriteFile;
using util::CUniqueFd;
using Texts = std::vector<std::string>;

constexpr const char* CALLER = QOR_COMLIB_CALLER;
constexpr const char* NO_ENVIRONMENT = "";

std::vector<char*> Pointers(Texts& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::string Message(const std::string& line) {
    const size_t processEnd = line.find(' ', line.find(' ') + 1);
    return line.substr(processEnd + 1);
}

class CTraceUtilityTest : public qortest::CComLibFixture {
protected:
    fs::path Trace() const { return Scratch() / "trace.log"; }
    // What the calls so far have written there.
    const std::string& StandardError() const { return m_StandardError; }

    // The caller with QOR_TRACE set to `trace`.
    static CEnd Run(const std::string& trace, const Texts& arguments) {
        CEnvironment environment;
        if (trace != NO_ENVIRONMENT) {
            environment["QOR_TRACE"] = trace;
        }
        return RunCommand({.program = CALLER, .arguments = arguments, .environment = environment});
    }

    void Call(const std::string& trace, const Texts& arguments) {
        const CEnd end = Run(trace, arguments);
        EXPECT_EQ(end.status, 0);
        m_StandardError += end.err;
    }

    Texts TracedMessages() const {
        Texts messages;
        for (const std::string& line : Lines(ReadFile(Trace()))) {
            messages.push_back(Message(line));
        }
        return messages;
    }

    std::string m_StandardError;
};

TEST_F(CTraceUtilityTest, FileGetsTheLine) {
    Call("file:" + Trace().string() + ":31", {"4", "a\nb"});
    EXPECT_EQ(TracedMessages(), Texts{"Caller FLOW a\\nb"});
    EXPECT_EQ(StandardError(), "");
}

TEST_F(CTraceUtilityTest, StandardErrorGetsTheLine) {
    Call("stderr:31", {"1", "found"});
    EXPECT_EQ(Message(StandardError()), "Caller RESULT found\n");
}

TEST_F(CTraceUtilityTest, NoneGetsNothing) {
    Call("none", {"2", "x"});
    Call("none:31", {"2", "x"});
    EXPECT_EQ(StandardError(), "");
}

TEST_F(CTraceUtilityTest, LevelIsOnIfItsBitIsSet) {
    for (const int mask : {0, 1, 2, 3, 16, 31}) {
        for (const int level : {1, 2, 4, 8, 16}) {
            m_StandardError.clear();
            Call("stderr:" + std::to_string(mask), {std::to_string(level), "x"});
            EXPECT_EQ(StandardError().empty(), (mask & level) == 0) << mask << ' ' << level;
        }
    }
}

TEST_F(CTraceUtilityTest, ConfigurationFileChoosesTheSink) {
    WriteFile(qortest::CONFIGURATION_FILE,
              "[Trace]\nSink=file\nLevels=4\nFile=" + Trace().string() + "\n");
    Call(NO_ENVIRONMENT, {"4", "flow"});
    Call(NO_ENVIRONMENT, {"2", "failure"});
    EXPECT_EQ(TracedMessages(), Texts{"Caller FLOW flow"});
}

TEST_F(CTraceUtilityTest, EnvironmentOverridesTheConfigurationFile) {
    WriteFile(qortest::CONFIGURATION_FILE,
              "[Trace]\nSink=file\nLevels=31\nFile=" + Trace().string() + "\n");
    Call("stderr", {"4", "flow"});
    EXPECT_EQ(Message(StandardError()), "Caller FLOW flow\n") << "levels of the file";
    Call("stdout:7", {"4", "ignored"});
    EXPECT_EQ(TracedMessages(), Texts{"Caller FLOW ignored"});
}

TEST_F(CTraceUtilityTest, RotatedFileIsLeftAtOnce) {
    Call("file:" + Trace().string() + ":31", {"1", "line ", "3", "8", Trace()});
    EXPECT_FALSE(fs::exists(Trace()));
    for (const char* number : {"0", "1", "2"}) {
        EXPECT_EQ(Message(ReadFile(Trace().string() + "." + number)),
                  std::string("Caller RESULT line ") + number + " x\n");
    }
}

TEST_F(CTraceUtilityTest, MissingDirectoryFullDiskAndForbiddenFileHarmNothing) {
    Call("file:" + (Scratch() / "missing" / "t.log").string() + ":31", {"2", "x", "10"});
    Call("file:/dev/full:31", {"2", "x", "10"});
    Call("file:" + Scratch().string() + ":31", {"2", "x", "10"});
    EXPECT_EQ(StandardError(), "");
}

TEST_F(CTraceUtilityTest, LinesOfTwoProcessesDoNotMix) {
    constexpr size_t LENGTH = 9000;
    constexpr size_t LINES = 300;
    const std::string trace = "file:" + Trace().string() + ":31";
    const auto run = [&](const char* text) {
        return Run(trace, {"1", text, std::to_string(LINES), std::to_string(LENGTH)}).status;
    };
    std::future<int> first = std::async(std::launch::async, run, "a");
    EXPECT_EQ(run("b"), 0);
    EXPECT_EQ(first.get(), 0);
    const std::regex whole("Caller RESULT [ab][0-9]+ x+");
    const Texts messages = TracedMessages();
    EXPECT_EQ(messages.size(), 2 * LINES);
    for (const std::string& message : messages) {
        ASSERT_EQ(message.size(), std::strlen("Caller RESULT ") + LENGTH);
        ASSERT_EQ(message.find_first_not_of('x', message.rfind(' ') + 1), std::string::npos);
    }
}

// Runs `action` in a child; demands exit status 0.
template <typename Action>
void InChild(Action action) {
    const pid_t child = fork();
    if (child == 0) {
        action();
        _exit(127);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

void ExecCaller(const char* program, const std::string& trace) {
    std::string variable = "QOR_TRACE=" + trace;
    Texts arguments = {program, "2", "message"};
    Texts environment = {variable};
    execve(program, Pointers(arguments).data(), Pointers(environment).data());
}

// The settings are being read, which takes long, while the host forks.
TEST_F(CTraceUtilityTest, ForkDuringTheFirstLineLeavesAChildThatTraces) {
    std::string configuration = "[Trace]\nSink=none\n[Others]\n";
    for (int key = 0; key < 100'000; ++key) {
        configuration += "Key" + std::to_string(key) + "=value\n";
    }
    WriteFile(qortest::CONFIGURATION_FILE, configuration);
    Call(NO_ENVIRONMENT, {"fork"});
}

// A set-group-id program is as privileged to the C library as a set-user-id one, and as root it can
// still read a library that lies below root's home directory.
TEST_F(CTraceUtilityTest, EnvironmentIsIgnoredByAPrivilegedProgram) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a program of somebody else's group";
    }
    constexpr gid_t NOGROUP = 65534;
    const std::string directory = "/opt/tarmica/sgid";
    const std::string program = directory + "/caller";
    const std::string trace = "file:" + Trace().string() + ":31";
    fs::create_directory(directory);
    ASSERT_EQ(mount("none", directory.c_str(), "tmpfs", 0, "mode=0755"), 0);
    fs::copy_file(CALLER, program);
    WriteFile(qortest::CONFIGURATION_FILE, "[Trace]\nSink=none\n");
    const auto call = [&] { InChild([&] { ExecCaller(program.c_str(), trace); }); };
    ASSERT_EQ(chown(program.c_str(), 0, NOGROUP), 0);
    ASSERT_EQ(chmod(program.c_str(), 02755), 0);
    call();
    EXPECT_FALSE(fs::exists(Trace()));
    ASSERT_EQ(chmod(program.c_str(), 0755), 0);
    call();
    EXPECT_TRUE(fs::exists(Trace())) << "the same call without the set-group-id bit";
    umount2(directory.c_str(), MNT_DETACH);
}

// In the calling child: a "/dev" of its own in which `socket` is the system log.
bool BecomeSystemLog(int socket) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    return unshare(CLONE_NEWNS) == 0 && mount("none", "/dev", "tmpfs", 0, nullptr) == 0 &&
           bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

std::string Received(int socket) {
    std::array<char, 1024> text;
    const ssize_t size = recv(socket, text.data(), text.size(), MSG_DONTWAIT);
    return size < 0 ? "nothing" : std::string(text.data(), static_cast<size_t>(size));
}

// syslog() has a lock of the C library's. In an empty "/dev" no system log is filled.
TEST_F(CTraceUtilityTest, ForkWhileThreadsTraceLeavesChildrenThatTrace) {
    for (const std::string& trace : {std::string("syslog:31"), "file:" + Trace().string()}) {
        SCOPED_TRACE(trace);
        InChild([&trace] {
            if (unshare(CLONE_NEWNS) != 0 || mount("none", "/dev", "tmpfs", 0, nullptr) != 0) {
                _exit(1);
            }
            setenv("QOR_TRACE", trace.c_str(), 1);
            execl(CALLER, CALLER, "fork-often", nullptr);
        });
    }
}

TEST_F(CTraceUtilityTest, SystemLogGetsTheMessageAtItsPriority) {
    const CUniqueFd log(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const fs::path input = Scratch() / "input";
    WriteFile(input, "");
    InChild([&] {
        if (!BecomeSystemLog(log.Get())) {
            _exit(1);
        }
        for (const int level : {1, 2, 4, 16}) {
            CTraceUtility::WriteDebug("x", CTraceUtility::TRACE_DBG_FLOW, "to the file");
            const CEnd end = RunCommand({.program = CALLER,
                                         .arguments = {std::to_string(level), "100%s\n"},
                                         .environment = CEnvironment{{"QOR_TRACE", "syslog:31"}},
                                         .input = input});
            if (end.status != 2) {  // syslog keeps a descriptor
                _exit(2);
            }
        }
        _exit(0);
    });
    // <facility * 8 + severity>: user (1), and notice (5), error (3), debug (7), information (6)
    for (const char* priority : {"<13>", "<11>", "<15>", "<14>"}) {
        const std::regex layout(std::string(priority) + ".* comlib_caller: Caller: 100%s\\\\n");
        const std::string text = Received(log.Get());
        EXPECT_TRUE(std::regex_match(text, layout)) << text;
    }
    EXPECT_EQ(Received(log.Get()), "nothing");
    TakeTraces();
}

TEST_F(CTraceUtilityTest, LevelThatIsOffCostsNoFormatting) {
    int formatted = -1;
    constexpr auto NO_LEVEL = static_cast<CTraceUtility::TRACE_DBG_LEVEL>(0);
    CTraceUtility::WriteDebug("M", NO_LEVEL, "%n", &formatted);
    EXPECT_EQ(formatted, -1);
    EXPECT_EQ(TakeTraces(), Texts{});
}

// "%m" is not ISO C++, but hosts use it.
#pragma GCC diagnostic ignored "-Wformat"

TEST_F(CTraceUtilityTest, ErrnoStaysAndCanBeFormatted) {
    errno = EACCES;
    CTraceUtility::WriteDebug("M", CTraceUtility::TRACE_DBG_FLOW, "%m");
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(TakeTraces(), Texts{"M FLOW Permission denied"});
}

}  // namespace
