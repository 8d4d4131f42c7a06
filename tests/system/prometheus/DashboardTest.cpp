// The dashboard for Grafana: each of its queries gives data on a real Prometheus that holds a day
// of simulated servers, and what it says of them are words that the pages know.
#include <gmock/gmock.h>

#include <ctime>
#include <memory>
#include <regex>
#include <set>

#include "PrometheusServer.h"
#include "SimFixture.h"

namespace qortest {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;

using CNames = std::set<std::string>;
using CValues = std::map<std::string, std::string>;  // of the dashboard's variables

constexpr const char* MAIN_SERVER = "main";  // that has one of everything
constexpr const char* ENCLOSURE = "252";
// Of its drives: a SAS drive, a SATA drive, and one that is being rebuilt. A drive has no series of
// the others' kinds.
constexpr const char* SLOTS[] = {"0", "2", "7"};

constexpr int MINUTE = 60;
constexpr int HOUR = 60 * MINUTE;
constexpr int DAY = 24 * HOUR;
constexpr int BETWEEN_SAMPLES = 2 * MINUTE;
constexpr int STEP = 5 * MINUTE;  // of Grafana, for a day on a panel's width

const json& Dashboard() {
    static const json dashboard = json::parse(ReadFile(DASHBOARD_FILE));
    return dashboard;
}

// Rows too, and those that a row holds.
std::vector<json> Panels() {
    std::vector<json> panels;
    for (const json& panel : Dashboard().at("panels")) {
        panels.push_back(panel);
        for (const json& inner : panel.value("panels", json::array())) {
            panels.push_back(inner);
        }
    }
    return panels;
}

std::vector<json> PanelsWithQueries() {
    std::vector<json> panels;
    for (const json& panel : Panels()) {
        if (panel.at("type") != "row") {
            panels.push_back(panel);
        }
    }
    EXPECT_FALSE(panels.empty());
    return panels;
}

std::string TitleOf(const json& panel) {
    return panel.at("title").get<std::string>();
}

bool IsOfType(const json& panel, const CNames& types) {
    return types.contains(panel.at("type").get<std::string>());
}

CNames Matches(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    CNames found;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), regex);
         match != std::sregex_iterator(); ++match) {
        found.insert((*match)[1]);
    }
    return found;
}

std::string Expression(const json& target) {
    return target.at("expr").get<std::string>();
}

// All queries, those of the variables too.
CStrings Queries() {
    CStrings queries;
    for (const json& panel : PanelsWithQueries()) {
        for (const json& target : panel.at("targets")) {
            queries.push_back(Expression(target));
        }
    }
    for (const json& variable : Dashboard().at("templating").at("list")) {
        if (variable.at("type") == "query") {
            queries.push_back(variable.at("query").at("query").get<std::string>());
        }
    }
    return queries;
}

// The properties of that name that a panel's fields have, those of all and those of one.
std::vector<json> Properties(const json& panel, const std::string& name) {
    std::vector<json> found;
    const json& config = panel.at("fieldConfig");
    if (config.at("defaults").contains(name)) {
        found.push_back(config.at("defaults").at(name));
    }
    for (const json& field : config.at("overrides")) {
        for (const json& property : field.at("properties")) {
            if (property.at("id") == name) {
                found.push_back(property.at("value"));
            }
        }
    }
    return found;
}

// The values that a panel has words for.
CNames MappedValues(const json& panel) {
    CNames values;
    for (const json& mappings : Properties(panel, "mappings")) {
        for (const json& mapping : mappings) {
            if (mapping.at("type") == "value") {
                for (const auto& [value, word] : mapping.at("options").items()) {
                    EXPECT_FALSE(word.at("text").get<std::string>().empty()) << value;
                    values.insert(value);
                }
            }
        }
    }
    return values;
}

// As Grafana puts them in: $NAME, ${NAME}, ${NAME:FORMAT}, [[NAME]].
std::string Substituted(const std::string& query, const CValues& values) {
    static const std::regex variable(R"(\$\{(\w+)(:\w+)?\}|\$(\w+)|\[\[(\w+)(:\w+)?\]\])");
    std::string text;
    size_t end = 0;
    for (auto match = std::sregex_iterator(query.begin(), query.end(), variable);
         match != std::sregex_iterator(); ++match) {
        const std::string name = (*match)[1].str() + (*match)[3].str() + (*match)[4].str();
        EXPECT_TRUE(values.contains(name)) << name << " in " << query;
        const auto begin = static_cast<size_t>(match->position());
        text += query.substr(end, begin - end) + (values.contains(name) ? values.at(name) : "");
        end = begin + static_cast<size_t>(match->length());
    }
    return text + query.substr(end);
}

// The simulated servers and what they told.

struct CPhase {
    std::string text;  // of qorctl metrics
    std::time_t from;
    std::time_t to;
    std::time_t told = 0;  // the time that it says it is of; 0: that of each sample
};

struct CServer {
    std::string instance;
    std::vector<CPhase> phases;
};

// The samples of a server in a text that promtool reads.
std::string SamplesOf(const std::string& instance, const CPhase& phase) {
    std::string text;
    for (std::time_t time = phase.from; time <= phase.to; time += BETWEEN_SAMPLES) {
        for (const std::string& line : Lines(phase.text)) {
            if (line.starts_with("#")) {
                continue;
            }
            const size_t labels = line.find_first_of("{ ");
            const size_t value = line.rfind(' ');
            const bool isTime = line.starts_with("qor_collection_timestamp_seconds ");
            const std::string own = R"({instance=")" + instance + R"(",job="node")";
            text +=
                line.substr(0, labels) + own +
                (line[labels] == '{' ? ',' + line.substr(labels + 1, value - labels - 1) : "}") +
                (isTime ? ' ' + std::to_string(phase.told != 0 ? phase.told : time)
                        : line.substr(value)) +
                ' ' + std::to_string(time) + '\n';
        }
    }
    return text;
}

class DashboardTest : public CSimFixture {
protected:
    static std::string Metrics(const std::string& host, const CStrings& more = {},
                               const std::string& fault = "") {
        CStrings command = {"run", "--host", host};
        if (!fault.empty()) {
            command.insert(command.end(), {"--fault", fault});
        }
        command.insert(command.end(),
                       {"--", "env", "QOR_PLUGIN=" QOR_PLUGIN_PATH, QORCTL_PROGRAM, "metrics"});
        command.insert(command.end(), more.begin(), more.end());
        const CEnd end = Qorsim(command);
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_THAT(end.out, HasSubstr("\nqor_collection_success "));
        return end.out;
    }

    // A rebuild and two PCIe SSDs; `patch` is what the time made of it.
    std::string MainMetrics(const std::string& patch) const {
        const json ssds = ShippedProfile("pssd-only");
        json all = json::array();
        for (const char* list : {"pciDevices", "pcieSsds"}) {
            for (const json& each : ssds.at(list)) {
                if (each.value("vendor", "") != "8086" || each.at("device") == "0a54") {
                    all.push_back(
                        {{"op", "add"}, {"path", std::string("/") + list + "/-"}, {"value", each}});
                }
            }
        }
        for (const json& operation : json::parse(patch)) {
            all.push_back(operation);
        }
        return Metrics(WriteProfile({{"extends", "rebuilding"}, {"patch", all}}), {"--smart"});
    }

    std::vector<CServer> Servers(std::time_t now) const {
        const std::time_t begin = now - DAY - 10 * MINUTE;
        const std::time_t dayAgo = now - DAY + 10 * MINUTE;
        const std::time_t hourAgo = now - HOUR - 10 * MINUTE;
        const std::string before =
            MainMetrics(R"([{"op": "replace", "path": "/controllers/0/drives/7/progress",
                             "value": 31}])");
        const std::string after = MainMetrics(
            R"([{"op": "add", "path": "/controllers/0/drives/2/mediaErrors", "value": 3},
                            {"op": "add", "path": "/controllers/0/drives/2/otherErrors", "value": 2},
                            {"op": "add", "path": "/controllers/0/drives/2/predictiveFailures",
                             "value": 1}])");
        std::vector<CServer> servers = {{MAIN_SERVER,
                                         {{before, begin, dayAgo},
                                          {before, hourAgo, now - 30 * MINUTE},
                                          {after, now - 30 * MINUTE + BETWEEN_SAMPLES, now}}},
                                        {"silent", {{Metrics("foreign"), begin, dayAgo}}},
                                        {"stale", {{Metrics("small"), hourAgo, now, hourAgo}}}};
        const CStrings hosts = {"degraded", "failed-drive", "future", "pssd-only", "sas"};
        for (const std::string& host : hosts) {
            const std::string text = Metrics(host);
            servers.push_back({host, {{text, begin, dayAgo}, {text, hourAgo, now}}});
        }
        servers.push_back({"fails", {{Metrics("sas", {}, "error"), hourAgo, now}}});
        servers.push_back({"half", {{Metrics("sas", {}, "truncate=1500@-pdinfo"), hourAgo, now}}});
        return servers;
    }

    // One file for yesterday and one for today: promtool reads a file once for each two hours
    // between its first and its last sample.
    void Import(const std::vector<CServer>& servers, std::time_t now) const {
        std::map<bool, std::string> files;
        for (const CServer& server : servers) {
            for (const CPhase& phase : server.phases) {
                files[phase.from > now - DAY / 2] += SamplesOf(server.instance, phase);
            }
        }
        for (const auto& [isToday, text] : files) {
            const std::string file = Folder() / "samples";
            WriteFile(file, text + "# EOF\n");
            const CEnd end = RunProgram({"/usr/bin/promtool", "tsdb", "create-blocks-from",
                                         "openmetrics", file, Folder() / "data"});
            ASSERT_EQ(end.status, 0) << end.out << end.err;
        }
    }

    void SetUp() override {
        CSimFixture::SetUp();
        const std::time_t now = std::time(nullptr);
        ASSERT_NO_FATAL_FAILURE(Import(Servers(now), now));
        WriteFile(Folder() / "prometheus.yml",
                  "global: {evaluation_interval: 1s}\nrule_files: ['" RULES_FILE "']\n");
        m_Prometheus = std::make_unique<CPrometheusServer>(Folder());
        ASSERT_TRUE(m_Prometheus->IsReady()) << m_Prometheus->Output();
        ASSERT_TRUE(m_Prometheus->HasEvaluatedRules()) << m_Prometheus->Output();
        // What alerts write comes one evaluation later.
        ASSERT_TRUE(Eventually([this] {
            m_Now = static_cast<double>(std::time(nullptr));
            return !Prometheus().Query("ALERTS{alertstate=\"firing\"}", m_Now).empty();
        })) << m_Prometheus->Output();
    }

    void TearDown() override {
        m_Prometheus.reset();
        CSimFixture::TearDown();
    }

    const CPrometheusServer& Prometheus() const { return *m_Prometheus; }

    // Those of a user who shows all servers, and the drive in that slot below.
    static CValues Values(const std::string& slot) {
        CValues values = {{"server", MAIN_SERVER},
                          {"enclosure", ENCLOSURE},
                          {"slot", slot},
                          {"__range", std::to_string(DAY) + 's'},
                          {"__rate_interval", std::to_string(STEP + MINUTE) + 's'}};
        for (const json& variable : Dashboard().at("templating").at("list")) {
            if (variable.value("multi", false)) {
                values[variable.at("name")] = variable.at("allValue").get<std::string>();
            }
        }
        return values;
    }

    json Ask(const json& target, const std::string& expression) const {
        EXPECT_NE(target.at("instant"), target.at("range")) << expression;
        return target.at("instant").get<bool>()
                   ? Prometheus().Query(expression, m_Now)
                   : Prometheus().QueryRange(expression, m_Now - DAY, m_Now, STEP);
    }

    // The series of all drives. What a query shows in place of nothing does not count.
    json SeriesOf(const json& target) const {
        CNames asked;
        json series = json::array();
        for (const char* slot : SLOTS) {
            std::string expression = Substituted(Expression(target), Values(slot));
            if (asked.insert(expression).second) {
                EXPECT_FALSE(Ask(target, expression).is_null()) << expression;
                expression = std::regex_replace(expression, std::regex(R"( or vector\(0\)$)"), "");
                for (const json& one : Ask(target, expression)) {
                    series.push_back(one);
                }
            }
        }
        return series;
    }

    // The value of each series that the panel of that title shows now.
    CStrings ValuesOf(const std::string& title) const {
        CStrings values;
        for (const json& panel : PanelsWithQueries()) {
            if (TitleOf(panel) == title) {
                for (const json& target : panel.at("targets")) {
                    for (const json& one : SeriesOf(target)) {
                        values.push_back(one.at("value").at(1));
                    }
                }
            }
        }
        return values;
    }

    // Those that Grafana offers for a variable.
    CNames Offered(const json& variable, const CValues& values) const {
        static const std::regex call(R"(label_values\((.*), (\w+)\))");
        std::smatch match;
        const std::string query = variable.at("query").at("query").get<std::string>();
        EXPECT_EQ(variable.at("definition"), query);
        EXPECT_TRUE(std::regex_match(query, match, call)) << query;
        const json data = Prometheus().Get("/api/v1/label/" + match[2].str() + "/values",
                                           {{"match[]", Substituted(match[1], values)},
                                            {"start", std::to_string(m_Now - DAY)},
                                            {"end", std::to_string(m_Now)}});
        return data.is_array() ? data.get<CNames>() : CNames();
    }

private:
    std::unique_ptr<CPrometheusServer> m_Prometheus;
    double m_Now = 0;
};

CNames LabelsOf(const json& series) {
    CNames labels;
    for (const json& one : series) {
        for (const auto& [label, value] : one.at("metric").items()) {
            labels.insert(label);
        }
    }
    return labels;
}

// Labels that a table shows neither under a name for people nor hides.
CNames BareColumns(const json& table, const CNames& labels) {
    const json& organize = table.at("transformations").back().at("options");
    CNames bare;
    for (const std::string& label : labels) {
        if (!organize.at("renameByName").contains(label) &&
            !organize.at("excludeByName").contains(label)) {
            bare.insert(label);
        }
    }
    return bare;
}

TEST_F(DashboardTest, EveryQueryGivesData) {
    for (const json& panel : PanelsWithQueries()) {
        for (const json& target : panel.at("targets")) {
            const json series = SeriesOf(target);
            EXPECT_FALSE(series.empty()) << TitleOf(panel) << ": " << Expression(target);
            for (const std::string& label :
                 Matches(target.value("legendFormat", ""), R"(\{\{(\w+)\}\})")) {
                EXPECT_THAT(LabelsOf(series), Contains(label)) << TitleOf(panel);
            }
            if (panel.at("type") == "table") {
                EXPECT_EQ(BareColumns(panel, LabelsOf(series)), CNames()) << TitleOf(panel);
            }
        }
    }
}

TEST_F(DashboardTest, NumbersAreThoseOfTheServers) {
    EXPECT_EQ(ValuesOf("Servers that answer"), CStrings({"7"}));
    for (const char* title :
         {"Without an answer", "Half an answer", "Stale", "Silent", "Drives being filled"}) {
        EXPECT_EQ(ValuesOf(title), CStrings({"1"})) << title;
    }
    EXPECT_EQ(ValuesOf("Drives with new errors"), CStrings({"3", "2", "1"}));
    EXPECT_EQ(ValuesOf("Drives not reported"), CStrings({"0"}));
    EXPECT_EQ(ValuesOf("SMART data"), CStrings({"9", "0"}));
}

TEST_F(DashboardTest, EveryVariableOffersValues) {
    const CValues values = Values(SLOTS[0]);
    for (const json& variable : Dashboard().at("templating").at("list")) {
        const std::string name = variable.at("name");
        if (variable.at("type") == "datasource") {
            EXPECT_EQ(variable.at("query"), "prometheus");
        } else {
            const CNames offered = Offered(variable, values);
            EXPECT_FALSE(offered.empty()) << name;
            if (!variable.at("multi").get<bool>()) {
                EXPECT_THAT(offered, Contains(values.at(name)));
            }
        }
    }
}

TEST_F(DashboardTest, ColumnsOfTablesAreLabelsThatThereAre) {
    const auto labels = Prometheus().Get("/api/v1/labels").get<CNames>();
    for (const json& panel : PanelsWithQueries()) {
        if (panel.at("type") == "table") {
            const json& options = panel.at("transformations").back().at("options");
            for (const auto& [label, name] : options.at("renameByName").items()) {
                if (!label.starts_with("Value")) {
                    EXPECT_THAT(labels, Contains(label)) << TitleOf(panel);
                }
            }
        }
    }
}

TEST_F(DashboardTest, EveryStateHasItsWords) {
    size_t families = 0;
    for (const json& panel : PanelsWithQueries()) {
        if (!IsOfType(panel, {"table", "stat"})) {
            continue;
        }
        for (const json& target : panel.at("targets")) {
            for (const std::string& family :
                 Matches(Expression(target), R"(^(qor_\w+_state)\{[^}]*\} == 1$)")) {
                ++families;
                // A text that programs do not know has a series of its own beside "unknown".
                for (const json& one : Prometheus().Query(
                         "group by (state) (" + family + "{instance=\"" + MAIN_SERVER + "\"})",
                         static_cast<double>(std::time(nullptr)))) {
                    EXPECT_THAT(MappedValues(panel),
                                Contains(one.at("metric").at("state").get<std::string>()))
                        << TitleOf(panel);
                }
            }
        }
    }
    EXPECT_EQ(families, 5U);
}

// Without a Prometheus.

TEST(DashboardFileTest, EachPanelHasNumberTitleDescriptionAndQueries) {
    CNames numbers;
    for (const json& panel : Panels()) {
        EXPECT_TRUE(numbers.insert(panel.at("id").dump()).second) << panel.at("id");
        EXPECT_FALSE(TitleOf(panel).empty()) << panel.at("id");
    }
    for (const json& panel : PanelsWithQueries()) {
        EXPECT_GT(panel.at("description").get<std::string>().size(), 10U) << TitleOf(panel);
        CNames references;
        for (const json& target : panel.at("targets")) {
            EXPECT_TRUE(references.insert(target.at("refId")).second) << TitleOf(panel);
        }
        EXPECT_FALSE(references.empty()) << TitleOf(panel);
    }
}

TEST(DashboardFileTest, HasARowOfTheFleetOneOfAServerAndOneOfADrive) {
    CStrings titles;
    for (const json& panel : Panels()) {
        if (panel.at("type") == "row") {
            titles.push_back(TitleOf(panel));
        }
    }
    EXPECT_EQ(titles, CStrings({"Fleet", "Server $server", "Drive $enclosure:$slot of $server"}));
}

TEST(DashboardFileTest, NoPanelCoversAnother) {
    const auto covers = [](const json& a, const json& b, const char* place, const char* size) {
        return a.at(place) < b.at(place).get<int>() + b.at(size).get<int>() &&
               b.at(place) < a.at(place).get<int>() + a.at(size).get<int>();
    };
    const std::vector<json> panels = Panels();
    for (auto one = panels.begin(); one != panels.end(); ++one) {
        const json& place = one->at("gridPos");
        EXPECT_LE(place.at("x").get<int>() + place.at("w").get<int>(), 24) << TitleOf(*one);
        for (auto other = one + 1; other != panels.end(); ++other) {
            const json& theirs = other->at("gridPos");
            EXPECT_FALSE(covers(place, theirs, "x", "w") && covers(place, theirs, "y", "h"))
                << TitleOf(*one) << ", " << TitleOf(*other);
        }
    }
}

void ExpectVariableAsDatasource(const json& object) {
    if (object.is_object() && object.contains("datasource")) {
        EXPECT_EQ(object.at("datasource"),
                  json({{"type", "prometheus"}, {"uid", "${datasource}"}}));
    }
    for (const json& inner : object) {
        if (inner.is_structured()) {
            ExpectVariableAsDatasource(inner);
        }
    }
}

TEST(DashboardFileTest, DatasourceIsTheVariable) {
    ExpectVariableAsDatasource(Dashboard());
    for (const json& panel : PanelsWithQueries()) {
        EXPECT_TRUE(panel.contains("datasource")) << TitleOf(panel);
        for (const json& target : panel.at("targets")) {
            EXPECT_TRUE(target.contains("datasource")) << TitleOf(panel);
        }
    }
}

// What the values of a query are; "": a number.
std::string UnitOf(const std::string& expression) {
    static const std::vector<std::pair<std::regex, const char*>> units = {
        {std::regex("^(count|sum)\\b.*"), ""},
        {std::regex(".*\\bderiv\\(.*"), "s"},
        {std::regex("rate\\(.*_bytes_total\\b.*"), "Bps"},
        {std::regex(".*_celsius\\b.*"), "celsius"},
        {std::regex(".*_bytes(_total)?\\b.*"), "bytes"},
        {std::regex(".*_seconds(_total)?\\b.*"), "s"},
        {std::regex(".*_ratio\\b.*"), "percentunit"}};
    for (const auto& [form, unit] : units) {
        if (std::regex_match(expression, form)) {
            return unit;
        }
    }
    return "";
}

TEST(DashboardFileTest, UnitsAreThoseOfTheMetrics) {
    for (const json& panel : PanelsWithQueries()) {
        CNames expected;
        for (const json& target : panel.at("targets")) {
            expected.insert(UnitOf(Expression(target)));
        }
        CNames units = {""};
        for (const json& unit : Properties(panel, "unit")) {
            units.insert(unit == "none" ? "" : unit.get<std::string>());
        }
        expected.insert("");
        EXPECT_EQ(units, expected) << TitleOf(panel);
    }
}

TEST(DashboardFileTest, WordsStandBesideColours) {
    for (const json& panel : PanelsWithQueries()) {
        if (IsOfType(panel, {"table", "stat", "state-timeline"})) {
            const json& defaults = panel.at("fieldConfig").at("defaults");
            EXPECT_FALSE(defaults.value("mappings", json::array()).empty()) << TitleOf(panel);
        }
        MappedValues(panel);
    }
}

// The rows of a section's tables of a page.
CNames RowsOf(const std::string& page, const std::string& section) {
    const size_t begin = page.find("\n## " + section + "\n");
    EXPECT_NE(begin, std::string::npos) << section;
    return Matches(page.substr(begin, page.find("\n## ", begin + 1) - begin),
                   R"(\n\| `([a-z-]+)` \|)");
}

// The words of the panels whose query asks for `family`.
CNames WordsOf(const std::string& family) {
    CNames words;
    for (const json& panel : PanelsWithQueries()) {
        if (Expression(panel.at("targets").at(0)).starts_with(family + '{')) {
            words.merge(MappedValues(panel));
        }
    }
    return words;
}

TEST(DashboardFileTest, KnowsEachRuleStatusAndReason) {
    const std::string page = ReadFile(HEALTH_PAGE);
    const CNames findings = WordsOf("qor_finding");
    EXPECT_THAT(findings, IsSupersetOf(RowsOf(page, "Rules")));
    EXPECT_THAT(findings, IsSupersetOf(CNames{"CRITICAL", "UNKNOWN", "WARNING"}));
    EXPECT_THAT(WordsOf("qor_health"),
                IsSupersetOf(CNames{"CRITICAL", "OK", "UNKNOWN", "WARNING"}));
    EXPECT_EQ(WordsOf("qor_collection_result_info"), RowsOf(page, "No answer to judge"));
}

TEST(DashboardFileTest, MetricsAreOnTheirPageAndRecordsInTheRules) {
    const std::string page = ReadFile(METRICS_PAGE);
    const std::string rules = ReadFile(RULES_FILE);
    for (const std::string& query : Queries()) {
        for (const std::string& name : Matches(query, R"(([a-z_:]*\bqor[_:][a-z_:]+))")) {
            if (name.find(':') == std::string::npos) {
                EXPECT_THAT(page, HasSubstr("\n| `" + name + "` |"));
            } else {
                EXPECT_THAT(rules, HasSubstr("- record: " + name + '\n'));
            }
        }
    }
}

// All drives of a fleet over a day would be more than a Prometheus takes at once.
TEST(DashboardFileTest, FleetOverTimeIsRecordedOrFew) {
    size_t overTime = 0;
    for (const json& panel : PanelsWithQueries()) {
        for (const json& target : panel.at("targets")) {
            const std::string expression = Expression(target);
            if (target.at("range") && expression.find("$server") == std::string::npos) {
                ++overTime;
                EXPECT_THAT(expression, testing::ContainsRegex("qor:|:qor_|_progress_ratio\\{"))
                    << TitleOf(panel);
            }
        }
    }
    EXPECT_EQ(overTime, 5U);
}

// The names of columns that settings speak of are those that columns have.
TEST(DashboardFileTest, SettingsOfTablesNameTheirColumns) {
    for (const json& panel : PanelsWithQueries()) {
        if (panel.at("type") != "table") {
            continue;
        }
        CNames names;
        for (const json& name :
             panel.at("transformations").back().at("options").at("renameByName")) {
            EXPECT_TRUE(names.insert(name).second) << TitleOf(panel) << ": " << name;
        }
        for (const json& field : panel.at("fieldConfig").at("overrides")) {
            EXPECT_THAT(names, Contains(field.at("matcher").at("options").get<std::string>()))
                << TitleOf(panel);
        }
        for (const json& sort : panel.at("options").value("sortBy", json::array())) {
            EXPECT_THAT(names, Contains(sort.at("displayName").get<std::string>()))
                << TitleOf(panel);
        }
    }
}

TEST(DashboardFileTest, LinksSetVariablesOfTheSamePage) {
    CNames variables;
    for (const json& variable : Dashboard().at("templating").at("list")) {
        variables.insert(variable.at("name"));
    }
    size_t links = 0;
    for (const json& panel : PanelsWithQueries()) {
        for (const json& list : Properties(panel, "links")) {
            for (const json& link : list) {
                ++links;
                const std::string url = link.at("url");
                EXPECT_TRUE(
                    url.starts_with("/d/" + Dashboard().at("uid").get<std::string>() + '?'));
                EXPECT_THAT(variables, IsSupersetOf(Matches(url, R"(var-(\w+)=)")));
                EXPECT_THAT(variables, IsSupersetOf(Matches(url, R"(\$\{([a-z]\w*)[:}])")));
            }
        }
    }
    EXPECT_GT(links, 0U);
}

}  // namespace
}  // namespace qortest
