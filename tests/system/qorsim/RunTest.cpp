// "qorsim run": its command, its exit status, its signals, its isolation.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using testing::HasSubstr;

class CRunTest : public CSimFixture {
protected:
    // An installation in the test's folder, which every user may read. Returns the program's path.
    std::string Install() const {
        fs::create_directories(Folder() / "bin");
        fs::copy_file(QORSIM_PROGRAM, Folder() / "bin" / "qorsim");
        const fs::path data = Folder() / "share" / "qor";
        WriteFile(data / "hosts" / "bare.json", R"({"tool": {"version": "6.5"}})");
        WriteFile(data / "hosts" / "host.schema.json", "{}");
        WriteFile(data / "RaidVCFac.ini", "raid list");
        WriteFile(data / "PciessdVCFac.ini", "ssd list");
        return Folder() / "bin" / "qorsim";
    }

    // What turns root into an ordinary user.
    static CStrings AsOrdinaryUser() {
        return geteuid() == 0
                   ? CStrings{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"}
                   : CStrings{};
    }
};

CStrings operator+(CStrings left, const CStrings& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

void ExpectAdvice(const CEnd& end) {
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.out, "");
    EXPECT_THAT(end.err, testing::StartsWith("qorsim: cannot make a user namespace: "));
    EXPECT_THAT(end.err, HasSubstr("(run as root, or let ordinary users have them: "));
}

TEST_F(CRunTest, CommandsOutputPassesThrough) {
    const CEnd end = RunShellOn("small", "echo out; echo err >&2");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "out\n");
    EXPECT_EQ(end.err, "err\n");
}

TEST_F(CRunTest, CommandsArgumentsPassUnchanged) {
    const CEnd end = RunOn("small", {"printf", "%s|", "-a", "--host", "", "two words", "--", "-h"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "-a|--host||two words|--|-h|");
}

TEST_F(CRunTest, ExitStatusIsTheCommands) {
    for (const int status : {0, 1, 7, 125, 255}) {
        const CEnd end = RunShellOn("small", "exit " + std::to_string(status));
        EXPECT_EQ(end.status, status);
        EXPECT_EQ(end.err, "");
    }
}

TEST_F(CRunTest, KilledCommandGives128PlusSignal) {
    EXPECT_EQ(RunShellOn("small", "kill -KILL $$").status, 128 + 9);
    EXPECT_EQ(RunShellOn("small", "kill -TERM $$").status, 128 + 15);
}

TEST_F(CRunTest, IgnoredChildSignalLosesNoExitStatus) {
    const CEnd end = RunProgram(
        {"env", "--ignore-signal=CHLD", QORSIM_PROGRAM, "run", "--host", "small", "--", "false"});
    EXPECT_EQ(end.status, 1) << end.err;
}

TEST_F(CRunTest, UnknownCommandGives127) {
    const CEnd end = RunOn("small", {"no-such-program"});
    EXPECT_EQ(end.status, 127);
    EXPECT_EQ(end.err, "qorsim: cannot run no-such-program: No such file or directory\n");
}

TEST_F(CRunTest, CommandThatCannotRunGives126) {
    const CEnd end = RunOn("small", {"/etc/passwd"});
    EXPECT_EQ(end.status, 126);
    EXPECT_EQ(end.err, "qorsim: cannot run /etc/passwd: Permission denied\n");
}

// The command sends the signal to qorsim, its parent, and ends only when it comes back.
TEST_F(CRunTest, SignalsThatAskForTheEndAreHandedOn) {
    for (const std::string name : {"TERM", "INT", "HUP", "QUIT"}) {
        const CEnd end = RunShellOn("small", "trap 'echo got " + name + "; exit 5' " + name +
                                                 "; kill -" + name + " $PPID; while :; do :; done");
        EXPECT_EQ(end.status, 5);
        EXPECT_EQ(end.out, "got " + name + "\n");
    }
}

TEST_F(CRunTest, CommandSeesNoBlockedSignal) {
    const CEnd end = RunOn("small", {"grep", "SigBlk", "/proc/self/status"});
    EXPECT_EQ(end.out, "SigBlk:\t0000000000000000\n");
}

TEST_F(CRunTest, CommandEndsWithItsKeeper) {
    const CEnd end =
        RunShellOn("small", "trap 'echo ended; exit' TERM; kill -KILL $PPID; while :; do :; done");
    EXPECT_EQ(end.signal, SIGKILL);
    EXPECT_EQ(end.out, "ended\n");
}

TEST_F(CRunTest, ProgramsBesideQorsimAreFoundFirst) {
    const CEnd end = RunShellOn("small", "command -v qorsim; echo \"$PATH\"");
    const std::string folder = fs::path(QORSIM_PROGRAM).parent_path();
    EXPECT_EQ(end.out, QORSIM_PROGRAM "\n" + folder + ":" + std::getenv("PATH") + "\n");
}

TEST_F(CRunTest, WorkingDirectoryStays) {
    EXPECT_EQ(RunOn("small", {"pwd"}).out, fs::current_path().string() + "\n");
}

TEST_F(CRunTest, OutsideServerIsUntouched) {
    WriteFile("/opt/tarmica/outside", "mine");
    WriteFile("/etc/opt/tarmica/outside", "mine");
    const std::string before = RunProgram({"find", "/opt", "/etc/opt", "-ls"}).out;
    const std::string mounts = ReadFile("/proc/self/mountinfo");

    const CEnd end = RunShellOn(
        "small", "ls /opt/tarmica /etc/opt/tarmica; touch /opt/tarmica/x /etc/opt/tarmica/qor/x");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "/etc/opt/tarmica:\nqor\n\n/opt/tarmica:\nkrz\nqor\n");

    EXPECT_EQ(RunProgram({"find", "/opt", "/etc/opt", "-ls"}).out, before);
    EXPECT_EQ(ReadFile("/proc/self/mountinfo"), mounts);
}

TEST_F(CRunTest, EveryRunStartsFresh) {
    RunShellOn("small", "touch /opt/tarmica/qor/provider/tmp/left");
    EXPECT_EQ(RunShellOn("small", "ls /opt/tarmica/qor/provider/tmp").out, "");
}

TEST_F(CRunTest, RunsNest) {
    const CEnd end = RunShellOn("large",
                                "qorsim run --host small -- /opt/tarmica/krz/cli/krzcli -pssdinfo "
                                "-aAll; wc -l < /opt/tarmica/qor/kam/work/devices.tmp");
    EXPECT_EQ(end.out, "Error - No PCIe SSD is found.\n10\n");
}

TEST_F(CRunTest, UnknownHostNamesTheShippedOnes) {
    const CEnd end = RunOn("huge", {"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err, "qorsim: there is no host named \"huge\": the shipped ones are " +
                           Joined(ShippedHosts(), ", ") + "; write ./huge for a file\n");
}

TEST_F(CRunTest, MissingProfileIsNamed) {
    const std::string path = Folder() / "none.json";
    const CEnd end = RunOn(path, {"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err, "qorsim: cannot read " + path + ": No such file or directory\n");
}

TEST_F(CRunTest, DirectoryAsProfileIsRefused) {
    const CEnd end = RunOn(Folder(), {"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err, "qorsim: cannot read " + Folder().string() + ": it is a directory\n");
}

TEST_F(CRunTest, IncompleteCommandLinesAreRefused) {
    const std::pair<CStrings, const char*> cases[] = {
        {{}, "a command is missing; "},
        {{"run"}, "--host HOST is missing: "},
        {{"run", "--", "true"}, "--host HOST is missing: "},
        {{"run", "--host", "small"}, "command is missing: "},
        {{"walk"}, "there is no command \"walk\"; "},
        {{"run", "--hosts", "small", "--", "true"}, "did you mean \"--host\"?"},
    };
    for (const auto& [arguments, message] : cases) {
        CStrings command = {QORSIM_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const CEnd end = RunProgram(command);
        EXPECT_NE(end.status, 0);
        EXPECT_EQ(end.out, "");
        EXPECT_THAT(end.err, HasSubstr(message));
    }
}

TEST_F(CRunTest, HelpNamesOptionsAndExitStatuses) {
    const CEnd end = RunProgram({QORSIM_PROGRAM, "run", "--help"});
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.out, HasSubstr("--host"));
    EXPECT_THAT(end.out, HasSubstr("125 when the server cannot be simulated"));
}

// An installed program uses the data beside it.
TEST_F(CRunTest, InstalledProgramUsesItsOwnHosts) {
    const std::string program = Install();
    const CEnd end =
        RunProgram({program, "run", "--host", "bare", "--", "sh", "-c",
                    "/opt/tarmica/krz/cli/krzcli -v; cat /opt/tarmica/qor/provider/*.ini"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr("Product Version : 6.5\n"));
    EXPECT_THAT(end.out, HasSubstr("ssd listraid list"));
    EXPECT_THAT(RunProgram({program, "run", "--host", "small", "--", "true"}).err,
                HasSubstr("the shipped ones are bare;"));
}

// Where ordinary users may have namespaces the run works; elsewhere the message says what to do.
TEST_F(CRunTest, OrdinaryUserRunsOrIsToldWhatToDo) {
    const CEnd end = RunProgram(AsOrdinaryUser() +
                                CStrings{Install(), "run", "--host", "bare", "--", "sh", "-c",
                                         "id -u; /opt/tarmica/krz/cli/krzcli -v | grep Version"});
    if (RunProgram(AsOrdinaryUser() + CStrings{"unshare", "--user", "--mount", "true"}).status !=
        0) {
        ExpectAdvice(end);
        return;
    }
    const std::string user = geteuid() == 0 ? "65534" : std::to_string(geteuid());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, user + "\nProduct Version : 6.5\n");
}

// A user namespace that has no further ones is what a machine looks like that forbids them.
// In a chroot nobody may have a user namespace; elsewhere the limit is set to none.
TEST_F(CRunTest, UserWhoMayHaveNoNamespaceIsToldWhatToDo) {
    const bool chrooted = RunProgram({"unshare", "--user", "true"}).status != 0;
    ExpectAdvice(RunProgram(
        chrooted ? AsOrdinaryUser() + CStrings{Install(), "run", "--host", "bare", "--", "true"}
                 : CStrings{"unshare", "--user", "--map-root-user", "sh", "-c",
                            "echo 0 > /proc/sys/user/max_user_namespaces && exec setpriv "
                            "--bounding-set=-all --inh-caps=-all " QORSIM_PROGRAM
                            " run --host small -- true"}));
}

}  // namespace
}  // namespace qortest
