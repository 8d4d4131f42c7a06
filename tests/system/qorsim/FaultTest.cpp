// "qorsim run --fault": what the stand-in tools do, as the shell sees it.
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::HasSubstr;

constexpr const char* KRZCLI = "/opt/tarmica/krz/cli/krzcli";
constexpr int KILLED = 128 + 9;

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
    for (size_t i = 0; (i = text.find(what, i)) != std::string::npos; i += with.size()) {
        text.replace(i, what.size(), with);
    }
    return text;
}

class CFaultTest : public CSimFixture {
protected:
    static CEnd RunWith(const CStrings& faults, const CStrings& command) {
        CStrings whole = {QORSIM_PROGRAM, "run", "--host", "small"};
        for (const std::string& fault : faults) {
            whole.insert(whole.end(), {"--fault", fault});
        }
        whole.emplace_back("--");
        whole.insert(whole.end(), command.begin(), command.end());
        return RunProgram(whole);
    }

    static CEnd Version(const CStrings& faults) { return RunWith(faults, {KRZCLI, "-v"}); }

    // The text of a shell command in which $K is krzcli.
    static CEnd Shell(const CStrings& faults, const std::string& text) {
        return RunWith(faults, {"sh", "-c", std::string("K=") + KRZCLI + "; " + text});
    }

    static void ExpectRefused(const std::string& fault, const std::string& problem) {
        const CEnd end = Version({fault});
        EXPECT_EQ(end.status, 125) << fault;
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err,
                  "qorsim: the fault \"" + Replaced(fault, "\n", "\\n") + "\": " + problem + "\n");
    }
};

TEST_F(CFaultTest, TextFaultsChangeTheReport) {
    const std::string plain = Krzcli("small", {"-v"});
    std::string nuls = plain;
    for (size_t i = 9; i < nuls.size(); i += 10) {
        nuls[i] = '\0';
    }
    std::string manyTimes;
    for (int i = 0; i < 10; ++i) {
        manyTimes += plain;
    }
    const struct {
        const char* fault;
        int status;
        std::string out;
    } rows[] = {
        {"empty", 0, ""},
        {"truncate=20", 0, plain.substr(0, 20)},
        {"truncate=0", 0, ""},
        {"truncate=1M", 0, plain},
        {"no-newline", 0, plain.substr(0, plain.find_last_not_of('\n') + 1)},
        {"crlf", 0, Replaced(plain, "\n", "\r\n")},
        {"tabs", 0, Replaced(plain, " ", "\t")},
        {"nul=10", 0, nuls},
        {"error", 0, "Error - Simulated fault.\n"},
        {"error=No RAID controller is found.", 0, "Error - No RAID controller is found.\n"},
        {"bad-token", 1, "Error - Invalid input at or near token -v\n"},
        {"size=1k", 0, manyTimes.substr(0, 1000)},
        {"size=10", 0, plain.substr(0, 10)},
        {"exit", 1, plain},
        {"exit=0", 0, plain},
        {"exit=255", 255, plain},
        {"kill", KILLED, plain},
        {"kill=11", 128 + 11, plain},
        {"kill=15", 128 + 15, plain},
        {"delay=0", 0, plain},
        {"drip=0", 0, plain},
    };
    ASSERT_GE(plain.size(), 100U);
    for (const auto& row : rows) {
        const CEnd end = Shell({row.fault}, "$K -v");
        EXPECT_EQ(end.status, row.status) << row.fault;
        EXPECT_EQ(end.out, row.out) << row.fault;
    }
}

TEST_F(CFaultTest, SizeIs100MegabytesByDefault) {
    EXPECT_EQ(Shell({"size"}, "$K -v | wc -c").out, "100000000\n");
}

TEST_F(CFaultTest, ReportCanGoToStandardError) {
    const CEnd end = Version({"stderr"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err, Krzcli("small", {"-v"}));
}

TEST_F(CFaultTest, MutationIsThatOfItsSeed) {
    const std::string plain = Krzcli("small", {"-v"});
    const std::string first = Version({"mutate=1"}).out;
    EXPECT_EQ(Version({"mutate"}).out, first);
    for (const std::string seed : {"1", "2", "3", "4", "5"}) {
        const std::string out = Version({"mutate=" + seed}).out;
        EXPECT_NE(out, plain) << seed;
        EXPECT_EQ(out == first, seed == "1");
    }
}

TEST_F(CFaultTest, FaultsWorkInTheOrderGiven) {
    EXPECT_EQ(Version({"error=a b", "tabs", "no-newline", "exit=7"}).out, "Error\t-\ta\tb");
    EXPECT_EQ(Version({"error=a b", "tabs", "no-newline", "exit=7"}).status, 7);
    EXPECT_EQ(Version({"tabs", "error=a b"}).out, "Error - a b\n");
    EXPECT_EQ(Version({"exit=7", "bad-token"}).status, 1);
}

TEST_F(CFaultTest, DelayedReportComesLater) {
    const auto start = steady_clock::now();
    const CEnd end = Version({"delay=200"});
    EXPECT_GE(steady_clock::now() - start, milliseconds(200));
    EXPECT_EQ(end.out, Krzcli("small", {"-v"}));
}

TEST_F(CFaultTest, DrippingReportPausesBehindEveryByte) {
    const auto start = steady_clock::now();
    const CEnd end = Version({"truncate=20", "drip=10"});
    EXPECT_GE(steady_clock::now() - start, milliseconds(200));
    EXPECT_EQ(end.out, Krzcli("small", {"-v"}).substr(0, 20));
}

TEST_F(CFaultTest, HangingToolWritesItsReportAndStays) {
    const CEnd end = Shell({"hang"}, "timeout 0.3 $K -v");
    EXPECT_EQ(end.status, 124);
    EXPECT_EQ(end.out, Krzcli("small", {"-v"}));
}

long CountOf(const CStrings& lines, const std::string& line) {
    return std::count(lines.begin(), lines.end(), line);
}

// Sends TERM when the report is there, and KILL at once behind it: the status tells which did it.
std::string TermThenKill() {
    return "cd " + std::string(INSTALL_DIR) +
           "/tmp; $K -v > report & until grep -q Version report; do :; done; kill -TERM $!; "
           "kill -KILL $!; wait $!; echo $?";
}

TEST_F(CFaultTest, HangingToolDiesOfTermUnlessItIgnoresIt) {
    EXPECT_EQ(Shell({"hang"}, TermThenKill()).out, "143\n");
    EXPECT_EQ(Shell({"hang-term"}, TermThenKill()).out, "137\n");
}

// The pipe behind the tool reaches its end only with the child, which `qorsim run` ends.
TEST_F(CFaultTest, ChildHoldsTheOutputWhenItsToolHasEnded) {
    const CEnd end = Shell({"hang-child", "exit=3"},
                           "{ $K -v; echo \"tool $?\"; } | { sed /tool/q; timeout 0.2 cat; echo "
                           "\"output $?\"; }");
    EXPECT_EQ(end.out, Krzcli("small", {"-v"}) + "tool 3\noutput 124\n");
}

TEST_F(CFaultTest, StoppedToolEndsWhenContinued) {
    const CEnd end = Shell({"stop", "exit=4"},
                           "$K -v & until grep -q '^State:.T' /proc/$!/status; do :; done; kill "
                           "-CONT $!; wait $!; echo $?");
    EXPECT_EQ(end.out, Krzcli("small", {"-v"}) + "4\n");
}

TEST_F(CFaultTest, VanishedToolHasRunOnce) {
    const CEnd end =
        Shell({"vanish#2"}, "for i in 1 2 3; do $K -v > /dev/null 2>&1; echo $?; done; ls ${K%/*}");
    EXPECT_EQ(end.out, "0\n0\n127\n");
}

TEST_F(CFaultTest, UtilityVanishesAlone) {
    const CEnd end = Shell({"vanish@storcli"}, "cd " + std::string(INSTALL_DIR) +
                                                   "/RAID/tool; ./storcli /call show > /dev/null; "
                                                   "echo $?; ls; ls $K");
    EXPECT_EQ(end.out, std::string("0\nMegaCli\n") + KRZCLI + "\n");
}

TEST_F(CFaultTest, ToolThatIsNotExecutableIsThere) {
    const CEnd end = Version({"not-executable"});
    EXPECT_EQ(end.status, 126);
    EXPECT_EQ(end.err, std::string("qorsim: cannot run ") + KRZCLI + ": Permission denied\n");
    EXPECT_EQ(Shell({"not-executable"}, "test -f $K").status, 0);
    EXPECT_EQ(
        Shell({"not-executable@MegaCli"}, "$K -v > /dev/null && cd " + std::string(INSTALL_DIR) +
                                              "/RAID/tool && test ! -x MegaCli -a -x storcli")
            .status,
        0);
}

TEST_F(CFaultTest, MissingToolStaysMissing) {
    nlohmann::json profile = ShippedProfile("small");
    profile["tool"]["missing"] = {"krzcli"};
    const CEnd end = RunProgram({QORSIM_PROGRAM, "run", "--host", WriteProfile(profile), "--fault",
                                 "not-executable", "--", "test", "-e", KRZCLI});
    EXPECT_EQ(end.status, 1) << end.err;
}

TEST_F(CFaultTest, ResultDirectoryCanBeUnwritable) {
    const CEnd end = Shell({"result-dir-unwritable"}, "cd " + std::string(RESULT_DIR) + " && > x");
    EXPECT_NE(end.status, 0);
    EXPECT_THAT(end.err, HasSubstr("Read-only file system"));
}

TEST_F(CFaultTest, ResultDirectoryCanBeFull) {
    const CEnd end = Shell({"result-dir-full"}, "cd " + std::string(RESULT_DIR) +
                                                    " && > x && $K -v > x; echo $?; wc -c < x; "
                                                    "head -c 1 /dev/zero > y");
    EXPECT_EQ(end.out, "0\n0\n");
    EXPECT_THAT(end.err, HasSubstr("No space left on device"));
}

TEST_F(CFaultTest, DeviceListCanBeMissing) {
    EXPECT_EQ(RunWith({"no-device-list"}, {"test", "-e", DEVICE_LIST}).status, 1);
}

TEST_F(CFaultTest, DeviceListCanBeUnreadable) {
    const CEnd end = Shell({"unreadable-device-list"},
                           std::string("test -e ") + DEVICE_LIST + " && cat " + DEVICE_LIST);
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.out, "");
    EXPECT_THAT(end.err, HasSubstr("Is a directory"));
}

TEST_F(CFaultTest, CommandChoosesTheRuns) {
    const std::string all =
        "$K -v > /dev/null; echo $?; $K -ctrlinfo -a0 > /dev/null; echo $?; "
        "$K -ldpdinfo -a0 > /dev/null; echo $?; cd " +
        std::string(INSTALL_DIR) +
        "/RAID/tool; ./MegaCli -AdpAllInfo -aALL > /dev/null; echo $?; "
        "./storcli /call show > /dev/null; echo $?";
    const std::pair<const char*, const char*> rows[] = {
        {"exit=9", "9\n9\n9\n0\n0\n"},
        {"exit=9@-v", "9\n0\n0\n0\n0\n"},
        {"exit=9@-a", "0\n9\n9\n0\n0\n"},
        {"exit=9@-ldpdinfo -a0", "0\n0\n9\n0\n0\n"},
        {"exit=9@krzcli", "9\n9\n9\n0\n0\n"},
        {"exit=9@krzcli -c", "0\n9\n0\n0\n0\n"},
        {"exit=9@MegaCli", "0\n0\n0\n9\n0\n"},
        {"exit=9@MegaCli -AdpAllInfo", "0\n0\n0\n9\n0\n"},
        {"exit=9@MegaCli -other", "0\n0\n0\n0\n0\n"},
        {"exit=9@storcli /call", "0\n0\n0\n0\n9\n"},
    };
    for (const auto& [fault, out] : rows) {
        EXPECT_EQ(Shell({fault}, all).out, out) << fault;
    }
}

TEST_F(CFaultTest, WhenChoosesAmongTheMatchingRuns) {
    const std::string four =
        "for i in 1 2 3 4; do $K -ctrlinfo -a0 > /dev/null; printf $?; $K -v > /dev/null; done";
    const std::pair<const char*, const char*> rows[] = {
        {"exit=9@-c", "9999"},     {"exit=9@-c#1", "9000"},   {"exit=9@-c#3", "0090"},
        {"exit=9@-c#1-2", "9900"}, {"exit=9@-c#2-3", "0990"}, {"exit=9@-c#3-", "0099"},
        {"exit=9@-c#5", "0000"},   {"exit=9@-c#2-2", "0900"}, {"exit=9#1-3", "9900"},
    };
    for (const auto& [fault, out] : rows) {
        EXPECT_EQ(Shell({fault}, four).out, out) << fault;
    }
    EXPECT_EQ(Shell({"exit=9@-c#1", "exit=8@-c#3"}, four).out, "9080");
}

TEST_F(CFaultTest, FaultThatNeverStruckIsNamedAtTheEnd) {
    const CEnd never = Shell({"exit@-nosuchcmd"}, "$K -v; $K -v; $K -ctrlinfo -a0 >&2; exit 3");
    EXPECT_EQ(never.status, 3);
    EXPECT_THAT(never.err,
                testing::EndsWith("qorsim: the fault \"exit@-nosuchcmd\" never struck: no command "
                                  "matched it; there were: krzcli -v, krzcli -ctrlinfo -a0\n"));
    const CEnd late = Shell({"exit#5-6", "crlf"}, "$K -v; $K -v");
    EXPECT_EQ(late.status, 0);
    EXPECT_EQ(late.err,
              "qorsim: the fault \"exit#5-6\" never struck: 2 commands matched it; there were: "
              "krzcli -v\n");
    const CEnd none = RunWith({"hang", "empty@storcli"}, {"true"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.err,
              "qorsim: the fault \"hang\" never struck: no tool was run\n"
              "qorsim: the fault \"empty@storcli\" never struck: no tool was run\n");
    const CEnd odd = Shell({"exit@-x"}, "$K \"$(printf '\\033[1m\\n')\" >/dev/null");
    EXPECT_THAT(odd.err, HasSubstr("there were: krzcli \\x1b[1m"));
}

TEST_F(CFaultTest, FaultThatStruckIsNotNamed) {
    EXPECT_EQ(Shell({"crlf", "tabs#2"}, "$K -v; $K -v").err, "");
    EXPECT_EQ(RunWith({"not-executable", "result-dir-full", "no-device-list"}, {"true"}).err, "");
}

TEST_F(CFaultTest, RunsAtTheSameTimeAreCountedOnceEach) {
    const CEnd end = Shell({"exit=3#1-20"},
                           "for i in $(seq 40); do { $K -v > /dev/null; echo $?; } & done; wait");
    EXPECT_EQ(CountOf(Lines(end.out), "3"), 20);
    EXPECT_EQ(CountOf(Lines(end.out), "0"), 20);
}

TEST_F(CFaultTest, MistakesAreNamed) {
    const std::pair<const char*, const char*> rows[] = {
        {"truncate", "truncate needs a value: truncate=BYTES"},
        {"truncate=x",
         "the value \"x\" of truncate is no number from 0 to 1000000000 (k and M "
         "behind it are units)"},
        {"size=2000M",
         "the value \"2000M\" of size is no number from 0 to 1000000000 (k and M "
         "behind it are units)"},
        {"exit=256", "the value \"256\" of exit is no number from 0 to 255"},
        {"exit=-1", "the value \"-1\" of exit is no number from 0 to 255"},
        {"exit=", "the value \"\" of exit is no number from 0 to 255"},
        {"exit=1 ", "the value \"1 \" of exit is no number from 0 to 255"},
        {"kill=0", "the value \"0\" of kill is no number from 1 to 64"},
        {"nul=0", "the value \"0\" of nul is no number from 1 to 2147483647"},
        {"hang=3", "hang takes no value, but has \"3\""},
        {"hang@", "there is nothing behind \"@\": a tool's name or a part of its arguments is due"},
        {"hang#0", "\"#0\" is not of the form #N, #N-M or #N-, counted from 1"},
        {"hang#", "\"#\" is not of the form #N, #N-M or #N-, counted from 1"},
        {"hang#3-2", "\"#3-2\" is not of the form #N, #N-M or #N-, counted from 1"},
        {"hang#2-0", "\"#2-0\" is not of the form #N, #N-M or #N-, counted from 1"},
        {"hang#-2", "\"#-2\" is not of the form #N, #N-M or #N-, counted from 1"},
        {"hang#one", "\"#one\" is not of the form #N, #N-M or #N-, counted from 1"},
        {"not-executable@-v",
         "not-executable is a fault of a whole tool: there is no tool "
         "\"-v\", but krzcli, MegaCli, storcli"},
        {"not-executable#1", "not-executable is there from the start: \"#1\" has no place there"},
        {"no-device-list@-v",
         "no-device-list is a fault of the server, not of runs: \"@-v\" has "
         "no place there"},
        {"result-dir-full#1",
         "result-dir-full is there from the start: \"#1\" has no place "
         "there"},
        {"error=a\nb", "it has a line feed"},
    };
    for (const auto& [fault, problem] : rows) {
        ExpectRefused(fault, problem);
    }
}

TEST_F(CFaultTest, UnknownKindNamesTheKnownOnes) {
    const CEnd end = Version({"sleep"});
    EXPECT_EQ(end.status, 125);
    EXPECT_THAT(end.err, testing::StartsWith("qorsim: the fault \"sleep\": there is no kind "
                                             "\"sleep\": the kinds are hang, hang-term, "));
}

TEST_F(CFaultTest, OptionTakesOneFault) {
    const CEnd end =
        RunProgram({QORSIM_PROGRAM, "run", "--host", "small", "--fault", "exit=5", KRZCLI});
    EXPECT_EQ(end.status, 5) << end.err;
}

// RunProgram returns only when nobody holds the command's output any more.
TEST_F(CFaultTest, NothingOutlivesTheRun) {
    const char* texts[] = {
        "$K -v &",
        "setsid $K -v &",
        "{ $K -v & } & $K -v &",
        "sleep 1000 &",
        "(trap '' TERM HUP; sleep 1000) &",
        "sh -c 'kill -STOP $$' &",
    };
    for (const std::string text : texts) {
        EXPECT_EQ(Shell({"hang-term"}, text + " exit 6").status, 6) << text;
    }
}

// qorsim is killed when its tool hangs; descriptor 3 is closed by the tool's end only.
TEST_F(CFaultTest, HangingToolEndsWithItsKilledServer) {
    for (const std::string fault : {"hang-term", "drip=1000000"}) {
        const std::string report = Folder() / fault;
        const CEnd end =
            RunProgram({"sh", "-c",
                        std::string(QORSIM_PROGRAM) + " run --host small --fault " + fault +
                            " -- " + KRZCLI + " -v 3>&1 > " + report + " & until test -s " +
                            report + "; do :; done; kill -KILL $!; wait $!; echo killed"});
        EXPECT_EQ(end.out, "killed\n") << fault;
    }
}

TEST_F(CFaultTest, ServerWithoutFaultsHasNoFileOfThem) {
    EXPECT_EQ(RunOn("small", {"test", "-e", "/opt/tarmica/krz/faults"}).status, 1);
}

}  // namespace
}  // namespace qortest
