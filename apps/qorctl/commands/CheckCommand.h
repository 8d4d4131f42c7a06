// `qorctl check`: judges the health of the server's storage once, in the form that monitoring
// servers expect of their plug-ins, or as JSON. docs/health.md describes rules and forms.
#ifndef QORCTL_COMMANDS_CHECKCOMMAND_H
#define QORCTL_COMMANDS_CHECKCOMMAND_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "health/Health.h"
#include "health/PerformanceData.h"
#include "host/Answer.h"
#include "model/InventoryFilter.h"

namespace qorctl {

// Adds the sub-command; `status`, which must outlive the parsing, becomes the exit status, that of
// EHealth; 3 too when standard output could not be written.
void AddCheckCommand(CLI::App& app, int& status);

// What main() returns for a command line, `words` behind the program's name, that was not read to
// its end (`error`, a request for help included): a monitoring server takes whatever `check` ends
// with for its result.
int ExitUnparsed(const CLI::App& app, const CLI::ParseError& error,
                 const std::vector<std::string>& words);

enum class ECheckFormat { TEXT, JSON };

struct CCheckOptions {
    CHealthOptions health;
    EHealth noHardware = EHealth::UNKNOWN;  // of a server without anything to judge
    std::string statePath;                  // empty: counters are judged by themselves
    int64_t holdHours = 24;                 // how long a counter's growth alarms
    EPerformance performance = EPerformance::COUNTS;
    ECheckFormat format = ECheckFormat::TEXT;
    CInventoryFilter filter;  // what is judged; all counters are kept in the state file
};

// What a check came to. `health` and `performance` are empty unless there was something to judge.
struct CCheckResult {
    EHealth status = EHealth::UNKNOWN;
    CAnswer answer;
    CHealth health;
    std::vector<CPerformanceValue> performance;
};

// Judges `answer`, the state file included; `now` in seconds since 1970.
CCheckResult Check(CAnswer answer, const CCheckOptions& options, int64_t now);

// The whole output, its lines ended: a summary with performance data and a line a detail, or JSON.
std::string FormatCheckText(const CCheckResult& result);
std::string FormatCheckJson(const CCheckResult& result);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_CHECKCOMMAND_H
