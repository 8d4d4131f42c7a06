#include "commands/CheckCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "format/JsonReport.h"
#include "format/JsonText.h"
#include "health/StateFile.h"
#include "host/Interrupt.h"
#include "model/ObjectNames.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

using CJson = nlohmann::ordered_json;

// Findings that the summary names; the others follow in the details.
constexpr size_t SUMMARY_FINDINGS = 3;

// Bytes of the first line before the performance data, and of a finding in it. Whole texts are in
// the details.
constexpr size_t MAX_SUMMARY = 1000;
constexpr size_t MAX_SUMMARY_FINDING = 300;

constexpr const char* OLD_TOOL =
    "the RAID tool's version is older than 4.4, or could not be read: it may not tell everything";

void AddStateFinding(CHealth& health, std::string_view rule, const std::string& problem) {
    health.findings.push_back({EHealth::UNKNOWN, rule, "", "counters not judged: " + problem});
}

// The state that the file holds, an empty one when there is no file; nothing after a finding.
std::optional<CHealthState> ReadState(CStateFile& file, const std::string& path, CHealth& health) {
    std::string text;
    switch (file.Read(text)) {
        case CStateFile::ERead::MISSING:
            return CHealthState();
        case CStateFile::ERead::FAILED:
            AddStateFinding(health, "state-unreadable", file.Problem());
            return std::nullopt;
        case CStateFile::ERead::DONE:
            break;
    }
    std::optional<CHealthState> state = CHealthState::Parse(text);
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
    std::optional<CHealthState> state = ReadState(file, options.statePath, health);
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

// The worst first; the order of the report among equals.
void SortFindings(std::vector<CHealthFinding>& findings) {
    std::stable_sort(
        findings.begin(), findings.end(), [](const CHealthFinding& one, const CHealthFinding& two) {
            return one.health != two.health && Worse(one.health, two.health) == one.health;
        });
}

std::string FindingText(const CHealthFinding& finding) {
    return finding.object.empty() ? finding.message : finding.object + ": " + finding.message;
}

std::string SummarizeFindings(const std::vector<CHealthFinding>& findings) {
    std::string text;
    const size_t named = std::min(findings.size(), SUMMARY_FINDINGS);
    for (size_t i = 0; i < named; ++i) {
        text += (i == 0 ? "" : "; ") + CutText(FindingText(findings[i]), MAX_SUMMARY_FINDING);
    }
    if (findings.size() > named) {
        text += fmt::format("; and {} more", findings.size() - named);
    }
    return text;
}

std::string WholeSummary(const CCheckResult& result) {
    const CPoll& poll = result.poll;
    if (!poll.message.empty()) {
        return poll.message + (poll.command.empty() ? "" : " (" + poll.command + ")");
    }
    if (!result.health.findings.empty()) {
        return SummarizeFindings(result.health.findings);
    }
    return DescribeCounts(poll.inventory);
}

std::string Summary(const CCheckResult& result) {
    return CutText(ValidUtf8(WholeSummary(result)), MAX_SUMMARY);
}

std::string DetailLines(const CHealth& health, size_t leftOut) {
    std::string text;
    for (const CHealthFinding& finding : health.findings) {
        text += fmt::format("{}: {}\n", HealthName(finding.health),
                            MonitoringText(FindingText(finding)));
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

CJson FindingsJson(const std::vector<CHealthFinding>& findings) {
    CJson json = CJson::array();
    for (const CHealthFinding& finding : findings) {
        json.push_back({{"severity", HealthName(finding.health)},
                        {"rule", finding.rule},
                        {"object", finding.object},
                        {"message", finding.message}});
    }
    return json;
}

CJson NotReportedJson(const std::vector<CNotReported>& notReported) {
    CJson json = CJson::array();
    for (const CNotReported& missing : notReported) {
        json.push_back({{"object", missing.object}, {"what", missing.what}});
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

CPoll PollOnce(const std::string& pluginPath) {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(pluginPath, problem);
    if (!library) {
        return FailedPoll(REASON_PLUGIN_NOT_LOADED, problem);
    }
    // A monitoring server ends a check that takes too long; the RAID tool must not stay.
    const CInterruptGuard guard;
    return PollStorage(*library);
}

}  // namespace

CCheckResult JudgePoll(CPoll poll, const CCheckOptions& options, int64_t now) {
    CCheckResult result;
    if (poll.oldTool) {
        result.health.notes.emplace_back(OLD_TOOL);
    }
    if (poll.reason != REASON_JUDGED) {
        result.status = poll.answered ? options.noHardware : EHealth::UNKNOWN;
        result.poll = std::move(poll);
        return result;
    }
    CHealth judged = JudgeHealth(poll.inventory, options.health);
    judged.notes = std::move(result.health.notes);
    if (options.statePath.empty()) {
        JudgeCounters(poll.inventory, judged);
    } else {
        JudgeByStateFile(poll.inventory, options, now, judged);
    }
    SortFindings(judged.findings);
    result.performance = MeasureInventory(poll.inventory, options.health);
    result.status = judged.Overall();
    result.health = std::move(judged);
    result.poll = std::move(poll);
    return result;
}

std::string FormatCheckText(const CCheckResult& result) {
    std::string text = fmt::format("RAID {} - {}", HealthName(result.status),
                                   CutText(MonitoringText(WholeSummary(result)), MAX_SUMMARY));
    const CPerformanceText performance = FormatPerformanceData(result.performance);
    if (!performance.text.empty()) {
        text += '|' + performance.text;
    }
    return text + '\n' + DetailLines(result.health, performance.leftOut);
}

std::string FormatCheckJson(const CCheckResult& result) {
    const CPoll& poll = result.poll;
    const CJson json = {{"schema_version", JSON_SCHEMA_VERSION},
                        {"command", "check"},
                        {"status", HealthName(result.status)},
                        {"exit_status", static_cast<int>(result.status)},
                        {"reason", poll.reason},
                        {"message", Summary(result)},
                        {"failed_command", poll.command},
                        {"findings", FindingsJson(result.health.findings)},
                        {"not_reported", NotReportedJson(result.health.notReported)},
                        {"notes", result.health.notes},
                        {"performance", PerformanceJson(result.performance)}};
    return JsonText(json, NO_INDENTATION);
}

int RunCheckCommand(const std::string& pluginPath, const CCheckOptions& options) {
    const auto now = static_cast<int64_t>(std::time(nullptr));
    return WriteResult(JudgePoll(PollOnce(pluginPath), options, now), options.format);
}

int ReportCheckUsage(const std::string& problem) {
    CCheckResult result;
    result.poll = FailedPoll(REASON_USAGE, "the command line was not understood: " + problem);
    return WriteResult(result, ECheckFormat::TEXT);
}

}  // namespace qorctl
