// `qorctl exec` with the real plug-in and a scripted tool, and every result with a stand-in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include "QorctlFixture.h"
#include "StandInTool.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;

class ExecCommandTest : public qortest::CQorctlFixture {
protected:
    void SetUp() override {
        CQorctlFixture::SetUp();
        m_Environment["QOR_TRACE"] = "none";
        m_Environment["PATH"] = "/usr/bin:/bin";
        m_Environment["QOR_PLUGIN"] = REAL_PLUGIN;
    }

    CEnd Exec(std::vector<std::string> words) const {
        words.insert(words.begin(), {"exec", "--"});
        return Run(words);
    }
};

TEST_F(ExecCommandTest, OutputAndErrorsOfTheToolAreShownByteForByte) {
    qortest::CStandInTool tool;
    tool.Play("-ctrlinfo -aAll", {.out = "a\tb\x1b[1m\xff\r\n", .err = "to standard error\n"});
    const CEnd outcome = Exec({"krzcli", "-ctrlinfo", "-aAll"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "a\tb\x1b[1m\xff\r\nto standard error\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ExecCommandTest, OutputIsMadeVisibleOnATerminal) {
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    Answer({{"exec", "0", "0", "a\tb\r\n\x1b[1m\rc\x7f\u009B1m\u202E\uFEFF\xff\u00B0\n"}});
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"exec", "--", "krzcli", "-v"},
                                              .environment = m_Environment,
                                              .terminal = true});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "a\tb\r\n\\x1b[1m\\rc\\x7f\\xc2\\x9b1m\\xe2\\x80\\xae\\xef\\xbb\\xbf\\xff\u00B0\n");
}

TEST_F(ExecCommandTest, LargeOutputIsWhole) {
    qortest::CStandInTool tool;
    const std::string report(300'000, 'x');
    tool.Play("-v", {.out = report + "\n"});
    EXPECT_EQ(Exec({"krzcli", "-v"}).out, report + "\n");
}

TEST_F(ExecCommandTest, ToolsOwnStatusIsTheProgramsStatus) {
    qortest::CStandInTool tool;
    tool.Play("-x", {.out = "Error - Invalid input at or near token -x\n", .status = 42});
    const CEnd outcome = Exec({"krzcli", "-x"});
    EXPECT_EQ(outcome.status, 42);
    EXPECT_EQ(outcome.out, "Error - Invalid input at or near token -x\n");
    EXPECT_EQ(outcome.err, "qorctl: the RAID tool failed, exit status 42\n");
}

TEST_F(ExecCommandTest, ErrorWithStatusZeroIsStated) {
    qortest::CStandInTool tool;
    tool.Play("-ctrlinfo -aAll", {.out = "Error - No RAID controller is found.\n"});
    const CEnd outcome = Exec({"krzcli", "-ctrlinfo", "-aAll"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "Error - No RAID controller is found.\n");
    EXPECT_EQ(outcome.err, "qorctl: the RAID tool reported an error, with exit status 0\n");
}

TEST_F(ExecCommandTest, MissingToolIs127) {
    const CEnd outcome = Exec({"krzcli", "-v"});
    EXPECT_EQ(outcome.status, 127);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: the RAID tool is not installed (/opt/tarmica/krz/cli/krzcli)\n");
}

TEST_F(ExecCommandTest, WordsAreJoinedAndTheShellReadsThem) {
    qortest::CStandInTool tool;
    tool.Play("one two", {.out = "tool\n"});
    const CEnd outcome = Exec({"krzcli one", "two; echo shell"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "tool\nshell\n");
    EXPECT_THAT(Run({"exec", "--help"}).out, HasSubstr("NOTHING IS QUOTED"));
}

TEST_F(ExecCommandTest, OutputBeyondTheLimitIsNotTaken) {
    qortest::CStandInTool tool;
    tool.Play("-v", {.run = "head -c 67108864 /dev/zero"});
    EXPECT_EQ(Exec({"krzcli", "-v"}).out.size(), 67108864U);
    tool.Play("-v", {.run = "head -c 67108865 /dev/zero"});
    const CEnd outcome = Exec({"krzcli", "-v"});
    EXPECT_EQ(outcome.status, 125);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "qorctl: the RAID tool printed more than 64 MiB\n");
}

// A folder for the output, with mount options of the test's choice.
class CVarTmp {
public:
    explicit CVarTmp(unsigned long options) {
        EXPECT_EQ(mount("none", "/var/tmp", "tmpfs", options, nullptr), 0);
    }
    ~CVarTmp() { umount2("/var/tmp", MNT_DETACH); }
    CVarTmp(const CVarTmp&) = delete;  // one mount
    CVarTmp& operator=(const CVarTmp&) = delete;
};

TEST_F(ExecCommandTest, NoFileIsLeftInAnyDirectory) {
    qortest::CStandInTool tool;
    const char* const where = "ls -l /proc/$$/fd/1 | sed 's/.* -> //; s/[0-9][0-9]*/N/'";
    m_Environment["TMPDIR"] = "/opt/tarmica/nowhere";
    {
        const CVarTmp writable(0);
        tool.Play("-v", {.run = where});
        EXPECT_EQ(Exec({"krzcli", "-v"}).out, "/var/tmp/#N (deleted)\n");
    }
    const CVarTmp readOnly(MS_RDONLY);
    tool.Play("-v", {.run = where});
    EXPECT_EQ(Exec({"krzcli", "-v"}).out, "/memfd:qorctl (deleted)\n");
}

struct CResultCase {
    const char* result;
    const char* status;
    int expected;
    const char* message;
};

TEST_F(ExecCommandTest, EachResultHasItsStatusAndMessage) {
    constexpr CResultCase CASES[] = {
        {"0", "0", 0, ""},
        {"1", "3", 3, "qorctl: the RAID tool failed, exit status 3\n"},
        {"1", "0", 0, "qorctl: the RAID tool reported an error, with exit status 0\n"},
        {"2", "255", 126, "qorctl: the RAID tool could not be run, or was killed\n"},
        {"3", "255", 127, "qorctl: the RAID tool is not installed (/opt/tarmica/krz/cli/krzcli)\n"},
        {"4", "255", 124, "qorctl: the RAID tool did not end in time and was killed\n"},
        {"9", "0", 125, "qorctl: the plug-in returned the unknown result 0x9\n"},
    };
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    for (const CResultCase& one : CASES) {
        Answer({{"exec", one.result, one.status, "output\n"}});
        const CEnd outcome = Exec({"krzcli", "-v"});
        EXPECT_EQ(outcome.status, one.expected) << one.result;
        EXPECT_EQ(outcome.out, "output\n");
        EXPECT_EQ(outcome.err, one.message);
    }
    EXPECT_THAT(Log(), HasSubstr("KRZExecCli krzcli -v\n"));
}

TEST_F(ExecCommandTest, ExceptionOfThePluginIs125) {
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    Answer({{"throw", "KRZExecCli", "out_of_range"}});
    const CEnd outcome = Exec({"krzcli", "-v"});
    EXPECT_EQ(outcome.status, 125);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("ended with an exception"));
}

TEST_F(ExecCommandTest, PluginThatCannotBeLoadedIs125) {
    m_Environment["QOR_PLUGIN"] = "/opt/tarmica/nothing.so";
    EXPECT_EQ(Exec({"krzcli", "-v"}).status, 125);
}

TEST_F(ExecCommandTest, OutputThatCannotBeWrittenIs125) {
    qortest::CStandInTool tool;
    tool.Play("-v", {.out = "text\n"});
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"exec", "--", "krzcli", "-v"},
                                              .environment = m_Environment,
                                              .output = "/dev/full"});
    EXPECT_EQ(outcome.status, 125);
    EXPECT_THAT(outcome.err, HasSubstr("No space left on device"));
}

TEST_F(ExecCommandTest, CommandIsRequired) {
    EXPECT_EQ(Run({"exec"}).status, 106);
}

}  // namespace
