// `qorctl check`: judges the health of the server's storage once, in the form that monitoring
// servers expect of their plug-ins, or as JSON. docs/health.md describes rules and forms.
//
// Thread rule: plain functions; one thread at a time.
#ifndef QORCTL_COMMANDS_CHECKCOMMAND_H
#define QORCTL_COMMANDS_CHECKCOMMAND_H

#include <cstdint>
#include <string>
#include <vector>

#include "health/Health.h"
#include "host/Poll.h"

namespace qorctl {

enum class ECheckFormat { TEXT, JSON };

struct CCheckOptions {
    CHealthOptions health;
    EHealth noHardware = EHealth::UNKNOWN;  // of a server without anything to judge
    std::string statePath;                  // empty: counters are judged by themselves
    int64_t holdHours = 24;                 // how long a counter's growth alarms
    ECheckFormat format = ECheckFormat::TEXT;
};

// What a check came to. `health` and `performance` are empty unless there was something to judge.
struct CCheckResult {
    EHealth status = EHealth::UNKNOWN;
    CPoll poll;
    CHealth health;
    std::vector<CPerformanceValue> performance;
};

// Judges `poll`, the state file included; `now` in seconds since 1970.
CCheckResult JudgePoll(CPoll poll, const CCheckOptions& options, int64_t now);

// The whole output, its lines ended: a summary with performance data and a line a detail, or JSON.
std::string FormatCheckText(const CCheckResult& result);
std::string FormatCheckJson(const CCheckResult& result);

// Asks the plug-in (`pluginPath`, or where CPluginLibrary looks when it is empty), judges, writes
// the result to standard output. Returns the exit status, that of EHealth; 3 too when standard
// output could not be written.
int RunCheckCommand(const std::string& pluginPath, const CCheckOptions& options);

// The same result for a command line that was not understood.
int ReportCheckUsage(const std::string& problem);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_CHECKCOMMAND_H
