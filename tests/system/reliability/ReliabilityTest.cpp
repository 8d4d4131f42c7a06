// Every fault of the simulated server against every operation of the plug-in and every verb of
// qorctl: what comes back is what docs/reliability.md says, and nothing crashes, hangs or is left.
//
// What a fault brings is kept in tests/golden/reliability, a file a fault, and the page's tables
// are made of those files; scripts/accept renews both.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <future>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "GoldenFile.h"
#include "Rights.h"
#include "Row.h"
#include "SimFixture.h"

namespace qortest {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr const char* NO_FAULT = "none";
// Takes the rights to the file $0 away and runs the command as somebody who has no others.
const std::string CLOSE = "chmod 0 $0; exec " + WithoutRights() + "\"$@\"";
constexpr const char* BEGIN = "<!-- begin of what the test writes -->\n";
constexpr const char* END = "<!-- end of what the test writes -->\n";

struct CCase {
    const char* fault;
    // How fast time runs. Where every run of the tool hangs, nothing is lost if it runs much
    // faster; elsewhere a slow machine must not run into the limit of 150 seconds.
    int clock = 10;
    // A tool that ends and leaves a process of its own is no business of the plug-in.
    const char* left = "";
    // A row that is not named after its fault: the host, the fault (or ""), what the verbs are
    // given, and a file that is closed to a user who asks without root's rights.
    const char* host = RELIABILITY_HOST;
    const char* strikes = nullptr;
    const char* options = "";
    const char* closed = "";

    std::string Strikes() const { return strikes == nullptr ? fault : strikes; }
};

constexpr CCase CASES[] = {
    {.fault = NO_FAULT, .strikes = ""},
    {"hang", 300},
    {"hang-term", 300},
    {"hang-child", 10, "process\n"},
    {"delay"},
    {"drip@-ctrlinfo"},
    {"exit"},
    {"kill"},
    {"stop", 300},
    {"error"},
    {"bad-token"},
    {"empty"},
    {"truncate=700"},
    {"no-newline"},
    {"crlf"},
    {"tabs"},
    {"nul"},
    {"mutate=1"},
    {"size=1M"},
    {"stderr"},
    {"vanish"},
    {"not-executable"},
    {"result-dir-unwritable"},
    {"result-dir-full"},
    {"no-device-list"},
    {"unreadable-device-list"},
    {"hang@-pdinfo", 30},
    {"exit@-pdinfo"},
    {"exit@-pdinfo#1"},
    {"kill@-pdinfo"},
    {"error@-pdinfo"},
    {"bad-token@-pdinfo"},
    {"empty@-pdinfo"},
    {"truncate=1500@-pdinfo"},
    {"tabs@-pdinfo"},
    {"nul@-pdinfo"},
    {"mutate=1@-pdinfo"},
    {"vanish#3"},
    {.fault = "host no-controller", .host = "no-controller", .strikes = ""},
    {.fault = "host tool-6.8", .host = "tool-6.8", .strikes = ""},
    {.fault = "hang, --timeout 60", .clock = 30, .strikes = "hang", .options = "--timeout 60"},
    {.fault = "no right to the device list",
     .strikes = "",
     .closed = "/opt/tarmica/qor/kam/work/devices.tmp"},
    {.fault = "no right to the RAID tool", .strikes = "", .closed = "/opt/tarmica/krz/cli"},
};

// Names of tests have letters, digits and underscores only.
void PrintTo(const CCase& one, std::ostream* stream) {
    *stream << one.fault;
}

std::string TestName(const testing::TestParamInfo<CCase>& info) {
    return std::regex_replace(std::string(info.param.fault), std::regex("[^A-Za-z0-9]+"), "_");
}

// Without blanks: a trace's destination has none.
std::string FileName(const std::string& question) {
    return std::regex_replace(question, std::regex(" "), "_");
}

fs::path GoldenRow(const std::string& fault) {
    return fs::path(RELIABILITY_GOLDEN_DIR) / (fault + ".txt");
}

std::string TablesOfGoldenRows() {
    std::vector<std::pair<std::string, CRow>> rows;
    for (const CCase& one : CASES) {
        rows.emplace_back(one.fault, ParseRow(ReadFile(GoldenRow(one.fault))));
    }
    return FormatTables(rows);
}

// The page in three parts: before, between and behind the marks.
std::array<std::string, 3> PageParts() {
    const std::string page = ReadFile(RELIABILITY_PAGE);
    const size_t begin = page.find(BEGIN);
    const size_t end = page.find(END);
    if (begin == std::string::npos || end == std::string::npos) {
        ADD_FAILURE() << RELIABILITY_PAGE << " has lost its marks";
        return {};
    }
    const size_t inside = begin + std::string(BEGIN).size();
    return {page.substr(0, inside), page.substr(inside, end - inside), page.substr(end)};
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

// What stands behind `head` in the first line that begins so; "" without one.
std::string LineBehind(const std::string& text, const std::string& head) {
    for (const std::string& line : Lines(text)) {
        if (line.starts_with(head)) {
            return line.substr(head.size());
        }
    }
    return "";
}

std::string FirstLineOf(const CEnd& end) {
    return FirstLine(end.out);
}

std::string Complaint(const CEnd& end) {
    return LineBehind(end.err, "qorctl: ");
}

// Behind it come the performance data.
std::string Summary(const CEnd& end) {
    return end.out.substr(0, end.out.find_first_of("|\n"));
}

std::string WithoutTime(const CEnd& end) {
    return std::regex_replace(FirstLine(end.out), std::regex("^[0-9TZ:-]+ "), "");
}

// "success 0, no-tool": the reason in a word
std::string CollectionResult(const CEnd& end) {
    std::string reason = LineBehind(end.out, "qor_collection_result_info{reason=\"");
    reason.erase(std::min(reason.find('"'), reason.size()));
    return "success " + LineBehind(end.out, "qor_collection_success ") + ", complete " +
           LineBehind(end.out, "qor_collection_complete ") + ", " + reason;
}

std::string FailedCheck(const CEnd& end) {
    for (const std::string& line : Lines(end.out)) {
        const size_t verdict = line.find("FAIL ");
        if (verdict != std::string::npos) {
            return line.substr(verdict + 5);
        }
    }
    return "";
}

std::string ToolVersion(const CEnd& end) {
    return LineBehind(end.out, "RAID tool      : ");
}

// "failure, UNKNOWN no-controller": the result, the health, and the rule of the first finding, or
// the code of the first error.
std::string JsonVerdict(const CEnd& end) {
    const auto json = nlohmann::json::parse(end.out);
    CStrings said;
    for (const auto& finding : json["health"]["findings"]) {
        said.push_back(finding["rule"]);
    }
    for (const auto& message : json["messages"]) {
        if (message["severity"] != "warning") {
            said.push_back(message["code"]);
        }
    }
    return json["result"].get<std::string>() + ", " + json["health"]["status"].get<std::string>() +
           (said.empty() ? "" : " " + said.front());
}

// "UNKNOWN: the RAID tool is missing, ...": the verdict at the page's top, and the first problem.
std::string PageVerdict(const CEnd& end) {
    const auto behind = [&](const std::string& start) {
        const size_t found = end.out.find(start);
        const size_t begin = found == std::string::npos ? end.out.size() : found + start.size();
        return end.out.substr(begin, end.out.find('<', begin) - begin);
    };
    const std::string problem = behind("<ul class=\"problems\">\n<li class=\"is-");
    return behind("<strong>") + ": " + (problem.empty() ? "" : behind(problem + "<span>"));
}

struct CVerb {
    const char* name;  // of the column: it begins with the sub-command
    CStrings arguments;
    std::string (*message)(const CEnd& end);
};

const std::vector<CVerb>& Verbs() {
    static const std::vector<CVerb> verbs = {
        {"status", {}, FirstLineOf},
        {"raid", {}, Complaint},
        {"storage", {}, Complaint},
        {"storage --format json", {}, JsonVerdict},
        {"drive", {"0", "252", "0"}, Complaint},
        {"xml", {}, Complaint},
        {"svp", {}, Complaint},
        {"check", {}, Summary},
        {"check --no-hardware ok", {}, Summary},
        {"watch", {"--count", "1"}, WithoutTime},
        {"metrics", {}, CollectionResult},
        {"page", {}, PageVerdict},
        {"doctor", {}, FailedCheck},
        {"exec", {"--", "krzcli", "-ctrlinfo", "-aAll"}, Complaint},
        {"version", {}, ToolVersion},
    };
    return verbs;
}

class CReliabilityTest : public CSimFixture, public testing::WithParamInterface<CCase> {
protected:
    std::string Operation(const std::string& name) const {
        const CEnd end = Run(name, {OPERATION_PROGRAM, QOR_PLUGIN_PATH, name});
        EXPECT_EQ(end.status, 0) << name << "\n" << end.err;
        const long timeOuts = TimeOuts(name);
        return CellText(FirstLine(end.out)) +
               (timeOuts > 0 ? ", " + std::to_string(timeOuts) + " × 150 s" : "");
    }

    std::string Verb(const CVerb& verb) const {
        CStrings command = {QORCTL_PROGRAM};
        std::istringstream words(verb.name);
        command.insert(command.end(), std::istream_iterator<std::string>(words), {});
        std::istringstream options(GetParam().options);
        command.insert(command.end(), std::istream_iterator<std::string>(options), {});
        command.insert(command.end(), verb.arguments.begin(), verb.arguments.end());
        const CEnd end = Run(verb.name, command);
        const std::string message = CellText(verb.message(end));
        return std::to_string(end.status) + (message.empty() ? "" : ": " + message);
    }

private:
    // Runs a command on a fresh server with the fault, and looks at what it leaves.
    CEnd Run(const std::string& question, const CStrings& command) const {
        CStrings whole = {QORSIM_PROGRAM, "run", "--host", GetParam().host};
        if (!GetParam().Strikes().empty()) {
            whole.insert(whole.end(), {"--fault", GetParam().Strikes()});
        }
        const fs::path facts = Folder() / (FileName(question) + ".facts");
        whole.insert(
            whole.end(),
            {"--", PROBE_PROGRAM, facts, "env", "LC_ALL=C.UTF-8",
             "QOR_TRACE=file:" + Trace(question).string() + ":3", "QOR_PLUGIN=" QOR_PLUGIN_PATH,
             "QOR_FAST_CLOCK=" + std::to_string(GetParam().clock), "LD_PRELOAD=" FAST_CLOCK});
        if (GetParam().closed != std::string()) {
            whole.insert(whole.end(), {"sh", "-c", CLOSE, GetParam().closed});
        }
        whole.insert(whole.end(), command.begin(), command.end());
        WriteFile(Trace(question), "");
        const CEnd end = RunProgram(whole);
        EXPECT_EQ(end.signal, 0) << question;
        const std::string left = ReadFile(facts);
        EXPECT_TRUE(left.empty() || left == GetParam().left) << question << ": " << left;
        EXPECT_THAT(end.err, Not(HasSubstr("Sanitizer"))) << question;
        return end;
    }

    fs::path Trace(const std::string& question) const {
        return Folder() / (FileName(question) + ".trace");
    }

    // How many runs of the tool the plug-in gave up.
    long TimeOuts(const std::string& question) const {
        const CStrings lines = Lines(ReadFile(Trace(question)));
        return std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return line.find("krzcli command timeout.") != std::string::npos;
        });
    }
};

TEST_P(CReliabilityTest, FaultBringsWhatThePageSays) {
    // All at the same time: most of it is waiting.
    std::vector<std::pair<std::string, std::future<std::string>>> answers;
    for (const char* name : {"GetRAIDInfo", "GetStorageInfo", "GetPDInfo"}) {
        answers.emplace_back(
            name, std::async(std::launch::async, [this, name] { return Operation(name); }));
    }
    for (const CVerb& verb : Verbs()) {
        answers.emplace_back(verb.name, std::async(std::launch::async, [&] { return Verb(verb); }));
    }
    CRow row;
    for (auto& [question, answer] : answers) {
        row.emplace_back(question, answer.get());
    }
    ExpectGoldenFile(GoldenRow(GetParam().fault), FormatRow(row));
}

INSTANTIATE_TEST_SUITE_P(Fault, CReliabilityTest, testing::ValuesIn(CASES), TestName);

// The last one, so that one run of the program renews files and page. It has a parameter because
// such tests come behind the others.
class CReliabilityPageTest : public CSimFixture, public testing::WithParamInterface<const char*> {};

TEST_P(CReliabilityPageTest, TablesAreMadeOfTheRows) {
    const auto [before, tables, behind] = PageParts();
    const std::string made = TablesOfGoldenRows();
    if (AcceptsGolden()) {
        WriteFile(GetParam(), before + made + behind);
    } else {
        EXPECT_EQ(tables, made);
    }
}

TEST_P(CReliabilityPageTest, EachKindOfFaultHasARow) {
    CStrings faults;
    for (const CCase& one : CASES) {
        faults.push_back(std::regex_replace(one.Strikes(), std::regex("[=@#].*"), ""));
    }
    const std::string list = Qorsim({"list"}).out;
    size_t kinds = 0;
    for (const std::string& line : Lines(list.substr(list.find("\nFaults")))) {
        std::smatch match;
        if (std::regex_search(line, match, std::regex("^  ([a-z-]+)"))) {
            ++kinds;
            EXPECT_THAT(faults, testing::Contains(match[1].str()));
        }
    }
    EXPECT_GE(kinds, 25U);
}

TEST_P(CReliabilityPageTest, EachVerbHasAColumn) {
    const std::string help = RunProgram({QORCTL_PROGRAM, "--help"}).out;
    std::set<std::string> columns;
    for (const CVerb& verb : Verbs()) {
        columns.insert(std::string(verb.name).substr(0, std::string(verb.name).find(' ')));
    }
    size_t verbs = 0;
    for (const std::string& line : Lines(help.substr(help.find("\nSubcommands:")))) {
        std::smatch match;
        if (line.starts_with("  help ")) {
            continue;  // asks the server nothing
        }
        if (std::regex_search(line, match, std::regex("^  ([a-z]+)  "))) {
            ++verbs;
            EXPECT_THAT(columns, testing::Contains(match[1].str()));
        } else if (verbs > 0) {
            break;  // the list is over
        }
    }
    EXPECT_EQ(verbs, columns.size());
}

INSTANTIATE_TEST_SUITE_P(Docs, CReliabilityPageTest, testing::Values(RELIABILITY_PAGE),
                         [](const auto&) { return std::string("Page"); });

}  // namespace
}  // namespace qortest
