#include "commands/CheckCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <utility>

#include "HelpText.h"
#include "WrongLine.h"
#include "commands/CommonOptions.h"
#include "format/HealthJson.h"
#include "format/JsonDocument.h"
#include "health/StateFile.h"
#include "health/Verdict.h"
#include "host/Ask.h"
#include "model/ObjectNames.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr const char* CHECK = "check";

constexpr const char* CHECK_FOOTER =
    "The first line of the output is the summary, with performance data behind the \"|\"; details\n"
    "follow. --no-hardware says what a server without a RAID controller or PCIe SSD is: a\n"
    "controller that died looks like none.\n"
    "\n"
    "With --state only the growth of error counters is a warning, for as long as --hold says; a\n"
    "counter that is not 0 otherwise. FILE is made by the first check; its directory must be\n"
    "there, and nobody else may write into it.\n"
    "\n"
    "Exit status:\n"
    "  0  OK\n"
    "  1  WARNING\n"
    "  2  CRITICAL\n"
    "  3  UNKNOWN: no answer, or one with an unknown state; the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl check --state /var/lib/qor/health.json --no-hardware critical\n"
    "  qorctl check --degraded warning --temperature-critical 65 --perfdata all";

constexpr int64_t MAX_HOLD = 8760;  // a year, in hours
constexpr long long MAX_THRESHOLD = 1000;

// Findings that the summary names; the others follow in the details.
constexpr size_t SUMMARY_FINDINGS = 3;

// Bytes of the first line before the performance data, and of a finding in it. Whole texts are in
// the details.
constexpr size_t MAX_SUMMARY = 1000;
constexpr size_t MAX_SUMMARY_FINDING = 300;

constexpr const char* OLD_TOOL =
    "the RAID tool's version is older than 4.4, or could not be read: it may not tell everything, "
    "and PCIe SSDs are left out";

void AddStateFinding(CHealth& health, std::string_view rule, const std::string& problem) {
    health.findings.push_back({EHealth::UNKNOWN, rule, "", "counters not judged: " + problem});
}

// The state that the file holds, an empty one when there is no file; nothing after a finding.
std::optional<CCounterHistory> ReadState(CStateFile& file, const std::string& path,
                                         CHealth& health) {
    std::string text;
    switch (file.Read(text)) {
        case CStateFile::ERead::MISSING:
            return CCounterHistory();
        case CStateFile::ERead::FAILED:
            AddStateFinding(health, "state-unreadable", file.Problem());
            return std::nullopt;
        case CStateFile::ERead::DONE:
            break;
    }
    std::optional<CCounterHistory> state = CCounterHistory::Parse(text);
    if (!state) {
        AddStateFinding(health, "state-corrupt",
                        path + ": not a state file of this program; remove it to start anew");
    }
    return state;
}

void JudgeByStateFile(const CInventory& inventory, const CCheckOptions& options, int64_t now,
                      CHealth& health) {
    CStateFile file(options.statePath);
    const CStateFile::ELock lock = file.Lock();
    if (lock != CStateFile::ELock::TAKEN) {
        const bool busy = lock == CStateFile::ELock::BUSY;
        AddStateFinding(health, busy ? "state-locked" : "state-not-written", file.Problem());
        return;
    }
    std::optional<CCounterHistory> state = ReadState(file, options.statePath, health);
    if (!state) {
        return;
    }
    CHealth judged;
    JudgeCountersByGrowth(inventory, *state, now, options.holdHours * SECONDS_PER_HOUR, judged);
    state->ForgetOld(now);
    std::string text = state->Format();
    if (text.size() > CStateFile::MAX_SIZE) {
        // A tool that makes up a serial number each time must not fill it for good.
        state->ForgetUnseen(now);
        text = state->Format();
    }
    // What could not be kept would alarm differently the next time.
    if (!file.Write(text)) {
        AddStateFinding(health, "state-not-written", file.Problem());
        return;
    }
    std::move(judged.findings.begin(), judged.findings.end(), std::back_inserter(health.findings));
    std::move(judged.notReported.begin(), judged.notReported.end(),
              std::back_inserter(health.notReported));
    std::move(judged.notes.begin(), judged.notes.end(), std::back_inserter(health.notes));
}

std::string SummaryText(const CHealthFinding& finding) {
    const ENameForm form = LongestForm([&finding](ENameForm each) {
        return FindingText(finding, each).size() <= MAX_SUMMARY_FINDING;
    });
    return CutText(FindingText(finding, form), MAX_SUMMARY_FINDING);
}

std::string SummarizeFindings(const std::vector<CHealthFinding>& findings) {
    std::string text;
    const size_t named = std::min(findings.size(), SUMMARY_FINDINGS);
    for (size_t i = 0; i < named; ++i) {
        text += (i == 0 ? "" : ", ") + SummaryText(findings[i]);
    }
    if (findings.size() > named) {
        text += fmt::format(", and {} more", findings.size() - named);
    }
    return text;
}

std::string WholeSummary(const CCheckResult& result) {
    const CAnswer& answer = result.answer;
    if (!answer.sentence.empty()) {
        return answer.sentence + (answer.command.empty() ? "" : " (" + answer.command + ")");
    }
    if (!result.health.findings.empty()) {
        return SummarizeFindings(result.health.findings);
    }
    return DescribeCounts(answer.inventory);
}

std::string Summary(const CCheckResult& result) {
    return CutText(ValidUtf8(WholeSummary(result)), MAX_SUMMARY);
}

// Monitoring servers end a command at a semicolon, and rewrite one that they pass on.
std::string SummaryLine(const CCheckResult& result) {
    std::string line = CutText(MonitoringText(WholeSummary(result)), MAX_SUMMARY);
    std::replace(line.begin(), line.end(), ';', ',');
    return line;
}

std::string DetailLines(const CHealth& health, size_t leftOut) {
    std::string text;
    for (const CHealthFinding& finding : health.findings) {
        text += fmt::format("{}: {}\n", HealthName(finding.health),
                            MonitoringText(FindingText(finding, ENameForm::WHOLE)));
    }
    for (const CNotReported& missing : health.notReported) {
        text += fmt::format("not reported: {}: {}\n", MonitoringText(missing.object), missing.what);
    }
    for (const std::string& note : health.notes) {
        text += "note: " + MonitoringText(note) + '\n';
    }
    if (leftOut > 0) {
        text += fmt::format("note: too long, performance data left out: {} values\n", leftOut);
    }
    return text;
}

CJson NotReportedJson(const std::vector<CNotReported>& notReported) {
    CJson json = CJson::array();
    for (const CNotReported& missing : notReported) {
        json.push_back({{"object", missing.object}});
        AddDrive(json.back(), missing.drive);
        json.back()["what"] = missing.what;
    }
    return json;
}

CJson PerformanceJson(const std::vector<CPerformanceValue>& values) {
    CJson json = CJson::array();
    for (const CPerformanceValue& value : values) {
        json.push_back({{"label", value.label},
                        {"value", value.value},
                        {"unit", value.unit},
                        {"warning", value.warning},
                        {"critical", value.critical}});
    }
    return json;
}

int WriteResult(const CCheckResult& result, ECheckFormat format) {
    const int written = format == ECheckFormat::JSON ? WriteJson(FormatCheckJson(result))
                                                     : WriteOut(FormatCheckText(result));
    return static_cast<int>(written == EXIT_SUCCESS ? result.status : EHealth::UNKNOWN);
}

CLI::Option* AddThreshold(CLI::App* command, const std::string& name, const std::string& severity,
                          long long& value, const std::string& what) {
    return command
        ->add_option(
            "--" + name + "-" + severity, value,
            what + " above this is " + severity + "; " + std::to_string(value) + " when not given")
        ->transform(qorapps::NumberFromTo(0, MAX_THRESHOLD))
        ->type_name("NUMBER");
}

// "--wear-warning 80 (when not given)"
std::string ThresholdText(const CLI::Option& option, long long value) {
    return fmt::format("{} {}{}", option.get_name(), value,
                       option.count() == 0 ? " (when not given)" : "");
}

struct CThresholdOptions {
    const CLI::Option* warning;
    const CLI::Option* critical;
    const CThresholds* values;
};

CThresholdOptions AddThresholds(CLI::App* command, const std::string& name, CThresholds& thresholds,
                                const std::string& what) {
    return {AddThreshold(command, name, "warning", thresholds.warning, what),
            AddThreshold(command, name, "critical", thresholds.critical, what), &thresholds};
}

// With a warning above what is critical, there would never be one.
void DemandOrder(const CThresholdOptions& options) {
    const CThresholds& values = *options.values;
    if (values.warning > values.critical) {
        throw CLI::ValidationError(fmt::format("{} is above {}",
                                               ThresholdText(*options.warning, values.warning),
                                               ThresholdText(*options.critical, values.critical)));
    }
}

std::vector<CThresholdOptions> AddAllThresholds(CLI::App* command, CHealthOptions& health) {
    return {AddThresholds(command, "temperature", health.driveTemperature,
                          "A drive's temperature in degrees Celsius"),
            AddThresholds(command, "ssd-temperature", health.ssdTemperature,
                          "A PCIe SSD's temperature in degrees Celsius"),
            AddThresholds(command, "wear", health.ssdWear, "A PCIe SSD's used life in per cent")};
}

void AddOptions(CLI::App* command, CCheckOptions& options) {
    qorapps::AddWordOption<ECheckFormat>(
        command, "--format", options.format, "The form of the result; text when not given",
        {{"text", ECheckFormat::TEXT}, {"json", ECheckFormat::JSON}});
    AddFilter(command, options.filter);
    qorapps::AddWordOption<EHealth>(
        command, "--no-hardware", options.noHardware,
        "What a server without RAID hardware is; unknown when not given",
        {{"ok", EHealth::OK},
         {"warning", EHealth::WARNING},
         {"critical", EHealth::CRITICAL},
         {"unknown", EHealth::UNKNOWN}});
    qorapps::AddWordOption<EHealth>(
        command, "--degraded", options.health.degraded,
        "What a degraded logical drive is; critical when not given",
        {{"warning", EHealth::WARNING}, {"critical", EHealth::CRITICAL}});
    qorapps::AddWordOption<EPerformance>(
        command, "--perfdata", options.performance,
        "Performance data: none, how many of each kind and state (when not given), or the "
        "values of every device too",
        {{"none", EPerformance::NONE},
         {"counts", EPerformance::COUNTS},
         {"all", EPerformance::ALL}});
    command
        ->add_option("--state", options.statePath,
                     "Keep error counters in this file; only their growth is a warning then")
        ->type_name("FILE");
    command
        ->add_option("--hold", options.holdHours,
                     "Hours for which growth is a warning; 24 when not given")
        ->transform(qorapps::NumberFromTo(0, MAX_HOLD))
        ->type_name("HOURS");
}

struct CCheckLine {
    CPluginChoice plugin;
    CCheckOptions options;
    std::vector<CThresholdOptions> thresholds;
};

// A monitoring server ends a check that takes too long; the RAID tool must not stay.
int RunCheck(const CCheckLine& line) {
    const auto now = static_cast<int64_t>(std::time(nullptr));
    return WriteResult(Check(Ask(line.plugin, StorageRequest()), line.options, now),
                       line.options.format);
}

int ReportUsage(const std::string& problem) {
    CCheckResult result;
    result.answer = NotAsked(REASON_USAGE, "the command line was not understood: " + problem);
    return WriteResult(result, ECheckFormat::TEXT);
}

}  // namespace

CCheckResult Check(CAnswer answer, const CCheckOptions& options, int64_t now) {
    const auto byState = [&](const CInventory& inventory, CHealth& health) {
        JudgeByStateFile(inventory, options, now, health);
    };
    CVerdict verdict =
        JudgeAnswer(answer, options.health,
                    options.statePath.empty() ? CCountersJudge(JudgeCounters) : byState);
    CCheckResult result;
    Narrow(answer, verdict,
           {.controller = options.filter.controller, .enclosure = options.filter.enclosure});
    if (answer.reason == REASON_JUDGED) {
        result.performance =
            MeasureInventory(answer.inventory, options.health, options.performance);
    }
    Narrow(answer, verdict, {.problems = options.filter.problems});
    const bool isNothingThere = answer.IsAnswered() && answer.reason != REASON_JUDGED;
    // A controller that is asked for is to be there.
    result.status =
        isNothingThere ? Worse(options.noHardware, verdict.health.Overall()) : verdict.status;
    result.health = std::move(verdict.health);
    if (answer.IsFromOldTool()) {
        result.health.notes.emplace_back(OLD_TOOL);
    }
    if (options.filter.problems) {
        result.health.notReported.clear();
        result.health.notes.clear();
    }
    result.answer = std::move(answer);
    return result;
}

std::string FormatCheckText(const CCheckResult& result) {
    std::string text = fmt::format("RAID {} - {}", HealthName(result.status), SummaryLine(result));
    const CPerformanceText performance = FormatPerformanceData(result.performance);
    if (!performance.text.empty()) {
        text += '|' + performance.text;
    }
    return text + '\n' + DetailLines(result.health, performance.leftOut);
}

std::string FormatCheckJson(const CCheckResult& result) {
    const CAnswer& answer = result.answer;
    CJson json = NewDocument(CHECK);
    json["status"] = HealthName(result.status);
    json["exit_status"] = static_cast<int>(result.status);
    json["reason"] = answer.reason;
    json["message"] = Summary(result);
    json["failed_command"] = answer.command;
    json["findings"] = FindingsJson(result.health.findings);
    json["not_reported"] = NotReportedJson(result.health.notReported);
    json["notes"] = result.health.notes;
    json["performance"] = PerformanceJson(result.performance);
    return JsonText(json, NO_INDENTATION);
}

void AddCheckCommand(CLI::App& app, int& status) {
    const auto line = std::make_shared<CCheckLine>();
    CLI::App* command =
        AddCommand(app, line->plugin, CHECK, "The health of the storage, for a monitoring server",
                   CHECK_FOOTER);
    AddOptions(command, line->options);
    line->thresholds = AddAllThresholds(command, line->options.health);
    command->callback([line, &status] {
        std::for_each(line->thresholds.begin(), line->thresholds.end(), DemandOrder);
        status = RunCheck(*line);
    });
}

int ExitUnparsed(const CLI::App& app, const CLI::ParseError& error,
                 const std::vector<std::string>& words) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        std::ostringstream text;
        std::ostringstream nothing;
        const int status = app.exit(error, text, nothing);
        return WriteOut(text.str()) == EXIT_SUCCESS ? status : EXIT_FAILURE;
    }
    const qorapps::CWrongLine wrong = qorapps::ExplainWrongLine(app, error, words);
    if (app.got_subcommand(CHECK)) {
        return ReportUsage(wrong.problem);
    }
    Report(wrong.problem + '\n' + wrong.hint);
    return error.get_exit_code();
}

}  // namespace qorctl
