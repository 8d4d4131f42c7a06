// The alerting rules for Prometheus, in its own promtool: each alert fires when it should, does not
// one step below, and ends. What promtool is given are the metrics of simulated servers.
#include <gmock/gmock.h>

#include <map>
#include <regex>
#include <set>

#include "SimFixture.h"

namespace qortest {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr int MINUTES = 90;              // of each phase: before, while, and after
constexpr const char* ABSENT = "stale";  // what a series is after its last sample

struct CCase {
    const char* alert;
    const char* host;     // that is well
    const char* trouble;  // the patch that should fire; empty: the fault
    const char* near;     // one step below; empty: there is none
    const char* fault = "";
    int minutes = MINUTES;    // that the trouble lasts, and that of the phase after it
    int seen = MINUTES / 2;   // minutes after its begin when the alert fires
    const char* always = "";  // a patch of all servers of the case
};

#define REPLACE(path, value) R"({"op": "replace", "path": ")" path R"(", "value": )" value "}"
#define ADD(path, value) R"({"op": "add", "path": ")" path R"(", "value": )" value "}"
#define REMOVE(path) R"({"op": "remove", "path": ")" path R"("})"
#define DRIVE "/controllers/0/drives/3"
#define NEW_TOOL REPLACE("/tool/version", R"("7.0")")
#define LOGICAL "/controllers/0/groups/1/lds/0/state"

constexpr CCase CASES[] = {
    {.alert = "QorCollectionFails", .host = "sas", .trouble = "", .near = "", .fault = "error"},
    {.alert = "QorCollectionIncomplete",
     .host = "sas",
     .trouble = "",
     .near = "",
     .fault = "truncate=1500@-pdinfo"},
    {.alert = "QorStateUnknown",
     .host = "sas",
     .trouble = REPLACE(LOGICAL, R"("Odd")"),
     .near = REPLACE(LOGICAL, R"("Partially Degraded")")},
    {.alert = "QorToolTooOld",
     .host = "sas",
     .trouble = REPLACE("/tool/version", R"("4.3")"),
     .near = REPLACE("/tool/version", R"("4.4")"),
     .minutes = 150,
     .seen = 100},
    {.alert = "QorControllerGone",
     .host = "large",
     .trouble = REMOVE("/controllers/3"),
     .near = ""},
    {.alert = "QorDrivesMissing",
     .host = "sas",
     .trouble = "",
     .near = "",
     .fault = "truncate=1500@-pdinfo"},
    {.alert = "QorBatteryBad",
     .host = "sas",
     .trouble = REPLACE("/controllers/0/battery/status", R"("Low")"),
     .near = REPLACE("/controllers/0/battery/status", R"("Learning")")},
    {.alert = "QorBatteryGone",
     .host = "sas",
     .trouble = REMOVE("/controllers/0/battery"),
     .near = REPLACE("/controllers/0/battery/charge", "0")},
    {.alert = "QorLogicalDriveDegraded",
     .host = "sas",
     .trouble = REPLACE(LOGICAL, R"("Partially Degraded")"),
     .near = REPLACE(LOGICAL, R"("Optimal")")},
    {.alert = "QorLogicalDriveOffline",
     .host = "sas",
     .trouble = REPLACE(LOGICAL, R"("Offline")"),
     .near = REPLACE(LOGICAL, R"("Degraded")")},
    {.alert = "QorPhysicalDriveFailed",
     .host = "sas",
     .trouble = REPLACE(DRIVE "/status", R"("FAILED")"),
     .near = REPLACE(DRIVE "/status", R"("REBUILD")")},
    {.alert = "QorPhysicalDriveGone",
     .host = "sas",
     .trouble = REMOVE("/controllers/0/drives/6"),
     .near = ""},
    {.alert = "QorPredictiveFailure",
     .host = "small",
     .trouble = ADD(DRIVE "/predictiveFailures", "1"),
     .near = ADD(DRIVE "/mediaErrors", "1"),
     .minutes = 1600},
    {.alert = "QorDriveErrorsGrow",
     .host = "small",
     .trouble = ADD(DRIVE "/otherErrors", "1"),
     .near = ADD(DRIVE "/predictiveFailures", "1"),
     .minutes = 1600},
    {.alert = "QorPhysicalDriveTooHot",
     .host = "sas",
     .trouble = REPLACE(DRIVE "/temperature", "61"),
     .near = REPLACE(DRIVE "/temperature", "60")},
    {.alert = "QorRebuildTooLong",
     .host = "sas",
     .trouble = REPLACE(DRIVE "/status", R"("COPYBACK")"),
     .near = REPLACE(DRIVE "/status", R"("HOT SPARE")"),
     .minutes = 1600,
     .seen = 1500},
    {.alert = "QorPcieSsdBad",
     .host = "tool-6.8",
     .trouble = REPLACE("/pcieSsds/0/status", R"("Warning")"),
     .near = REPLACE("/pcieSsds/0/temperature", "81"),
     .always = NEW_TOOL},
    {.alert = "QorPcieSsdWorn",
     .host = "tool-6.8",
     .trouble = REPLACE("/pcieSsds/0/lifeUsed", "91"),
     .near = REPLACE("/pcieSsds/0/lifeUsed", "90"),
     .minutes = 150,
     .seen = 100,
     .always = NEW_TOOL},
    {.alert = "QorPcieSsdTooHot",
     .host = "tool-6.8",
     .trouble = REPLACE("/pcieSsds/0/temperature", "81"),
     .near = REPLACE("/pcieSsds/0/temperature", "80"),
     .always = NEW_TOOL},
};

void PrintTo(const CCase& one, std::ostream* stream) {
    *stream << one.alert;
}

// What a server tells: the value of each series.
using CSamples = std::map<std::string, std::string>;

struct CSeriesPhase {
    const CSamples* samples;
    int minutes;
};

// The text of an alert in the rules.
std::string RuleOf(const std::string& alert) {
    const std::string rules = ReadFile(RULES_FILE);
    const size_t begin = rules.find("- alert: " + alert + "\n");
    return rules.substr(begin, rules.find("- alert: ", begin + 1) - begin);
}

// Those that the rule speaks of.
CSamples ReadSamples(const std::string& text, const std::string& rule) {
    CSamples samples;
    for (const std::string& line : Lines(text)) {
        const size_t blank = line.rfind(' ');
        const std::string family = line.substr(0, line.find_first_of("{ "));
        if (!line.starts_with("#") && rule.find(family) != std::string::npos) {
            samples[line.substr(0, blank)] = line.substr(blank + 1);
        }
    }
    return samples;
}

std::string WithInstance(const std::string& series) {
    const size_t brace = series.find('{');
    return brace == std::string::npos
               ? series + "{instance=\"srv1\"}"
               : series.substr(0, brace + 1) + "instance=\"srv1\"," + series.substr(brace + 1);
}

// YAML's own quotes: what a series has in single ones is doubled.
std::string Quoted(const std::string& text) {
    return '\'' + std::regex_replace(text, std::regex("'"), "''") + '\'';
}

// The values of a series, one a minute.
std::string ValuesOf(const std::string& series, const std::vector<CSeriesPhase>& phases) {
    std::string values;
    bool wasThere = false;
    for (const CSeriesPhase& phase : phases) {
        const auto found = phase.samples->find(series);
        const std::string count = std::to_string(phase.minutes - 1);
        if (found != phase.samples->end()) {
            values += ' ' + found->second + "+0x" + count;
        } else {
            values += std::string(" ") + (wasThere ? ABSENT : "_") + " _x" + count;
        }
        wasThere = found != phase.samples->end();
    }
    return values;
}

std::string InputOf(const std::vector<CSeriesPhase>& phases) {
    std::set<std::string> names;
    for (const CSeriesPhase& phase : phases) {
        for (const auto& [series, value] : *phase.samples) {
            names.insert(series);
        }
    }
    std::string text = "    input_series:\n";
    for (const std::string& series : names) {
        text += "      - series: " + Quoted(WithInstance(series)) + "\n        values: '" +
                ValuesOf(series, phases).substr(1) + "'\n";
    }
    return text;
}

// The number of alerts of that name that fire at a minute.
std::string Expectation(const std::string& alert, int minute, bool fires) {
    std::string text =
        "      - expr: 'count(ALERTS{alertname=\"" + alert +
        "\",alertstate=\"firing\",instance=\"srv1\"}) > bool 0'\n        eval_time: " +
        std::to_string(minute) + "m\n        exp_samples:";
    return text + (fires ? "\n          - value: 1\n            labels: '{}'\n" : " []\n");
}

class CRulesTest : public CSimFixture, public testing::WithParamInterface<CCase> {
protected:
    CSamples Metrics(const std::string& host, const std::string& fault = "") const {
        CStrings command = {"run", "--host", host};
        if (!fault.empty()) {
            command.insert(command.end(), {"--fault", fault});
        }
        command.insert(command.end(),
                       {"--", "env", "QOR_PLUGIN=" QOR_PLUGIN_PATH, QORCTL_PROGRAM, "metrics"});
        const CEnd end = Qorsim(command);
        EXPECT_EQ(end.status, 0) << end.err;
        return ReadSamples(end.out, RuleOf(GetParam().alert));
    }

    CSamples Patched(const std::string& patch) const {
        const CCase& one = GetParam();
        json all = json::parse(std::string("[") + one.always + "]");
        for (const json& operation : json::parse('[' + patch + ']')) {
            all.push_back(operation);
        }
        return Metrics(WriteProfile({{"extends", one.host}, {"patch", all}}));
    }

    CSamples Trouble() const {
        const CCase& one = GetParam();
        return *one.trouble == '\0' ? Metrics(one.host, one.fault) : Patched(one.trouble);
    }

    CEnd Promtool(const std::string& tests) const {
        const std::string file = Folder() / "test.yml";
        WriteFile(file,
                  "rule_files: ['" RULES_FILE "']\nevaluation_interval: 1m\ntests:\n" + tests);
        return RunProgram({"/usr/bin/promtool", "test", "rules", file});
    }

    static std::string Test(const std::vector<CSeriesPhase>& phases,
                            const std::string& expectations) {
        return "  - interval: 1m\n" + InputOf(phases) + "    promql_expr_test:\n" + expectations;
    }
};

TEST_P(CRulesTest, FiresNotBelowAndEnds) {
    const CCase& one = GetParam();
    const CSamples well = Patched("");
    const CSamples trouble = Trouble();
    ASSERT_NE(well, trouble);
    const int end = MINUTES + one.minutes;
    std::string tests = Test({{&well, MINUTES}, {&trouble, one.minutes}, {&well, one.minutes}},
                             Expectation(one.alert, MINUTES - 1, false) +
                                 Expectation(one.alert, MINUTES + one.seen, true) +
                                 Expectation(one.alert, end + one.minutes - 1, false));
    CSamples near;
    if (*one.near != '\0') {
        near = Patched(one.near);
        ASSERT_FALSE(near.empty());
        tests += Test({{&well, MINUTES}, {&near, one.minutes}},
                      Expectation(one.alert, MINUTES + one.seen, false) +
                          Expectation(one.alert, end - 1, false));
    }
    const CEnd told = Promtool(tests);
    EXPECT_EQ(told.status, 0) << told.out << told.err;
}

std::string TestName(const testing::TestParamInfo<CCase>& one) {
    return one.param.alert;
}

INSTANTIATE_TEST_SUITE_P(Alert, CRulesTest, testing::ValuesIn(CASES), TestName);

// Values of series, one a minute, in promtool's words.
using CSeries = std::map<std::string, std::string>;

class RulesFileTest : public CSimFixture {
protected:
    void Expect(const CSeries& series, const std::string& expectations) const {
        const std::string file = Folder() / "test.yml";
        std::string text = "rule_files: ['" RULES_FILE
                           "']\nevaluation_interval: 1m\ntests:\n"
                           "  - interval: 1m\n    input_series:\n";
        for (const auto& [name, values] : series) {
            text += "      - series: " + Quoted(WithInstance(name)) + "\n        values: '" +
                    values + "'\n";
        }
        WriteFile(file, text + "    promql_expr_test:\n" + expectations);
        const CEnd told = RunProgram({"/usr/bin/promtool", "test", "rules", file});
        EXPECT_EQ(told.status, 0) << told.out << told.err;
    }
};

// Its time is that of the test, so it is made here and not by a server.
TEST_F(RulesFileTest, CollectionThatStandsStillIsStale) {
    Expect({{"qor_collection_timestamp_seconds", "0+60x60 3600+0x40 6120+60x60"}},
           Expectation("QorCollectionStale", 60, false) +
               Expectation("QorCollectionStale", 70, false) +
               Expectation("QorCollectionStale", 90, true) +
               Expectation("QorCollectionStale", 110, false));
}

TEST_F(RulesFileTest, CollectionThatStandsStillIsStaleByAnyClock) {
    Expect({{"qor_collection_timestamp_seconds", "315360000+60x60 315363600+0x40 315366120+60x60"}},
           Expectation("QorCollectionStale", 60, false) +
               Expectation("QorCollectionStale", 70, false) +
               Expectation("QorCollectionStale", 90, true) +
               Expectation("QorCollectionStale", 120, false));
}

// That takes minutes, and --smart is for each quarter of an hour.
TEST_F(RulesFileTest, CollectionEachQuarterOfAnHourIsNotStale) {
    Expect({{"qor_collection_timestamp_seconds", "0+0x15 960+0x13 1800+0x16 2820+0x60"}},
           Expectation("QorCollectionStale", 15, false) +
               Expectation("QorCollectionStale", 29, false) +
               Expectation("QorCollectionStale", 46, false) +
               Expectation("QorCollectionStale", 60, false) +
               Expectation("QorCollectionStale", 80, true));
}

// A server that is switched off, or whose exporter is.
TEST_F(RulesFileTest, ServerThatSaysNothingHasNoControllerGone) {
    Expect({{"qor_collection_timestamp_seconds", "0+60x60 stale _x60"},
            {"qor_collection_success", "1+0x60 stale _x60"},
            {"qor_controller_info{controller=\"0\",serial=\"1\"}", "1+0x60 stale _x60"}},
           Expectation("QorControllerGone", 59, false) +
               Expectation("QorControllerGone", 75, false) +
               Expectation("QorControllerGone", 110, false));
}

// The request failed, which is an alert of its own; but it fails, too, when the only one is gone.
TEST_F(RulesFileTest, FailedRequestHasAControllerGoneOnlyWhereNoneIsReported) {
    for (const bool isGone : {false, true}) {
        const std::string reason = isGone ? "no-controller" : "tool-timeout";
        Expect({{"qor_collection_timestamp_seconds", "0+60x120"},
                {"qor_collection_success", "1+0x60 0+0x60"},
                {"qor_collection_result_info{reason=\"" + reason + "\"}", "_x61 1+0x60"},
                {"qor_controller_info{controller=\"0\",serial=\"1\"}", "1+0x60 stale _x60"}},
               Expectation("QorControllerGone", 59, false) +
                   Expectation("QorControllerGone", 75, isGone));
    }
}

TEST_F(RulesFileTest, CollectionFailsWhateverTheReasonIs) {
    const std::string result = "qor_collection_result_info{reason=\"";
    Expect(
        {{"qor_collection_success", "1+0x10 0+0x60 1+0x20"},
         {result + "judged\"}", "1+0x10 stale _x60 1+0x20"},
         {result + "tool-error\"}", "_x11 1+0x2 stale _x2 1+0x2 stale _x2 1+0x2 stale"},
         {result + "time-limit\"}", "_x14 1+0x2 stale _x2 1+0x2 stale _x2 1+0x45 stale"}},
        Expectation("QorCollectionFails", 11, false) + Expectation("QorCollectionFails", 20, true) +
            Expectation("QorCollectionFails", 60, true) +
            Expectation("QorCollectionFails", 75, false) +
            "    alert_rule_test:\n      - eval_time: 60m\n        alertname: QorCollectionFails\n"
            "        exp_alerts:\n          - exp_labels: {instance: srv1, severity: warning}\n"
            "            exp_annotations:\n"
            "              summary: 'srv1: no answer about the storage (time-limit)'\n"
            "              runbook_url: "
            "'file:///usr/share/doc/qor/docs/alerts.md#qorcollectionfails'\n");
}

// Drives whose enclosure and slot the tool did not tell.
TEST_F(RulesFileTest, DriveWithoutAPlaceIsGoneToo) {
    CSeries series = {{"qor_controller_info{controller=\"0\"}", "1+0x150"}};
    for (const std::string family : {"info", "state"}) {
        const std::string name = "qor_physical_drive_" + family + "{controller=\"0\",pd=\"";
        series[name + "7\"" + (family == "state" ? ",state=\"ONLINE\"" : "") + "}"] = "1+0x150";
        series[name + "8\"" + (family == "state" ? ",state=\"ONLINE\"" : "") + "}"] =
            "1+0x60 stale _x89";
    }
    Expect(series, Expectation("QorPhysicalDriveGone", 59, false) +
                       Expectation("QorPhysicalDriveGone", 90, true) +
                       Expectation("QorPhysicalDriveGone", 140, false));
}

// A spare part takes the place of a drive that had errors, which is no growth; then it has its own.
TEST_F(RulesFileTest, ErrorsGrowFromTheFirstOneOfASparePart) {
    const std::string drive = "{controller=\"0\",enclosure=\"252\",slot=\"3\"}";
    for (const auto& [alert, family] :
         {std::pair("QorDriveErrorsGrow", "qor_physical_drive_media_errors_total"),
          std::pair("QorDriveErrorsGrow", "qor_physical_drive_other_errors_total"),
          std::pair("QorPredictiveFailure", "qor_physical_drive_predictive_failures_total")}) {
        Expect({{family + drive, "120+0x60 0+0x60 1+0x1600"}},
               Expectation(alert, 60, false) + Expectation(alert, 62, false) +
                   Expectation(alert, 121, false) + Expectation(alert, 124, true) +
                   Expectation(alert, 1400, true) + Expectation(alert, 1580, false));
    }
}

// Fewer than the drive before are the spare part's own, old ones.
TEST_F(RulesFileTest, SparePartWithFewerOldErrorsIsNoGrowth) {
    const std::string drive = "{controller=\"0\",enclosure=\"252\",slot=\"3\"}";
    Expect({{"qor_physical_drive_media_errors_total" + drive, "120+0x60 5+0x1600"}},
           Expectation("QorDriveErrorsGrow", 62, false) +
               Expectation("QorDriveErrorsGrow", 1510, false));
}

// While the server was off for hours; of one that is new, a day after it was first seen.
TEST_F(RulesFileTest, ErrorsGrowWhileNobodyLooks) {
    const std::string series =
        "qor_physical_drive_media_errors_total{controller=\"0\",enclosure=\"252\",slot=\"3\"}";
    Expect({{series, "2+0x1500 stale _x238 3+0x1600"}},
           Expectation("QorDriveErrorsGrow", 1500, false) +
               Expectation("QorDriveErrorsGrow", 1742, true) +
               Expectation("QorDriveErrorsGrow", 3300, false));
    Expect({{series, "2+0x60 stale _x238 3+0x1600"}},
           Expectation("QorDriveErrorsGrow", 60, false) +
               Expectation("QorDriveErrorsGrow", 1445, true) +
               Expectation("QorDriveErrorsGrow", 1800, false));
}

// The names of all alerts in the rules.
CStrings Alerts() {
    CStrings alerts;
    for (const std::string& line : Lines(ReadFile(RULES_FILE))) {
        std::smatch match;
        if (std::regex_search(line, match, std::regex("- alert: (\\w+)"))) {
            alerts.push_back(match[1]);
        }
    }
    return alerts;
}

TEST_F(RulesFileTest, PromtoolFindsNothingWrong) {
    const CEnd told = RunProgram({"/usr/bin/promtool", "check", "rules", RULES_FILE});
    EXPECT_EQ(told.status, 0) << told.out << told.err;
}

TEST_F(RulesFileTest, EachAlertHasItsTestAndItsPlaceOnThePage) {
    std::set<std::string> tested = {"QorCollectionStale"};
    for (const CCase& one : CASES) {
        tested.insert(one.alert);
    }
    const std::string page = ReadFile(ALERTS_PAGE);
    const CStrings alerts = Alerts();
    EXPECT_EQ(alerts.size(), tested.size());
    for (const std::string& alert : alerts) {
        EXPECT_THAT(tested, testing::Contains(alert));
        EXPECT_THAT(page, HasSubstr("\n## " + alert + "\n"));
    }
}

TEST_F(RulesFileTest, EachAlertNamesTheServerAndItsRunbook) {
    for (const std::string& alert : Alerts()) {
        const std::string rule = RuleOf(alert);
        std::string anchor = alert;
        std::transform(anchor.begin(), anchor.end(), anchor.begin(), ::tolower);
        EXPECT_THAT(rule, HasSubstr("docs/alerts.md#" + anchor + "\"\n"));
        EXPECT_THAT(rule, HasSubstr("summary: \"{{ $labels.instance }}: "));
        EXPECT_THAT(rule, HasSubstr("labels: {severity: "));
    }
}

}  // namespace
}  // namespace qortest
