// `qorctl raid|storage|drive --format` as a process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "RealPluginFixture.h"

namespace fs = std::filesystem;

namespace {

using qortest::CEnd;
using qortest::CRecord;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using CJson = nlohmann::ordered_json;

constexpr const char* GENERAL_TITLE = "### General Information ###";

const std::vector<CRecord> FAILED_DRIVE = {
    {"item", "", "Controller Information", "", "TRUE"},
    {"item", "Controller Information", GENERAL_TITLE, "", "TRUE"},
    {"item", GENERAL_TITLE, "Controller No.", "0", "TRUE"},
    {"item", GENERAL_TITLE, "Product Name", "X\x1b[1m", "TRUE"},
    {"item", "", "Physical Drive Information", "", "TRUE"},
    {"item", "Physical Drive Information", GENERAL_TITLE, "", "TRUE"},
    {"item", GENERAL_TITLE, "PD No.", "PD3", "TRUE"},
    {"item", GENERAL_TITLE, "LD No.", "LD1", "TRUE"},
    {"item", GENERAL_TITLE, "PD Status", "ERROR", "TRUE"},
    {"item", GENERAL_TITLE, "PD Status(Detail)", "FAILED", "TRUE"},
    {"item", GENERAL_TITLE, "Product ID", "=1+1", "TRUE"},
};

constexpr const char* ODD = "a\x1b[1m\x7f\u009B1m\u202E\uFEFF\xff";

std::vector<CRecord> OddAnswer() {
    std::vector<CRecord> answer = FAILED_DRIVE;
    answer[3][3] = ODD;      // the controller's product
    answer.back()[3] = ODD;  // the drive's
    answer.push_back({"document", std::string("<a>\n\t") + ODD + "</a>"});
    return answer;
}

constexpr const char* SENTENCE =
    "\nController 0 drive PD3 (=1+1) is FAILED: it is out of service; replace it.\n";

// The document, after the shipped schema has accepted it. Uses `folder`.
CJson Valid(const fs::path& folder, const std::string& document) {
    qortest::WriteFile(folder / "document.json", document);
    const CEnd check =
        qortest::RunCommand({.program = PYTHON,
                             .arguments = {VALIDATE_JSON, JSON_SCHEMA, folder / "document.json"},
                             .environment = qortest::CEnvironment{{"LC_ALL", "C.UTF-8"}}});
    EXPECT_EQ(check.status, 0) << check.out << check.err;
    return CJson::parse(document);
}

// The rest of a text from the first byte on that a terminal obeys or hides, or that is none of the
// locale's characters; line ends and tabs are welcome.
std::string Obeyed(const std::string& text, const std::string& locale = "C.UTF-8") {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isLayout = byte == '\n' || byte == '\t' || text.compare(i, 2, "\r\n") == 0;
        if ((byte < ' ' && !isLayout) || byte == 0x7F || byte == 0xFF ||
            (byte > 0x7F && locale == "C")) {
            return text.substr(i);
        }
    }
    for (const char* odd : {"\u009B", "\u202E", "\uFEFF"}) {
        if (const size_t at = text.find(odd); at != std::string::npos) {
            return text.substr(at);
        }
    }
    return "";
}

class FormatsTest : public qortest::CQorctlFixture {
protected:
    CEnd RunRaid(const std::vector<CRecord>& answer, std::vector<std::string> arguments) const {
        Answer(answer);
        arguments.insert(arguments.begin(), {"raid", "--plugin", STAND_IN_PLUGIN});
        return Run(arguments);
    }

    CEnd RunOnTerminal(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"raid", "--plugin", STAND_IN_PLUGIN});
        return qortest::RunCommand({.program = QORCTL_PROGRAM,
                                    .arguments = arguments,
                                    .environment = m_Environment,
                                    .terminal = true});
    }

    CEnd RunRaidOnTerminal(const std::string& format, unsigned short width) const {
        Answer(FAILED_DRIVE);
        return qortest::RunCommand(
            {.program = QORCTL_PROGRAM,
             .arguments = {"raid", "--plugin", STAND_IN_PLUGIN, "--format", format},
             .environment = m_Environment,
             .terminal = true,
             .terminalWidth = width});
    }
};

// Trees and tables

TEST_F(FormatsTest, TreeRepeatsProblemsInSentences) {
    const CEnd outcome = RunRaid(FAILED_DRIVE, {});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, AllOf(StartsWith("Controller Information\n"), EndsWith(SENTENCE)));
    EXPECT_EQ(outcome.err, "");
}

TEST_F(FormatsTest, TableHasALineADeviceAndMarksProblems) {
    const CEnd outcome = RunRaid(FAILED_DRIVE, {"--format", "table"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, std::string("CTRL  PRODUCT\n"
                                       "   0  X\\x1b[1m\n"
                                       "\n"
                                       "    CTRL  PD  STATUS  ROLE  PRODUCT\n"
                                       "!!     0   3  FAILED  LD1   =1+1\n") +
                               SENTENCE);
}

TEST_F(FormatsTest, TableIsColouredAndFitOnATerminal) {
    const CEnd outcome = RunRaidOnTerminal("table", 25);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\x1b[31m!!     0   3  FAILED\x1b[0m\n"));
    EXPECT_THAT(outcome.out,
                HasSubstr("\x1b[31mController 0 drive PD3 is\n  FAILED: it is out of\n"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("=1+1")));
}

TEST_F(FormatsTest, NoColorTableHasNoControlSequences) {
    m_Environment["NO_COLOR"] = "1";
    EXPECT_THAT(RunRaidOnTerminal("table", 80).out, Not(HasSubstr("\x1b")));
}

TEST_F(FormatsTest, TerminalThatDoesNotSayItsWidthIsAsWideAsColumns) {
    m_Environment["COLUMNS"] = "25";
    EXPECT_THAT(RunRaidOnTerminal("table", 0).out, Not(HasSubstr("=1+1")));
    m_Environment["COLUMNS"] = "none";
    EXPECT_THAT(RunRaidOnTerminal("table", 0).out, HasSubstr("=1+1"));
}

// JSON

TEST_F(FormatsTest, JsonIsTheDocumentAndNothingElse) {
    const CEnd outcome = RunRaid(FAILED_DRIVE, {"--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    const CJson json = Valid(m_Folder, outcome.out);
    EXPECT_EQ(json["command"], "raid");
    EXPECT_EQ(json["result"], "success");
    EXPECT_EQ(json["controllers"][0]["product"], "X\x1b[1m");
    EXPECT_EQ(json["physical_drives"][0]["status_detail"], "FAILED");
    EXPECT_FALSE(json.contains("tool_version"));
}

TEST_F(FormatsTest, JsonOnATerminalHasNoDecoration) {
    EXPECT_EQ(RunRaidOnTerminal("json", 40).out, RunRaid(FAILED_DRIVE, {"--format", "json"}).out);
}

TEST_F(FormatsTest, FailedRequestIsJsonToo) {
    const CEnd outcome = RunRaid(
        {{"result", "0"}, {"error", "05"}, {"notice", "01"}, {"detail", "krzcli -ctrlinfo -a0"}},
        {"--format", "json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, EndsWith("qorctl: the request failed\n"));
    const CJson json = Valid(m_Folder, outcome.out);
    EXPECT_EQ(json["result"], "failure");
    EXPECT_EQ(json["error_code"], "05");
    EXPECT_EQ(json["notice_code"], "01");
    EXPECT_EQ(json["error_detail"], "krzcli -ctrlinfo -a0");
    EXPECT_EQ(json["messages"].size(), 4U);
    EXPECT_EQ(json["messages"][0]["code"], "error-05");
    EXPECT_EQ(json["messages"][0]["severity"], "error");
    EXPECT_EQ(json["messages"][3]["code"], "request-failed");
}

TEST_F(FormatsTest, MissingPluginAndExceptionsAreJsonToo) {
    const CEnd missing = Run({"raid", "--plugin", "/none.so", "--format", "json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(Valid(m_Folder, missing.out)["messages"][0]["code"], "plugin-not-loaded");
    const CEnd thrown = RunRaid({{"throw", "GetRAIDInfo", "out_of_range"}}, {"--format", "json"});
    EXPECT_EQ(thrown.status, 1);
    EXPECT_EQ(Valid(m_Folder, thrown.out)["messages"][0]["code"], "plugin-failed");
}

TEST_F(FormatsTest, NothingToReportIsAJsonSuccess) {
    const CEnd outcome =
        RunRaid({{"error", "02"}, {"notice", "02"}, {"detail", "none"}}, {"--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    const CJson json = Valid(m_Folder, outcome.out);
    EXPECT_EQ(json["result"], "success");
    EXPECT_EQ(json["messages"][0]["severity"], "warning");
    EXPECT_EQ(json["messages"][2]["severity"], "info");
    EXPECT_EQ(json["messages"][2]["code"], "nothing-to-report");
    EXPECT_TRUE(json["controllers"].empty());
}

TEST_F(FormatsTest, BytesThatAreNotUtf8GiveValidJson) {
    const CEnd outcome = RunRaid({{"item", "", "Odd \xff", "\xc3\x28", "TRUE"}, {"notice", "\xfe"}},
                                 {"--format", "json"});
    EXPECT_EQ(Valid(m_Folder, outcome.out)["others"][0]["name"], "Odd \uFFFD");
}

// CSV and XML

TEST_F(FormatsTest, CsvHasAHeaderAndARowADrive) {
    const CEnd outcome = RunRaid(FAILED_DRIVE, {"--format", "csv"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, StartsWith("kind,controller,number,"));
    EXPECT_THAT(outcome.out, HasSubstr("\r\nphysical_drive,0,3,,,,,member,1,ERROR,FAILED,"));
    EXPECT_THAT(outcome.out, HasSubstr(",'=1+1,"));
}

TEST_F(FormatsTest, XmlIsThePluginsDocument) {
    std::vector<CRecord> answer = FAILED_DRIVE;
    answer.push_back({"document", "<a>\xff</a>"});
    const CEnd outcome = RunRaid(answer, {"--format", "xml"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<a>\xff</a>\n");
    EXPECT_THAT(Log(), HasSubstr("XmlSerialize 0 '' 11\n"));
}

TEST_F(FormatsTest, RefusedXmlIsAFailure) {
    std::vector<CRecord> answer = FAILED_DRIVE;
    answer.push_back({"xml-result", "03200002"});
    const CEnd outcome = RunRaid(answer, {"--format", "xml"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: no XML document, result 0x03200002: item 2 is named like its own parent\n");
}

TEST_F(FormatsTest, FailureAndNothingToReportInTheOtherForms) {
    for (const char* format : {"tree", "table", "csv", "xml"}) {
        const CEnd failed = RunRaid({{"result", "0"}}, {"--format", format});
        EXPECT_EQ(failed.status, 1);
        EXPECT_EQ(failed.out, "") << format;
        const CEnd nothing = RunRaid({}, {"--format", format});
        EXPECT_EQ(nothing.status, 0);
        EXPECT_THAT(nothing.err, StartsWith("qorctl: nothing to report: "));
        if (std::string(format) == "csv") {
            EXPECT_THAT(nothing.out, AllOf(StartsWith("kind,"), EndsWith(",health,problems\r\n")));
        } else {
            EXPECT_EQ(nothing.out, "") << format;
        }
    }
}

TEST_F(FormatsTest, UnknownFormatIsNotUnderstood) {
    const CEnd outcome = RunRaid(FAILED_DRIVE, {"--format", "yaml"});
    EXPECT_GT(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err,
                HasSubstr("--format: \"yaml\" is none of: status, tree, table, json, csv, xml\n"));
    EXPECT_FALSE(fs::exists(m_Folder / "log"));
}

// Bytes that a terminal obeys or hides

TEST_F(FormatsTest, NothingThatATerminalObeysReachesItInAnyFormat) {
    for (const char* locale : {"C.UTF-8", "C"}) {
        m_Environment["LC_ALL"] = locale;
        m_Environment["NO_COLOR"] = "1";
        for (const char* format : {"tree", "table", "json", "csv", "xml"}) {
            Answer(OddAnswer());
            const std::string out = RunOnTerminal({"--format", format}).out;
            EXPECT_THAT(out, HasSubstr("[1m")) << format;
            EXPECT_EQ(Obeyed(out, locale), "") << format << locale;
        }
    }
}

TEST_F(FormatsTest, NothingThatATerminalObeysReachesItByTheNameOfAFile) {
    for (const char* format : {"tree", "json", "csv", "xml"}) {
        Answer(OddAnswer());
        const std::string out = RunOnTerminal({"--format", format, "--output", "/dev/stdout"}).out;
        EXPECT_THAT(out, HasSubstr("[1m")) << format;
        EXPECT_EQ(Obeyed(out), "") << format;
    }
}

TEST_F(FormatsTest, JsonOnATerminalIsTheSameDocument) {
    m_Environment["LC_ALL"] = "C";
    Answer(OddAnswer());
    const std::string shown = RunOnTerminal({"--format", "json"}).out;
    EXPECT_EQ(CJson::parse(shown), Valid(m_Folder, RunRaid(OddAnswer(), {"--format", "json"}).out));
    EXPECT_EQ(CJson::parse(shown)["controllers"][0]["product"],
              "a\x1b[1m\x7f\u009B1m\u202E\uFEFF\uFFFD");
}

TEST_F(FormatsTest, FilesHoldNoControlCharactersButTheXmlDocumentDoes) {
    for (const char* format : {"tree", "table", "json", "csv"}) {
        EXPECT_EQ(Obeyed(RunRaid(OddAnswer(), {"--format", format}).out), "") << format;
    }
    EXPECT_EQ(RunRaid(OddAnswer(), {"--format", "xml"}).out,
              std::string("<a>\n\t") + ODD + "</a>\n");
}

TEST_F(FormatsTest, MessagesOnATerminalAreShownSafely) {
    Answer({{"result", "0"}, {"error", ODD}, {"notice", ODD}, {"detail", ODD}});
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"raid", "--plugin", STAND_IN_PLUGIN},
                                              .environment = m_Environment,
                                              .errorTerminal = true});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.terminal, HasSubstr("a\\x1b[1m"));
    EXPECT_EQ(Obeyed(outcome.terminal), "");
}

TEST_F(FormatsTest, WatchShowsTheToolsTextsSafely) {
    Answer({{"result", "0"}, {"error", ODD}});
    for (const char* format : {"text", "json"}) {
        const auto watch = [&] {
            return qortest::RunCommand({.program = QORCTL_PROGRAM,
                                        .arguments = {"watch", "--plugin", STAND_IN_PLUGIN,
                                                      "--count", "1", "--format", format},
                                        .environment = m_Environment,
                                        .terminal = true})
                .out;
        };
        m_Environment["TERM"] = "dumb";
        EXPECT_THAT(watch(), HasSubstr("[1m"));
        EXPECT_EQ(Obeyed(watch()), "") << format;
        m_Environment["TERM"] = "xterm";  // where the screen has control sequences of its own
        const std::string screen = watch();
        for (const char* odd : {"\x1b[1m", "\x7f", "\u009B", "\u202E", "\uFEFF", "\xff"}) {
            EXPECT_THAT(screen, Not(HasSubstr(odd))) << format;
        }
    }
}

TEST_F(FormatsTest, CommandLineThatIsNotUnderstoodIsShownSafely) {
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"raid", "--format", ODD},
                                              .environment = m_Environment,
                                              .errorTerminal = true});
    EXPECT_THAT(outcome.terminal, HasSubstr("--format: \"a\\x1b[1m"));
    EXPECT_EQ(Obeyed(outcome.terminal), "");
}

// Files

TEST_F(FormatsTest, FileThatAnotherUserPreparedLendsNoRights) {
    fs::permissions(m_Folder, fs::perms(01777));
    const std::string file = m_Folder / "report.txt";
    qortest::WriteFile(file, "old\n");
    const bool given = geteuid() == 0;
    ASSERT_TRUE(!given || chown(file.c_str(), 12345, 12345) == 0);
    ASSERT_EQ(chmod(file.c_str(), 06777), 0);
    EXPECT_EQ(RunRaid(FAILED_DRIVE, {"--output", file}).status, 0);
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, geteuid());
    EXPECT_EQ(status.st_mode & 07777, given ? 0644U : 0755U);
}

TEST_F(FormatsTest, PipeThatNobodyReadsIsNotWaitedFor) {
    const std::string pipe = m_Folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const CEnd outcome = RunRaid(FAILED_DRIVE, {"--output", pipe});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "qorctl: " + pipe + " could not be written: No such device or address\n");
}

TEST_F(FormatsTest, StandardOutputByItsNameIsStandardOutput) {
    const std::string expected = RunRaid(FAILED_DRIVE, {}).out;
    EXPECT_EQ(RunRaid(FAILED_DRIVE, {"--output", "/dev/stdout"}).out, expected);
    EXPECT_EQ(RunRaid(FAILED_DRIVE, {"--output", "/dev/stderr"}).err, expected);
}

#if !QORTEST_NEEDS_PROC
// As in a chroot that has nothing but the program.
TEST_F(FormatsTest, OutputServesWithoutProc) {
    const std::string expected = RunRaid(FAILED_DRIVE, {}).out;
    ASSERT_EQ(mount("none", "/proc", "tmpfs", 0, nullptr), 0);
    const int status = RunRaid(FAILED_DRIVE, {"--output", m_Folder / "report"}).status;
    const std::string out = RunRaid(FAILED_DRIVE, {"--output", "/dev/stdout"}).out;
    ASSERT_EQ(umount2("/proc", MNT_DETACH), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(qortest::ReadFile(m_Folder / "report"), expected);
    EXPECT_EQ(out, expected);
}
#endif

TEST_F(FormatsTest, OutputFileHoldsWhatStandardOutputWould) {
    for (const char* format : {"tree", "table", "json", "csv"}) {
        const std::string expected = RunRaid(FAILED_DRIVE, {"--format", format}).out;
        const CEnd outcome =
            RunRaid(FAILED_DRIVE, {"--format", format, "--output", m_Folder / "report"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(qortest::ReadFile(m_Folder / "report"), expected) << format;
    }
    EXPECT_EQ(RunRaid(FAILED_DRIVE, {"--output", "-"}).out, RunRaid(FAILED_DRIVE, {}).out);
}

TEST_F(FormatsTest, OutputFileThatCannotBeWrittenIsAFailure) {
    const CEnd outcome = RunRaid(FAILED_DRIVE, {"--output", "/none/report"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "qorctl: /none/report could not be written: No such file or directory\n");
}

TEST_F(FormatsTest, FailedRequestLeavesTheOutputFileUnlessItIsJson) {
    const std::string file = m_Folder / "report";
    qortest::WriteFile(file, "old");
    EXPECT_EQ(RunRaid({{"result", "0"}}, {"--output", file}).status, 1);
    EXPECT_EQ(qortest::ReadFile(file), "old");
    EXPECT_EQ(RunRaid({{"result", "0"}}, {"--output", file, "--format", "json"}).status, 1);
    EXPECT_EQ(Valid(m_Folder, qortest::ReadFile(file))["result"], "failure");
}

// The real plug-in

using RealFormatsTest = qortest::CRealPluginFixture;

TEST_F(RealFormatsTest, WholeControllerIsValidJsonWithTheToolsVersion) {
    const CEnd outcome = RunOnWholeController({"raid", "--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    const CJson json = Valid(m_Folder, outcome.out);
    EXPECT_EQ(json["tool_version"], "7.0");
    EXPECT_EQ(json["controllers"].size(), 1U);
    EXPECT_EQ(json["physical_drives"].size(), 9U);
}

TEST_F(RealFormatsTest, EveryItemOfTheListIsReachable) {
    const CJson json = CJson::parse(RunOnWholeController({"raid", "--format", "json"}).out);
    size_t keys = 0;
    for (const char* kind : {"controllers", "raid_groups", "logical_drives", "physical_drives"}) {
        for (const CJson& device : json[kind]) {
            for (const CJson& section : device["sections"]) {
                for (const CJson& value : section) {
                    keys += value.is_array() ? 0U : 1U;
                    for (const CJson& group : value.is_array() ? value : CJson::array()) {
                        keys += group.size();
                    }
                }
            }
        }
    }
    const std::string tree = RunOnWholeController({"raid"}).out;
    size_t lines = 0;
    for (size_t at = tree.find(" :"); at != std::string::npos; at = tree.find(" :", at + 1)) {
        ++lines;
    }
    EXPECT_EQ(keys, lines);
}

TEST_F(RealFormatsTest, DriveIsValidJsonWithItsSmartTable) {
    for (const char* report : {"smart/sas.txt", "smart/sata.txt"}) {
        qortest::CStandInTool tool;
        tool.Play("-ldpdinfo -a0", {.out = qortest::Golden("smart/groups.txt")});
        tool.Play("-pdinfo -pd[252:5] -a0", {.out = qortest::Golden(report)});
        const CJson json = Valid(m_Folder, Run({"drive", "0", "252", "5", "--format", "json"}).out);
        const CJson& drive = json["physical_drives"].at(0);
        EXPECT_EQ(drive["controller"], 0);
        EXPECT_GE(drive["smart"]["attributes"].size(), 1U) << report;
    }
}

TEST_F(RealFormatsTest, DriveTableShowsItsSmartTable) {
    qortest::CStandInTool tool;
    tool.Play("-ldpdinfo -a0", {.out = qortest::Golden("smart/groups.txt")});
    tool.Play("-pdinfo -pd[252:5] -a0", {.out = qortest::Golden("smart/sas.txt")});
    const CEnd outcome = Run({"drive", "0", "252", "5", "--format", "table"});
    EXPECT_THAT(outcome.out, HasSubstr("\nATTRIBUTE                      VALUE  THRESHOLD\n"
                                       "Grown Defects                      0\n"));
}

TEST_F(RealFormatsTest, XmlIsThatOfTheXmlCommand) {
    const CEnd xml = RunOnWholeController({"xml"});
    EXPECT_EQ(RunOnWholeController({"raid", "--format", "xml"}).out, xml.out);
}

TEST_F(FormatsTest, TenThousandDrivesAreShown) {
    std::vector<CRecord> answer = {FAILED_DRIVE.begin(), FAILED_DRIVE.begin() + 4};
    for (int number = 0; number < 10'000; ++number) {
        answer.insert(answer.end(), FAILED_DRIVE.begin() + 4, FAILED_DRIVE.end());
        (answer.end() - 5)->at(3) = "PD" + std::to_string(number);
    }
    for (const char* format : {"table", "json"}) {
        const CEnd outcome = RunRaid(answer, {"--format", format});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, HasSubstr("9999")) << format;
    }
}

}  // namespace
