// The text for node_exporter, with promtool of Debian's own package: on every shipped host and on
// every kind of failure; and docs/metrics.md, held against what those hosts give.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <set>

#include "MetricsReading.h"
#include "Rights.h"
#include "ServerFixture.h"

namespace {

using qortest::CEnd;
using qortest::CMetricsReading;
using qortest::CStrings;
using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

using CWords = std::set<std::string>;

// A row of the page's table.
struct CPageRow {
    std::string type, unit;
    CWords labels;
    std::string example;
};

class MetricsCommandTest : public qortest::CServerFixture {
protected:
    // What it wrote, which promtool has nothing to say of.
    std::string Checked(const CEnd& end) const {
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_EQ(qortest::ReadMetrics(end.out).problem, "");
        const std::string file = Folder() / "checked.prom";
        qortest::WriteFile(file, end.out);
        const CEnd check = qortest::RunCommand(
            {.program = "promtool", .arguments = {"check", "metrics"}, .input = file});
        EXPECT_EQ(check.status, 0);
        EXPECT_EQ(check.out + check.err, "");
        return end.out;
    }

    CMetricsReading Read(const std::string& host, const std::string& options = "") const {
        return qortest::ReadMetrics(Checked(Shell(host, "qorctl metrics " + options)));
    }

    // With a fault of the server.
    static CEnd Faulty(const std::string& host, const std::string& fault, CStrings options = {}) {
        CStrings words = {"run", "--host", host, "--fault", fault, "--", QORCTL_PROGRAM, "metrics"};
        words.insert(words.end(), options.begin(), options.end());
        return Qorsim(words);
    }

    // Fails if anything is told of a device.
    static void ExpectFailure(const CMetricsReading& read, const std::string& reason) {
        EXPECT_EQ(read.Value("qor_collection_success"), 0) << reason;
        EXPECT_EQ(read.Value("qor_collection_complete"), 0) << reason;
        EXPECT_EQ(read.Value("qor_collection_result_info", {{"reason", reason}}), 1) << reason;
        EXPECT_EQ(read.Value("qor_health", {{"status", "UNKNOWN"}}), 1) << reason;
        for (const auto& [family, about] : read.families) {
            EXPECT_TRUE(family.starts_with("qor_collection_") || family == "qor_health" ||
                        family == "qor_build_info" || family == "qor_tool_info")
                << family;
        }
    }

    // The cells of a row, without the backticks around them.
    static CStrings CellsOf(const std::string& line) {
        CStrings cells;
        for (size_t begin = 1, end = 0; (end = line.find(" |", begin)) != std::string::npos;
             begin = end + 2) {
            std::string cell = line.substr(begin, end - begin);
            cell.erase(0, cell.find_first_not_of(' '));
            cell.erase(std::remove(cell.begin(), cell.end(), '`'), cell.end());
            cells.push_back(cell);
        }
        return cells;
    }

    static std::map<std::string, CPageRow> PageRows() {
        std::map<std::string, CPageRow> rows;
        for (const std::string& line : qortest::Lines(qortest::ReadFile(METRICS_PAGE))) {
            if (!line.starts_with("| `qor_")) {
                continue;
            }
            const CStrings cells = CellsOf(line);
            EXPECT_EQ(cells.size(), 5U) << line;
            CPageRow& row = rows[cells[0]];
            EXPECT_EQ(row.type, "") << "twice: " << line;
            row = {.type = cells[1], .unit = cells[2], .labels = {}, .example = cells[4]};
            std::string labels = cells[3] + ", ";
            for (size_t end = 0; (end = labels.find(", ")) != std::string::npos;
                 labels.erase(0, end + 2)) {
                if (end > 0) {
                    row.labels.insert(labels.substr(0, end));
                }
            }
        }
        return rows;
    }

    static std::string UnitOf(const std::string& family) {
        for (const std::string unit : {"celsius", "bytes", "seconds", "ratio"}) {
            if (family.ends_with("_" + unit) || family.ends_with("_" + unit + "_total")) {
                return unit;
            }
        }
        return "";
    }
};

TEST_F(MetricsCommandTest, PromtoolHasNothingToSayAndThePageListsWhatComes) {
    std::map<std::string, CPageRow> came;  // without examples
    CWords lines;
    for (const std::string& host : qortest::ShippedHosts()) {
        for (const char* option : {"", "--smart"}) {
            const std::string text = Checked(Shell(host, std::string("qorctl metrics ") + option));
            const CMetricsReading read = qortest::ReadMetrics(text);
            for (const qortest::CMetricSeries& series : read.series) {
                CPageRow& row = came[series.family];
                row.type = read.families.at(series.family).type;
                for (const auto& [label, value] : series.labels) {
                    row.labels.insert(label);
                }
            }
            for (const std::string& line : qortest::Lines(text)) {
                lines.insert(line);
            }
        }
    }
    const std::map<std::string, CPageRow> page = PageRows();
    for (const auto& [family, row] : came) {
        ASSERT_TRUE(page.contains(family)) << family << " is missing on the page";
        EXPECT_EQ(page.at(family).type, row.type) << family;
        EXPECT_EQ(page.at(family).labels, row.labels) << family;
        EXPECT_EQ(page.at(family).unit, UnitOf(family)) << family;
    }
    for (const auto& [family, row] : page) {
        EXPECT_TRUE(came.contains(family)) << family << " never comes";
        const bool isTime = family == "qor_collection_duration_seconds" ||
                            family == "qor_collection_timestamp_seconds";
        EXPECT_TRUE(isTime ? row.example.starts_with(family + " ") : lines.contains(row.example))
            << "no host gives " << row.example;
    }
}

TEST_F(MetricsCommandTest, DevicesAreThoseOfTheReport) {
    const CMetricsReading read = Read("failed-drive");
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
    EXPECT_EQ(read.Value("qor_collection_tool_runs"), 6);
    EXPECT_EQ(read.families.at("qor_physical_drive_info").series, 8U);
    EXPECT_EQ(read.families.at("qor_logical_drive_info").series, 3U);
    const std::map<std::string, std::string> place = {
        {"controller", "0"}, {"enclosure", "252"}, {"slot", "3"}};
    auto failed = place;
    failed["state"] = "FAILED";
    EXPECT_EQ(read.Value("qor_physical_drive_state", failed), 1);
    EXPECT_EQ(read.Value("qor_physical_drive_media_errors_total", place), 120);
    EXPECT_EQ(read.Value("qor_health", {{"status", "CRITICAL"}}), 1);
    auto finding = place;
    finding["rule"] = "drive-failed";
    EXPECT_EQ(read.Value("qor_finding", finding), 1);
    auto info = place;
    info["serial"] = "K4H1R12B";
    EXPECT_EQ(read.Value("qor_physical_drive_info", info), 1);
}

TEST_F(MetricsCommandTest, SmartTakesTwoMoreRunsADrive) {
    const CMetricsReading plain = Read("sas");
    const CMetricsReading smart = Read("sas", "--smart");
    EXPECT_EQ(smart.Value("qor_collection_smart_drives"), 7);
    EXPECT_EQ(smart.Value("qor_collection_smart_failures"), 0);
    EXPECT_EQ(smart.Value("qor_collection_tool_runs"),
              plain.Value("qor_collection_tool_runs") + 2 * 7);
    EXPECT_EQ(smart.Value("qor_physical_drive_smart_events_total",
                          {{"slot", "0"}, {"attribute", "[Head Read]Errors Corrected"}}),
              18244);
}

TEST_F(MetricsCommandTest, DriveWithoutASmartAnswerIsLeftOutAndCounted) {
    const CMetricsReading read =
        qortest::ReadMetrics(Checked(Faulty("sas", "error@-pdinfo -pd[252:3]", {"--smart"})));
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
    EXPECT_EQ(read.Value("qor_collection_smart_failures"), 1);
    EXPECT_EQ(read.families.at("qor_physical_drive_smart_failure_predicted").series, 6U);
    EXPECT_EQ(read.families.at("qor_physical_drive_info").series, 7U);
}

TEST_F(MetricsCommandTest, TimeLimitIsForAllOfIt) {
    const CMetricsReading read = qortest::ReadMetrics(
        Checked(Faulty("sas", "hang@-pdinfo -pd", {"--smart", "--timeout", "2"})));
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
    EXPECT_EQ(read.Value("qor_collection_smart_failures"), 7);
    EXPECT_LT(read.Value("qor_collection_duration_seconds"), 4);
}

TEST_F(MetricsCommandTest, FailureIsAWholeTextWithoutDevices) {
    const struct {
        const char* host;
        const char* fault;
        const char* reason;
        const char* code;
        const char* timeout = "60";
    } rows[] = {
        {"small", "hang@-pdinfo", "time-over", nullptr, "2"},
        {"small", "error=No such luck@-ctrlinfo", "tool-failed", "01"},
        {"small", "not-executable", "tool-failed", "01"},
        {"small", "result-dir-full", "no-controller", nullptr},
        {"small", "empty", "no-controller", nullptr},
        {"no-tool-storcli", "delay", "no-tool", "02"},
        {"small", "result-dir-unwritable", "tool-failed", "01"},
    };
    for (const auto& row : rows) {
        const CEnd end = Faulty(row.host, row.fault, {"--timeout", row.timeout});
        const CMetricsReading read = qortest::ReadMetrics(Checked(end));
        ExpectFailure(read, row.reason);
        EXPECT_NE(end.err, "") << row.fault;
        if (row.code != nullptr) {
            EXPECT_EQ(read.Value("qor_collection_result_info", {{"error_code", row.code}}), 1)
                << row.fault;
        }
    }
}

TEST_F(MetricsCommandTest, PluginThatIsMissingIsAFailureToo) {
    ExpectFailure(Read("small", "--plugin /nowhere"), "plugin-not-loaded");
}

TEST_F(MetricsCommandTest, ServerWithoutHardwareIsNoFailure) {
    const CMetricsReading read = Read("no-controller");
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
    EXPECT_EQ(read.Value("qor_collection_result_info", {{"reason", "no-hardware"}}), 1);
    EXPECT_EQ(read.Value("qor_health", {{"status", "UNKNOWN"}}), 1);
}

// What nobody has to look at is not told in the journal.
TEST_F(MetricsCommandTest, WholeAnswerSaysNothingOnStandardError) {
    for (const std::string host : {"failed-drive", "no-controller", "tool-3.9"}) {
        EXPECT_EQ(Shell(host, "qorctl metrics").err, "") << host;
    }
}

TEST_F(MetricsCommandTest, FileIsReplacedWholeAndReadableForAll) {
    const std::string file = Folder() / "qor.prom";
    qortest::WriteFile(file, "old\n");
    ASSERT_EQ(chmod(file.c_str(), 0600), 0);
    const CEnd end = Shell("small", "umask 077; qorctl metrics --output " + file + "; stat -c %a " +
                                        file + "; ls -A " + Folder().string());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, testing::StartsWith("644\n"));
    EXPECT_THAT(end.out, Not(HasSubstr(".qorctl-")));
    const CMetricsReading read = qortest::ReadMetrics(qortest::ReadFile(file));
    EXPECT_EQ(read.problem, "");
    EXPECT_EQ(read.Value("qor_collection_success"), 1);
}

TEST_F(MetricsCommandTest, FailureReplacesTheFileToo) {
    const std::string file = Folder() / "qor.prom";
    EXPECT_EQ(Shell("small", "qorctl metrics --output " + file).status, 0);
    EXPECT_EQ(Faulty("small", "error", {"--output", file}).status, 0);
    ExpectFailure(qortest::ReadMetrics(qortest::ReadFile(file)), "tool-failed");
}

// A full disk: nothing is half there.
TEST_F(MetricsCommandTest, FileThatCannotBeWrittenIsAsItWas) {
    const std::string folder = Folder() / "full";
    const CEnd end =
        Shell("small", "mkdir " + folder + "; cd " + folder + "; " + qortest::WithMounts() +
                           "sh -c 'mount -t tmpfs -o size=8k none . && cd $PWD && echo old > "
                           "qor.prom; " QORCTL_PROGRAM
                           " metrics --output qor.prom; echo $?; cat qor.prom; ls -A; "
                           "cd /; umount " +
                           folder + "'");
    EXPECT_EQ(end.out, "1\nold\nqor.prom\n") << end.err;
    EXPECT_THAT(end.err, HasSubstr("qor.prom could not be written: No space left on device"));
    EXPECT_EQ(Shell("small", "qorctl metrics > /dev/full").status, 1);
}

TEST_F(MetricsCommandTest, WrongCommandLineWritesNothing) {
    const std::string file = Folder() / "qor.prom";
    const CEnd end = Shell("small", "qorctl metrics --wrong --output " + file);
    EXPECT_GT(end.status, 100);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(MetricsCommandTest, HelpTellsWhatSmartCosts) {
    EXPECT_THAT(Shell("small", "qorctl metrics --help").out,
                HasSubstr("two more runs of the RAID tool for each drive"));
}

}  // namespace
