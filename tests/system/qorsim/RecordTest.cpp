// "qorsim record" and "qorsim replay".
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* RECORDED_TOOL = "/opt/tarmica/krz/cli/krzcli";

class CRecordTest : public CSimFixture {
protected:
    std::string Recording() const { return Folder() / "recording"; }

    CEnd Record(const CStrings& options, const CStrings& command) const {
        CStrings whole = {QORSIM_PROGRAM, "record", Recording()};
        whole.insert(whole.end(), options.begin(), options.end());
        whole.emplace_back("--");
        whole.insert(whole.end(), command.begin(), command.end());
        return RunProgram(whole);
    }

    CEnd Replay(const CStrings& command) const {
        CStrings whole = {QORSIM_PROGRAM, "replay", Recording(), "--"};
        whole.insert(whole.end(), command.begin(), command.end());
        return RunProgram(whole);
    }

    CEnd RecordShell(const CStrings& options, const std::string& text) const {
        return Record(options, {"sh", "-c", Prelude() + text});
    }
    CEnd ReplayShell(const std::string& text) const {
        return Replay({"sh", "-c", Prelude() + text});
    }

    // What a shell command begins with: $K is krzcli, $U the directory of the utilities.
    static std::string Prelude() {
        return std::string("K=") + RECORDED_TOOL + "; U=" + INSTALL_DIR + "/RAID/tool; ";
    }

    nlohmann::json Index() const {
        return nlohmann::json::parse(ReadFile(fs::path(Recording()) / "index.json"));
    }

    // All files of the recording, one behind the other.
    std::string Everything() const {
        std::string text;
        for (const auto& entry : fs::recursive_directory_iterator(Recording())) {
            if (entry.is_regular_file()) {
                text += ReadFile(entry.path());
            }
        }
        return text;
    }

    // A server whose krzcli is a script.
    static void InstallTool(const std::string& script) {
        WriteFile(RECORDED_TOOL, "#!/bin/sh\n" + script);
        fs::permissions(RECORDED_TOOL, fs::perms(0755));
    }
};

TEST_F(CRecordTest, ReplayGivesQorctlTheSameAnswer) {
    const CStrings qorctl = {QORCTL_PROGRAM, "raid", "--plugin", QOR_PLUGIN_PATH};
    for (const std::string host : {"small", "large"}) {
        fs::remove_all(Recording());
        const CEnd plain = RunOn(host, qorctl);
        const CEnd recorded = Record({"--host", host}, qorctl);
        const CEnd replayed = Replay(qorctl);
        EXPECT_THAT(plain.out, HasSubstr("Controller Information"));
        EXPECT_EQ(recorded.status, 0) << recorded.err;
        EXPECT_TRUE(recorded.out == plain.out);
        EXPECT_EQ(replayed.status, 0) << replayed.err;
        EXPECT_TRUE(replayed.out == plain.out);
    }
}

TEST_F(CRecordTest, IndexTellsTheCallsInOrder) {
    EXPECT_EQ(RecordShell({"--host", "small"},
                          "$K -v > /dev/null; $K -x > /dev/null; $U/storcli /call show > /dev/null")
                  .status,
              0);
    const nlohmann::json index = Index();
    EXPECT_EQ(index["version"], 1);
    EXPECT_EQ(index["tools"], nlohmann::json({"krzcli", "MegaCli", "storcli"}));
    EXPECT_EQ(index["files"], nlohmann::json({"devices.tmp", "RaidVCFac.ini", "PciessdVCFac.ini"}));
    ASSERT_EQ(index["calls"].size(), 3U);
    EXPECT_EQ(index["calls"][0]["commandLine"], nlohmann::json({"krzcli", "-v"}));
    EXPECT_EQ(index["calls"][0]["status"], 0);
    EXPECT_EQ(index["calls"][1]["commandLine"], nlohmann::json({"krzcli", "-x"}));
    EXPECT_EQ(index["calls"][1]["status"], 1);
    EXPECT_EQ(index["calls"][2]["commandLine"], nlohmann::json({"storcli", "/call", "show"}));
    EXPECT_GE(index["calls"][2]["milliseconds"], 0);
    const fs::path folder = Recording();
    EXPECT_EQ(ReadFile(folder / index["calls"][0]["out"]), Krzcli("small", {"-v"}));
    EXPECT_EQ(ReadFile(folder / index["calls"][0]["err"]), "");
}

TEST_F(CRecordTest, RealToolIsRecordedAndLeftAlone) {
    InstallTool("echo \"out $*\"; echo err >&2; exit 5\n");
    WriteFile(std::string(TOOL_DIR) + "/neighbour", "mine");
    WriteFile(DEVICE_LIST, "devices");
    const std::string before = RunProgram({"find", "/opt", "/etc/opt", "-ls"}).out;
    const std::string mounts = ReadFile("/proc/self/mountinfo");

    const CEnd end = RecordShell({}, "$K 'two words' -v; echo $?; cat ${K%/*}/neighbour");
    EXPECT_EQ(end.out, "out two words -v\n5\nmine");
    EXPECT_EQ(end.err, "err\n");
    EXPECT_EQ(RunProgram({"find", "/opt", "/etc/opt", "-ls"}).out, before);
    EXPECT_EQ(ReadFile("/proc/self/mountinfo"), mounts);

    fs::remove_all("/opt/tarmica/krz");
    const CEnd replayed =
        ReplayShell("$K 'two words' -v; echo $?; cat " + std::string(DEVICE_LIST));
    EXPECT_EQ(replayed.out, "out two words -v\n5\ndevices");
    EXPECT_EQ(replayed.err, "err\n");
    EXPECT_EQ(replayed.status, 0);
    EXPECT_EQ(Index()["tools"], nlohmann::json({"krzcli"}));
    EXPECT_EQ(Index()["files"], nlohmann::json({"devices.tmp"}));
}

TEST_F(CRecordTest, RepeatedCallsGetSuccessiveRecordingsAndThenTheLast) {
    InstallTool("echo x >> " + (Folder() / "count").string() + "; wc -l < " +
                (Folder() / "count").string() + "\n");
    EXPECT_EQ(RecordShell({}, "$K a; $K b; $K a").out, "1\n2\n3\n");
    EXPECT_EQ(ReplayShell("$K a; $K a; $K a; $K b; $K b").out, "1\n3\n3\n2\n2\n");
}

TEST_F(CRecordTest, BytesAndSignalsAreKept) {
    InstallTool("printf '\\000\\377\\r\\n no end'; kill -SEGV $$\n");
    const std::string out("\0\xff\r\n no end", 11);
    for (const CEnd& end : {Record({}, {RECORDED_TOOL}), Replay({RECORDED_TOOL})}) {
        EXPECT_EQ(end.status, 128 + 11);
        EXPECT_EQ(end.out, out);
    }
    EXPECT_EQ(Index()["calls"][0]["signal"], 11);
}

// The tool is killed by the time limit of its caller; what it had written is known.
TEST_F(CRecordTest, CallThatNeverEndedHangsAgain) {
    InstallTool("echo begun; exec sleep 1000\n");
    EXPECT_EQ(Record({}, {"timeout", "0.3", RECORDED_TOOL}).status, 124);
    EXPECT_FALSE(Index()["calls"][0].contains("status"));
    const CEnd end = Replay({"timeout", "0.3", RECORDED_TOOL});
    EXPECT_EQ(end.status, 124);
    EXPECT_EQ(end.out, "begun\n");
}

// The caller gets all of it; what could not be played back is no recording.
TEST_F(CRecordTest, OutputThatIsTooLargeIsPassedOnAndTold) {
    InstallTool("exec head -c 70000000 /dev/zero\n");
    const CEnd end = Record({}, {RECORDED_TOOL});
    EXPECT_EQ(end.out.size(), 70000000U);
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(
        end.err,
        "qorsim: cannot read /opt/tarmica/qorsim/calls/000001.out: it is larger than 64 MiB\n");
    EXPECT_FALSE(fs::exists(fs::path(Recording()) / "index.json"));
}

TEST_F(CRecordTest, UnrecordedCommandLineFailsLoudly) {
    RecordShell({"--host", "small"}, "$K -v");
    const CEnd end = ReplayShell("$K -v > /dev/null; $K -ctrlinfo -a0; echo $?; $K; exit 0");
    EXPECT_EQ(end.status, 124);
    EXPECT_EQ(end.out, "97\n");
    EXPECT_EQ(end.err,
              "krzcli: this command line was not recorded: krzcli -ctrlinfo -a0\n"
              "krzcli: this command line was not recorded: krzcli\n"
              "qorsim: these command lines were not recorded:\n"
              "krzcli -ctrlinfo -a0\n"
              "krzcli\n");
}

TEST_F(CRecordTest, ExitStatusIsTheCommands) {
    EXPECT_EQ(RecordShell({"--host", "small"}, "exit 7").status, 7);
    EXPECT_EQ(ReplayShell("exit 8").status, 8);
    EXPECT_EQ(Replay({"no-such-program"}).status, 127);
}

TEST_F(CRecordTest, DevicesAreReplayed) {
    Record({"--host", "small"}, {"true"});
    const std::string text = std::string("cat ") + DEVICE_LIST + " " + INSTALL_DIR + "/*.ini";
    EXPECT_EQ(ReplayShell(text).out, RunShellOn("small", text).out);
}

TEST_F(CRecordTest, ToolsThatWereMissingStayMissing) {
    nlohmann::json profile = ShippedProfile("small");
    profile["tool"]["missing"] = {"krzcli"};
    Record({"--host", WriteProfile(profile)}, {"true"});
    EXPECT_EQ(ReplayShell("test -e $K").status, 1);
    EXPECT_EQ(ReplayShell("test -x $U/MegaCli").status, 0);
}

TEST_F(CRecordTest, RedactionReplacesIdentifiersEverywhere) {
    InstallTool(
        "echo 'Serial Number : S0AB12CD'; echo 'WWN : 0x5000C500A1B2C3D4'; echo 'Name : "
        "s0ab12cd and 5000c500a1b2c3d4'; echo 'SAS Address : N/A'; echo 'Slot : 7'; echo 'Serial "
        "= 7'; echo \"Asked : $*\" >&2\n");
    RecordShell({"--redact"}, "$K -v; $K -sn S0AB12CD");
    const std::string all = Everything();
    for (const std::string original : {"S0AB12CD", "s0ab12cd", "5000C500A1B2C3D4"}) {
        EXPECT_THAT(all, Not(HasSubstr(original)));
    }
    const CStrings lines = Lines(ReadFile(fs::path(Recording()) / "calls/000001.out"));
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_THAT(lines[0], testing::MatchesRegex("Serial Number : [A-Z][0-9][A-Z]+[0-9]+[A-Z]+"));
    EXPECT_EQ(lines[0].size(), std::string("Serial Number : S0AB12CD").size());
    EXPECT_THAT(lines[1], testing::MatchesRegex("WWN : 0x[0-9A-F]+"));
    EXPECT_EQ(lines[1].size(), std::string("WWN : 0x5000C500A1B2C3D4").size());
    std::string serial = lines[0].substr(16);
    EXPECT_EQ(Index()["calls"][1]["commandLine"][2], serial);
    EXPECT_EQ(ReadFile(fs::path(Recording()) / "calls/000002.err"), "Asked : -sn " + serial + "\n");
    std::transform(serial.begin(), serial.end(), serial.begin(), tolower);
    EXPECT_THAT(lines[2], testing::StartsWith("Name : " + serial + " and "));
    EXPECT_EQ(lines[3], "SAS Address : N/A");
    EXPECT_EQ(lines[4], "Slot : 7");
    EXPECT_THAT(lines[5], testing::MatchesRegex("Serial = [0-68-9]"));
}

// At each place of a text all lengths of identifiers are tried.
TEST_F(CRecordTest, RedactionIsLinearWhateverTheIdentifiers) {
    InstallTool(
        "awk 'BEGIN { for (i = 0; i < 4000; ++i) { word = word \"a\"; print \"Serial : \" word }\n"
        "for (i = 0; i < 20000; ++i) print \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\" "
        "}'\n");
    const CEnd end = RunProgram({"timeout", "-k", "1", "60", QORSIM_PROGRAM, "record", Recording(),
                                 "--redact", "--", RECORDED_TOOL, "-v"});
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(Everything(), Not(HasSubstr(std::string(20, 'a'))));
}

TEST_F(CRecordTest, RedactedServerHasNoneOfItsIdentifiers) {
    const CStrings qorctl = {QORCTL_PROGRAM, "raid", "--plugin", QOR_PLUGIN_PATH};
    const CEnd plain = RunOn("large", qorctl);
    const CEnd recorded = Record({"--host", "large", "--redact"}, qorctl);
    EXPECT_TRUE(recorded.out == plain.out);
    const CEnd replayed = Replay(qorctl);
    EXPECT_EQ(replayed.status, 0);
    EXPECT_EQ(replayed.out.size(), plain.out.size());
    const std::string all = Everything();
    const nlohmann::json profile = ShippedProfile("large");
    for (const nlohmann::json& controller : profile["controllers"]) {
        EXPECT_THAT(all, Not(HasSubstr(controller["serial"].get<std::string>())));
        EXPECT_THAT(all, Not(HasSubstr(controller["sasAddress"].get<std::string>())));
        for (const nlohmann::json& drive : controller["drives"]) {
            EXPECT_THAT(all, Not(HasSubstr(drive["serial"].get<std::string>())));
        }
    }
}

TEST_F(CRecordTest, FullDirectoryIsRefused) {
    WriteFile(fs::path(Recording()) / "x", "");
    const CEnd end = Record({"--host", "small"}, {"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err, "qorsim: " + Recording() + " is not empty: name a new directory\n");
}

TEST_F(CRecordTest, DirectoryOfTheServerIsRefused) {
    for (const std::string verb : {"record", "replay"}) {
        const CEnd end = RunProgram({QORSIM_PROGRAM, verb, "/opt/tarmica/x", "--", "true"});
        EXPECT_EQ(end.status, 125);
        EXPECT_EQ(end.err,
                  "qorsim: a recording cannot be in /opt/tarmica: the simulated server is there\n");
    }
}

TEST_F(CRecordTest, MachineWithoutToolsNeedsAHost) {
    const CEnd end = Record({}, {"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err,
              "qorsim: there is no tool to record in /opt/tarmica: install it, or name a simulated "
              "server with --host\n");
}

TEST_F(CRecordTest, DamagedIndexIsRefused) {
    const std::string index = Recording() + "/index.json";
    const std::string whole = "qorsim: " + index +
                              ": it is not the index of a recording of version 1, with \"tools\", "
                              "\"files\" and \"calls\"\n";
    const std::pair<const char*, std::string> rows[] = {
        {"", whole},
        {"{", whole},
        {"[]", whole},
        {R"({"version": 2, "tools": [], "files": [], "calls": []})", whole},
        {R"({"version": 1, "tools": [1], "files": [], "calls": []})", whole},
        {R"({"version": 1, "tools": [], "files": [], "calls": [{"commandLine": []}]})",
         "qorsim: " + index +
             ": /calls/0: a call has a \"commandLine\", \"out\" and \"err\", and numbers as "
             "\"status\", \"signal\" and \"milliseconds\"\n"},
    };
    for (const auto& [text, message] : rows) {
        WriteFile(index, text);
        const CEnd end = Replay({"true"});
        EXPECT_EQ(end.status, 125) << text;
        EXPECT_EQ(end.err, message) << text;
    }
}

TEST_F(CRecordTest, MissingRecordingIsNamed) {
    const CEnd end = Replay({"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err,
              "qorsim: cannot read " + Recording() + "/index.json: No such file or directory\n");
}

// An ordinary user's recording needs namespaces, where they are to be had.
TEST_F(CRecordTest, OrdinaryUserRecordsAndReplays) {
    const CStrings user = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    CStrings probe = user;
    probe.insert(probe.end(), {"unshare", "--user", "--mount", "true"});
    if (geteuid() != 0 || RunProgram(probe).status != 0) {
        GTEST_SKIP() << "the other tests run as this user, or nobody but root may have any";
    }
    InstallTool("echo from $(id -u)\n");
    fs::permissions(Folder(), fs::perms(0777));
    for (const std::string verb : {"record", "replay"}) {
        CStrings whole = user;
        whole.insert(whole.end(), {QORSIM_PROGRAM, verb, Recording(), "--", RECORDED_TOOL});
        const CEnd end = RunProgram(whole);
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(end.out, "from 65534\n");
    }
}

}  // namespace
}  // namespace qortest
