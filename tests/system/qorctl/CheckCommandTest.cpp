// `qorctl check` as a process.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "MonitoringOutput.h"
#include "QorctlFixture.h"

namespace fs = std::filesystem;

namespace {

using qortest::CEnd;
using qortest::CMonitoringOutput;
using qortest::CRecord;
using qortest::ReadFile;
using qortest::WriteFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using CRecords = std::vector<CRecord>;

const char* const DRIVE = "Physical Drive Information";
const char* const GENERAL = "### General Information ###";

void AddKey(CRecords& records, const char* key, const std::string& value) {
    records.push_back({"item", GENERAL, key, value, "TRUE"});
}

struct CDriveAnswer {
    std::string number = "PD3";
    std::string state = "ONLINE";
    std::string temperature = "31C";
    std::string mediaErrors = "0";
    std::string serial = "SERIAL3";
};

CRecords Controller() {
    CRecords records = {
        {"item", "", "Controller Information", "", "TRUE"},
        {"item", "Controller Information", GENERAL, "", "TRUE"},
    };
    AddKey(records, "Controller No.", "0");
    return records;
}

void AddLogicalDrive(CRecords& records, const std::string& state) {
    records.push_back({"item", "", "Logical Drive Information", "", "TRUE"});
    records.push_back({"item", "Logical Drive Information", GENERAL, "", "TRUE"});
    AddKey(records, "RG No.", "RG0");
    records.push_back({"item", GENERAL, "LD List", "", "TRUE"});
    records.push_back({"item", "LD List", "LD No.", "LD1", "TRUE"});
    records.push_back({"item", "LD List", "State", state, "TRUE"});
}

void AddDrive(CRecords& records, const CDriveAnswer& drive) {
    records.push_back({"item", "", DRIVE, "", "TRUE"});
    records.push_back({"item", DRIVE, GENERAL, "", "TRUE"});
    AddKey(records, "PD No.", drive.number);
    AddKey(records, "RG No.", "RG0");
    AddKey(records, "LD No.", "LD1");
    AddKey(records, "Serial Number", drive.serial);
    AddKey(records, "PD Status(Detail)", drive.state);
    AddKey(records, "Media Error Count", drive.mediaErrors);
    AddKey(records, "Other Error Count", "0");
    AddKey(records, "Predictive Failure Count", "0");
    AddKey(records, "Temperature", drive.temperature);
}

CRecords Server(const CDriveAnswer& drive = {}, const std::string& logicalDrive = "Optimal") {
    CRecords records = Controller();
    AddLogicalDrive(records, logicalDrive);
    AddDrive(records, drive);
    return records;
}

class CheckCommandTest : public qortest::CQorctlFixture {
protected:
    CEnd Check(const CRecords& answer, const std::vector<std::string>& options = {}) {
        Answer(answer);
        std::vector<std::string> arguments = {"check", "--plugin", STAND_IN_PLUGIN};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }

    // The output as a monitoring server reads it.
    static CMonitoringOutput Read(const CEnd& outcome) {
        CMonitoringOutput output = qortest::ReadMonitoringOutput(outcome.out);
        EXPECT_THAT(output.errors, IsEmpty()) << outcome.out;
        return output;
    }

    CEnd CheckState(const CDriveAnswer& drive) {
        return Check(Server(drive), {"--state", m_State});
    }

    static nlohmann::json Json(const CEnd& outcome) {
        return nlohmann::json::parse(outcome.out, nullptr, false);
    }

    const std::string m_State = m_Folder / "health.json";
};

TEST_F(CheckCommandTest, ExitStatusAndWordSayHowBadItIs) {
    const struct {
        CRecords answer;
        int status;
        const char* summary;
    } rows[] = {
        {Server(), 0, "RAID OK - 1 controller, 1 logical drive, 1 drive, 0 PCIe SSDs"},
        {Server({.state = "REBUILD"}), 1,
         "RAID WARNING - controller 0 drive PD3 (serial SERIAL3): REBUILD"},
        {Server({.state = "FAILED"}), 2,
         "RAID CRITICAL - controller 0 drive PD3 (serial SERIAL3): FAILED"},
        {Server({.state = "odd"}), 3,
         "RAID UNKNOWN - controller 0 drive PD3 (serial SERIAL3): unknown state \"odd\""},
        {Server({.mediaErrors = "2"}), 1,
         "RAID WARNING - controller 0 drive PD3 (serial SERIAL3): 2 media errors"},
        {Server({.temperature = "55C"}), 1,
         "RAID WARNING - controller 0 drive PD3 (serial SERIAL3): temperature 55C, above 50"},
        {Server({}, "Offline"), 2, "RAID CRITICAL - controller 0 logical drive LD1: Offline"},
    };
    for (const auto& row : rows) {
        const CEnd outcome = Check(row.answer);
        EXPECT_EQ(outcome.status, row.status) << row.summary;
        EXPECT_EQ(Read(outcome).summary, row.summary);
        EXPECT_EQ(outcome.err, "");
    }
}

TEST_F(CheckCommandTest, WorstComesFirstAndTheDetailsNameEverything) {
    CRecords answer = Server({.state = "REBUILD"}, "Degraded");
    AddDrive(answer, {.number = "PD4", .state = "odd", .serial = "SERIAL4"});
    AddDrive(answer, {.number = "PD5", .state = "FAILED", .serial = "SERIAL5"});
    const CMonitoringOutput output = Read(Check(answer));
    EXPECT_EQ(output.summary,
              "RAID CRITICAL - controller 0 logical drive LD1: Degraded, controller 0 drive PD5 "
              "(serial SERIAL5): FAILED, "
              "controller 0 drive PD4 (serial SERIAL4): unknown state \"odd\", and 1 more");
    EXPECT_THAT(
        output.details,
        ElementsAre("CRITICAL: controller 0 logical drive LD1: Degraded",
                    "CRITICAL: controller 0 drive PD5 (serial SERIAL5): FAILED",
                    "UNKNOWN: controller 0 drive PD4 (serial SERIAL4): unknown state \"odd\"",
                    "WARNING: controller 0 drive PD3 (serial SERIAL3): REBUILD"));
}

// What a person needs to find the drive, and a program to know it.
CRecords WholeDrive(const std::string& state) {
    CRecords answer = Server({.state = state});
    AddKey(answer, "Product ID", "ST600");
    AddKey(answer, "Raw Capacity", "558.912GB");
    AddKey(answer, "Progress", "42%");
    const char* const enclosure = "### Enclosure Properties Information ###";
    answer.push_back({"item", DRIVE, enclosure, "", "TRUE"});
    answer.push_back({"item", enclosure, "Enclosure ID", "252", "TRUE"});
    answer.push_back({"item", enclosure, "Slot No.", "3", "TRUE"});
    return answer;
}

TEST_F(CheckCommandTest, DriveIsNamedByPlaceSerialNumberProductAndSize) {
    const CMonitoringOutput output = Read(Check(WholeDrive("REBUILD")));
    const std::string name = "controller 0 drive 252:3 (PD3, serial SERIAL3, ST600 558.912GB)";
    EXPECT_EQ(output.summary, "RAID WARNING - " + name + ": REBUILD 42%");
    EXPECT_THAT(output.details, ElementsAre("WARNING: " + name + ": REBUILD 42%"));
    const nlohmann::json json = Json(Check(WholeDrive("REBUILD"), {"--format", "json"}));
    EXPECT_EQ(json["findings"][0]["object"], name);
    EXPECT_EQ(json["findings"][0]["physical_drive"], nlohmann::json::parse(R"({"controller":0,
        "enclosure":252,"slot":3,"drive":3,"serial":"SERIAL3","product":"ST600",
        "capacity":"558.912GB","capacity_bytes":600127190335})"));
}

TEST_F(CheckCommandTest, PerformanceDataHaveValuesUnitsAndThresholds) {
    CRecords answer = Server({.mediaErrors = "2"});
    answer.push_back({"item", "", "PCIe SSD Information", "", "TRUE"});
    answer.push_back({"item", "PCIe SSD Information", GENERAL, "", "TRUE"});
    AddKey(answer, "Bus No.", "177");
    AddKey(answer, "Status", "Healthy");
    answer.push_back({"item", "PCIe SSD Information", "### Health Information ###", "", "TRUE"});
    answer.push_back({"item", "### Health Information ###", "Temperature", "47C", "TRUE"});
    answer.push_back({"item", "### Health Information ###", "Percentage Used", "12%", "TRUE"});
    const CMonitoringOutput output = Read(Check(answer, {"--perfdata", "all"}));
    const auto temperature = output.values.at("c0_PD3_temperature");
    EXPECT_EQ(temperature.value, 31);
    EXPECT_EQ(temperature.unit, "");
    EXPECT_EQ(temperature.warning, "50");
    EXPECT_EQ(temperature.critical, "60");
    EXPECT_EQ(output.values.at("c0_PD3_media_errors").value, 2);
    EXPECT_EQ(output.values.at("c0_PD3_media_errors").unit, "c");
    EXPECT_EQ(output.values.at("ssd177_temperature").value, 47);
    EXPECT_EQ(output.values.at("ssd177_wear").value, 12);
    EXPECT_EQ(output.values.at("ssd177_wear").unit, "%");
    EXPECT_EQ(output.values.at("drives_online").value, 1);
    EXPECT_EQ(output.values.at("logical_drives_optimal").value, 1);
    EXPECT_EQ(output.values.at("pcie_ssds").value, 1);
}

TEST_F(CheckCommandTest, PerformanceDataAreCountsUnlessToldOtherwise) {
    const auto values = [this](const std::vector<std::string>& options) {
        return Read(Check(Server(), options)).values;
    };
    EXPECT_THAT(values({"--perfdata", "none"}), IsEmpty());
    EXPECT_EQ(values({}).count("drives_online"), 1U);
    EXPECT_EQ(values({}).count("c0_PD3_temperature"), 0U);
    EXPECT_EQ(values({"--perfdata", "counts"}).size(), values({}).size());
    EXPECT_EQ(values({"--perfdata", "all"}).count("c0_PD3_temperature"), 1U);
    EXPECT_EQ(Check(Server(), {"--perfdata", "some"}).status, 3);
}

// What an agent with packets of 1 KB passes on.
TEST_F(CheckCommandTest, FirstLineOfABadServerFitsAKilobyte) {
    CRecords answer = WholeDrive("FAILED");
    for (int i = 0; i < 60; ++i) {
        const CRecords drive = WholeDrive("FAILED");
        answer.insert(answer.end(), drive.begin(), drive.end());
    }
    const CEnd outcome = Check(answer);
    EXPECT_LE(outcome.out.find('\n'), 1000U);
    EXPECT_EQ(Read(outcome).values.at("drives_failed").value, 61);
}

// A monitoring server that takes commands in its own syntax rewrites a semicolon.
TEST_F(CheckCommandTest, SummaryHoldsNoSemicolon) {
    const CEnd outcome = Check(Server({.state = "a;b"}, "Degraded"));
    EXPECT_THAT(Read(outcome).summary, testing::Not(HasSubstr(";")));
    EXPECT_THAT(Read(outcome).summary, HasSubstr("unknown state \"a,b\""));
}

TEST_F(CheckCommandTest, ThresholdsInTheWrongOrderAreRefused) {
    const CEnd outcome =
        Check(Server(), {"--temperature-warning", "70", "--temperature-critical", "65"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(
        Read(outcome).summary,
        "RAID UNKNOWN - the command line was not understood: --temperature-warning 70 is above "
        "--temperature-critical 65");
    EXPECT_THAT(Read(Check(Server(), {"--wear-critical", "70"})).summary,
                HasSubstr("--wear-warning 80 (when not given) is above --wear-critical 70"));
    EXPECT_THAT(
        Read(Check(Server(), {"--ssd-temperature-warning", "90"})).summary,
        HasSubstr("--ssd-temperature-warning 90 is above --ssd-temperature-critical 80 (when "
                  "not given)"));
    EXPECT_EQ(Check(Server(), {"--wear-warning", "100"}).status, 0);
}

TEST_F(CheckCommandTest, ToolsTextsCannotBreakTheForm) {
    const CEnd outcome =
        Check(Server({.state = "bad|state=1\n'\x1b[31m\xff", .temperature = "a|b"}));
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(Read(outcome).summary, HasSubstr("\"bad_state=1\\n'\\x1b[31m\\xff\""));
}

TEST_F(CheckCommandTest, OptionsChangeTheRules) {
    const CRecords degraded = Server({}, "Degraded");
    EXPECT_EQ(Check(degraded).status, 2);
    EXPECT_EQ(Check(degraded, {"--degraded", "warning"}).status, 1);
    EXPECT_EQ(Check(Server(), {"--temperature-warning", "30"}).status, 1);
    EXPECT_EQ(
        Check(Server(), {"--temperature-warning", "20", "--temperature-critical", "30"}).status, 2);
}

TEST_F(CheckCommandTest, MissingMeasurementIsStated) {
    const CEnd outcome = Check(Server({.temperature = ""}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(Read(outcome).details,
                ElementsAre("not reported: controller 0 drive PD3 (serial SERIAL3): temperature"));
}

TEST_F(CheckCommandTest, OldToolIsNoted) {
    CRecords answer = Server();
    answer.push_back({"notice", "01"});
    const CEnd outcome = Check(answer);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(Read(outcome).details,
                ElementsAre(StartsWith("note: the RAID tool's version is older than 4.4")));
}

// No answer to judge

struct CReasonRow {
    CRecords answer;
    const char* reason;
    const char* message;
    const char* command;
};

TEST_F(CheckCommandTest, EveryReasonForNoAnswerIsTold) {
    const char* const command = "krzcli -ctrlinfo -a0";
    const CReasonRow rows[] = {
        {{}, "no-hardware", "no RAID controller or PCIe SSD was found", ""},
        {{{"error", "02"}, {"notice", "02"}, {"detail", "none"}},
         "no-drives",
         "the RAID tool is not installed, and no drive is attached to the RAID controller",
         ""},
        {{{"result", "0"}, {"error", "02"}, {"detail", "none"}},
         "no-tool",
         "the RAID tool is not installed",
         ""},
        {{{"result", "0"}, {"error", "01"}, {"detail", command}},
         "tool-failed",
         "the RAID tool reported an error, or could not be run",
         command},
        {{{"result", "0"}, {"error", "05"}, {"detail", command}},
         "tool-timeout",
         "the RAID tool did not answer in time",
         command},
        {{{"result", "0"}, {"error", "03"}, {"detail", ""}},
         "report-unreadable",
         "the RAID tool's report could not be read",
         ""},
        {{{"result", "0"}, {"error", "04"}, {"detail", ""}},
         "report-not-understood",
         "the RAID tool's report was not understood",
         ""},
        {{{"result", "0"}, {"detail", "none"}}, "request-failed", "the request failed", ""},
        {{{"result", "0"}, {"error", "99"}},
         "request-failed",
         "the request failed with the unknown code 99",
         ""},
        {{{"throw", "GetStorageInfo", "private"}},
         "plugin-failed",
         "the request ended with an exception: private to the plug-in",
         ""},
        {{{"no-object"}}, "plugin-failed", "the plug-in made no plug-in object", ""},
    };
    for (const CReasonRow& row : rows) {
        const std::string message =
            std::string(row.message) +
            (*row.command == '\0' ? "" : " (" + std::string(row.command) + ")");
        const CEnd text = Check(row.answer);
        EXPECT_EQ(text.status, 3) << row.message;
        EXPECT_EQ(text.out, "RAID UNKNOWN - " + message + "\n");
        const CEnd json = Check(row.answer, {"--format", "json"});
        EXPECT_EQ(json.status, 3) << row.message;
        EXPECT_EQ(Json(json)["reason"], row.reason);
        EXPECT_EQ(Json(json)["message"], message);
        EXPECT_EQ(Json(json)["failed_command"], row.command);
        EXPECT_EQ(Json(json)["status"], "UNKNOWN");
    }
}

TEST_F(CheckCommandTest, PluginThatCannotBeLoadedIsUnknown) {
    const CEnd outcome = Run({"check", "--plugin", "/nowhere/plugin.so"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(Read(outcome).summary,
              "RAID UNKNOWN - the plug-in could not be loaded, tried:   /nowhere/plugin.so: cannot "
              "open shared object file: No such file or directory Name the plug-in with --plugin "
              "PATH or the environment variable QOR_PLUGIN.");
    const CEnd json = Run({"check", "--plugin", "/nowhere/plugin.so", "--format", "json"});
    EXPECT_EQ(Json(json)["reason"], "plugin-not-loaded");
}

TEST_F(CheckCommandTest, ServerWithoutHardwareIsWhatTheOptionSays) {
    const char* const words[] = {"ok", "warning", "critical", "unknown"};
    const CRecords noDrives = {{"error", "02"}, {"notice", "02"}, {"detail", "none"}};
    for (int status = 0; status < 4; ++status) {
        EXPECT_EQ(Check({}, {"--no-hardware", words[status]}).status, status);
        EXPECT_EQ(Check(noDrives, {"--no-hardware", words[status]}).status, status);
    }
    EXPECT_EQ(Check({{"result", "0"}, {"error", "02"}}, {"--no-hardware", "ok"}).status, 3);
    EXPECT_EQ(Check({}, {"--no-hardware", "ok", "--controller", "1"}).status, 3);
    EXPECT_EQ(Check({}, {"--no-hardware", "critical", "--controller", "1"}).status, 2);
    EXPECT_EQ(Check({}, {"--no-hardware", "ok"}).out,
              "RAID OK - no RAID controller or PCIe SSD was found\n");
}

TEST_F(CheckCommandTest, NumberWithZerosInFrontIsDecimal) {
    EXPECT_EQ(Check(Server(), {"--temperature-warning", "031"}).status, 0);
    EXPECT_EQ(Check(Server(), {"--temperature-warning", "030"}).status, 1);
    EXPECT_EQ(Check(Server(), {"--temperature-warning", "08"}).status, 1);
}

TEST_F(CheckCommandTest, CommandLineThatIsNotUnderstoodIsUnknown) {
    const std::vector<std::vector<std::string>> wrong = {
        {"--unknown"},
        {"more"},
        {"--degraded", "ok"},
        {"--no-hardware", "fine"},
        {"--format", "xml"},
        {"--temperature-warning", "hot"},
        {"--temperature-critical", "-1"},
        {"--hold", "-1"},
        {"--state"},
    };
    for (const auto& options : wrong) {
        const CEnd outcome = Check({}, options);
        EXPECT_EQ(outcome.status, 3) << options.front();
        EXPECT_THAT(Read(outcome).summary,
                    StartsWith("RAID UNKNOWN - the command line was not understood: "));
    }
    EXPECT_FALSE(fs::exists(m_Folder / "log"));
}

TEST_F(CheckCommandTest, HelpIsNoFailure) {
    const CEnd outcome = Run({"check", "--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("3  UNKNOWN"));
}

TEST_F(CheckCommandTest, OutputThatCannotBeWrittenIsUnknown) {
    Answer(Server());
    const CEnd outcome = qortest::RunCommand({.program = QORCTL_PROGRAM,
                                              .arguments = {"check", "--plugin", STAND_IN_PLUGIN},
                                              .environment = m_Environment,
                                              .output = "/dev/full"});
    EXPECT_EQ(outcome.status, 3);
}

// JSON

TEST_F(CheckCommandTest, JsonHasStatusFindingsAndValues) {
    const CEnd outcome =
        Check(Server({.temperature = "", .mediaErrors = "2"}), {"--format", "json"});
    EXPECT_EQ(outcome.status, 1);
    const nlohmann::json json = Json(outcome);
    EXPECT_EQ(json["schema_version"], 2);
    EXPECT_EQ(json["command"], "check");
    EXPECT_EQ(json["status"], "WARNING");
    EXPECT_EQ(json["exit_status"], 1);
    EXPECT_EQ(json["reason"], "judged");
    EXPECT_EQ(json["message"], "controller 0 drive PD3 (serial SERIAL3): 2 media errors");
    EXPECT_EQ(json["findings"], nlohmann::json::parse(R"json([{"severity":"WARNING",
        "rule":"drive-media-errors","object":"controller 0 drive PD3 (serial SERIAL3)",
        "physical_drive":{"controller":0,"drive":3,"serial":"SERIAL3"},
        "message":"2 media errors",
        "sentence":"Controller 0 drive PD3 (serial SERIAL3) has 2 media errors: it may be failing; look at its SMART data."}])json"));
    EXPECT_EQ(json["not_reported"],
              nlohmann::json::parse(R"json([{"object":"controller 0 drive PD3 (serial SERIAL3)",
            "physical_drive":{"controller":0,"drive":3,"serial":"SERIAL3"},"what":"temperature"}])json"));
    EXPECT_EQ(json["notes"], nlohmann::json::array());
    EXPECT_EQ(json["performance"][0],
              nlohmann::json::parse(
                  R"({"label":"controllers","value":1,"unit":"","warning":"","critical":""})"));
}

TEST_F(CheckCommandTest, JsonIsValidWhateverTheToolPrints) {
    const nlohmann::json json =
        Json(Check(Server({.state = "\xff\"\x01", .serial = "\xfe"}), {"--format", "json"}));
    ASSERT_FALSE(json.is_discarded());
    EXPECT_EQ(json["message"],
              "controller 0 drive PD3 (serial \xef\xbf\xbd): unknown state \"\xef\xbf\xbd\"\x01\"");
}

// The state file

TEST_F(CheckCommandTest, OnlyGrowthAlarmsWithAState) {
    EXPECT_EQ(Read(CheckState({.mediaErrors = "2"})).details,
              std::vector<std::string>{
                  "note: controller 0 drive PD3 (serial SERIAL3): first seen with 2 media errors"});
    EXPECT_EQ(CheckState({.mediaErrors = "2"}).status, 0);
    const CEnd grown = CheckState({.mediaErrors = "5"});
    EXPECT_EQ(grown.status, 1);
    EXPECT_EQ(Read(grown).summary,
              "RAID WARNING - controller 0 drive PD3 (serial SERIAL3): 5 media errors, 3 more");
    EXPECT_EQ(CheckState({.mediaErrors = "5"}).status, 1);
    EXPECT_EQ(Check(Server({.mediaErrors = "5"}), {"--state", m_State, "--hold", "0"}).status, 0);
}

TEST_F(CheckCommandTest, ReplacedDriveStartsAnew) {
    CheckState({.mediaErrors = "2"});
    EXPECT_EQ(CheckState({.mediaErrors = "7", .serial = "OTHER"}).status, 0);
    EXPECT_EQ(CheckState({.mediaErrors = "8", .serial = "OTHER"}).status, 1);
}

TEST_F(CheckCommandTest, StateFileIsNobodyElsesToRead) {
    CheckState({});
    struct stat status = {};
    ASSERT_EQ(stat(m_State.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(CheckCommandTest, CorruptStateIsUnknownAndLeftAsItIs) {
    WriteFile(m_State, "{\"format\":\"qorctl-health-state\",");
    const CEnd outcome = CheckState({.mediaErrors = "2"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(Read(outcome).summary,
              "RAID UNKNOWN - counters not judged: " + m_State +
                  ": not a state file of this program, remove it to start anew");
    EXPECT_EQ(ReadFile(m_State), "{\"format\":\"qorctl-health-state\",");
}

TEST_F(CheckCommandTest, CorruptStateDoesNotHideAFailedDrive) {
    WriteFile(m_State, "");
    const CEnd outcome = CheckState({.state = "FAILED"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(Read(outcome).details, testing::SizeIs(2));
}

TEST_F(CheckCommandTest, LockedStateIsUnknown) {
    const int lock = open((m_State + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const CEnd outcome = CheckState({});
    close(lock);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(Read(outcome).summary, HasSubstr("another process is using it"));
    EXPECT_FALSE(fs::exists(m_State));
    EXPECT_EQ(CheckState({}).status, 0);
}

// Whoever may open a file may hold its lock.
TEST_F(CheckCommandTest, LockThatOthersCouldHoldIsMadeAnew) {
    WriteFile(m_State + ".lock", "");
    ASSERT_EQ(chmod((m_State + ".lock").c_str(), 0644), 0);
    const int lock = open((m_State + ".lock").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_EQ(CheckState({}).status, 0);
    close(lock);
    struct stat status = {};
    ASSERT_EQ(stat((m_State + ".lock").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(CheckCommandTest, DirectoryThatOthersMayWriteIntoKeepsNoState) {
    fs::create_directory(m_Folder / "tmp");
    for (const int mode : {01777, 0777, 0770, 0775}) {
        fs::permissions(m_Folder / "tmp", fs::perms(mode));
        const CEnd outcome =
            Check(Server(), {"--state", m_Folder / "tmp/health.json", "--format", "json"});
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(Json(outcome)["findings"][0]["rule"], "state-not-written");
        EXPECT_EQ(Json(outcome)["findings"][0]["message"],
                  "counters not judged: " + (m_Folder / "tmp/health.json.lock").string() +
                      ": its directory is not safe: other users may write in it");
        EXPECT_TRUE(fs::is_empty(m_Folder / "tmp"));
    }
}

// The state of drives with serial numbers that a tool made up: more than is read again.
std::string FullState(size_t size) {
    nlohmann::json drives = nlohmann::json::object();
    const std::string padding(200'000, 'x');
    for (size_t i = 0; i * padding.size() < size; ++i) {
        drives["serial " + std::to_string(i) + padding] = {{"seen", std::time(nullptr) - 1000},
                                                           {"counters", nlohmann::json::object()}};
    }
    return nlohmann::json({{"format", "qorctl-health-state"}, {"version", 1}, {"drives", drives}})
        .dump();
}

TEST_F(CheckCommandTest, StateNeverGrowsBeyondWhatIsReadAgain) {
    WriteFile(m_State, FullState(16'600'000));
    ASSERT_LT(fs::file_size(m_State), 16U << 20U);
    CRecords answer = Server({.mediaErrors = "2"});
    for (int i = 0; i < 1000; ++i) {
        AddDrive(answer,
                 {.number = "PD" + std::to_string(i + 10), .serial = "NEW" + std::to_string(i)});
    }
    EXPECT_EQ(Check(answer, {"--state", m_State}).status, 0);
    EXPECT_LT(fs::file_size(m_State), 16U << 20U);
    EXPECT_EQ(Check(answer, {"--state", m_State}).status, 0);
}

TEST_F(CheckCommandTest, StateThatCannotBeReadOrWrittenIsUnknown) {
    const struct {
        const char* path;
        const char* rule;
    } rows[] = {{"/nowhere/health.json", "state-not-written"},
                {"/proc/health.json", "state-not-written"},
                {"/opt/tarmica/ctl", "state-unreadable"}};
    for (const auto& row : rows) {
        const CEnd outcome = Check(Server(), {"--state", row.path, "--format", "json"});
        EXPECT_EQ(outcome.status, 3) << row.path;
        EXPECT_EQ(Json(outcome)["findings"][0]["rule"], row.rule) << row.path;
    }
}

TEST_F(CheckCommandTest, StateIsNotTouchedWithoutAnAnswer) {
    CheckState({.mediaErrors = "2"});
    const std::string before = ReadFile(m_State);
    EXPECT_EQ(Check({{"result", "0"}, {"error", "05"}}, {"--state", m_State}).status, 3);
    EXPECT_EQ(Check({}, {"--state", m_State}).status, 3);
    EXPECT_EQ(ReadFile(m_State), before);
}

}  // namespace
