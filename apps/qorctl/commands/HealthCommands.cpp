#include "commands/HealthCommands.h"

#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "HelpText.h"
#include "commands/CheckCommand.h"
#include "commands/WatchCommand.h"
#include "terminal/Output.h"

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
    "  qorctl check --degraded warning --temperature-critical 65 --format json";

constexpr const char* WATCH_FOOTER =
    "On a terminal the screen is redrawn; elsewhere each change is a line. A request that fails "
    "is\n"
    "shown, and watching goes on, until Ctrl-C or SIGTERM.\n"
    "\n"
    "Exit status:\n"
    "  0      the last request had an answer\n"
    "  1      it had none, or the plug-in could not be loaded\n"
    "  other  a signal ended it, or the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl watch --interval 10\n"
    "  qorctl watch --format json >> changes.jsonl";

constexpr int64_t MAX_SECONDS = 86400;
constexpr int64_t MAX_COUNT = 1000000000;
constexpr int64_t MAX_HOLD = 8760;  // a year
constexpr long long MAX_THRESHOLD = 1000;

const std::map<std::string, EHealth> HEALTHS = {{"ok", EHealth::OK},
                                                {"warning", EHealth::WARNING},
                                                {"critical", EHealth::CRITICAL},
                                                {"unknown", EHealth::UNKNOWN}};
const std::map<std::string, EHealth> DEGRADED = {{"warning", EHealth::WARNING},
                                                 {"critical", EHealth::CRITICAL}};
const std::map<std::string, ECheckFormat> CHECK_FORMATS = {{"text", ECheckFormat::TEXT},
                                                           {"json", ECheckFormat::JSON}};
const std::map<std::string, EWatchFormat> WATCH_FORMATS = {{"text", EWatchFormat::TEXT},
                                                           {"json", EWatchFormat::JSON}};

CLI::App* AddCommand(CLI::App& app, std::string& plugin, const char* name, const char* description,
                     const char* footer) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("--plugin", plugin, "The plug-in library to load")->type_name("PATH");
    command->footer(footer);
    return command;
}

void AddThresholds(CLI::App* command, const std::string& name, CThresholds& thresholds,
                   const std::string& what) {
    const std::pair<const char*, long long*> options[] = {{"warning", &thresholds.warning},
                                                          {"critical", &thresholds.critical}};
    for (const auto& [severity, value] : options) {
        command
            ->add_option("--" + name + "-" + severity, *value,
                         what + " above this is " + severity + "; " + std::to_string(*value) +
                             " when not given")
            ->transform(qorapps::NumberFromTo(0, MAX_THRESHOLD))
            ->type_name("NUMBER");
    }
}

template <typename VALUE>
void AddWord(CLI::App* command, const char* name, VALUE& value, const char* description,
             const std::map<std::string, VALUE>& words, const char* type) {
    command->add_option(name, value, description)
        ->transform(CLI::CheckedTransformer(words).description(""))
        ->type_name(type);
}

struct CCheckLine {
    std::string plugin;
    CCheckOptions options;
};

void AddCheck(CLI::App& app, int& status) {
    const auto line = std::make_shared<CCheckLine>();
    CLI::App* command =
        AddCommand(app, line->plugin, CHECK, "The health of the storage, for a monitoring server",
                   CHECK_FOOTER);
    CCheckOptions& options = line->options;
    AddWord(command, "--format", options.format, "The form of the result; text when not given",
            CHECK_FORMATS, "text|json");
    AddWord(command, "--no-hardware", options.noHardware,
            "What a server without RAID hardware is; unknown when not given", HEALTHS,
            "ok|warning|critical|unknown");
    AddWord(command, "--degraded", options.health.degraded,
            "What a degraded volume is; critical when not given", DEGRADED, "warning|critical");
    AddThresholds(command, "temperature", options.health.driveTemperature,
                  "A drive's temperature in degrees Celsius");
    AddThresholds(command, "ssd-temperature", options.health.ssdTemperature,
                  "A PCIe SSD's temperature in degrees Celsius");
    AddThresholds(command, "wear", options.health.ssdWear, "A PCIe SSD's used life in per cent");
    command
        ->add_option("--state", options.statePath,
                     "Keep error counters in this file; only their growth is a warning then")
        ->type_name("FILE");
    command
        ->add_option("--hold", options.holdHours,
                     "Hours for which growth is a warning; 24 when not given")
        ->transform(qorapps::NumberFromTo(0, MAX_HOLD))
        ->type_name("HOURS");
    command->callback([line, &status] { status = RunCheckCommand(line->plugin, line->options); });
}

struct CWatchLine {
    std::string plugin;
    CWatchOptions options;
    EWatchFormat format = EWatchFormat::TEXT;
};

void AddWatch(CLI::App& app, int& status) {
    const auto line = std::make_shared<CWatchLine>();
    CLI::App* command =
        AddCommand(app, line->plugin, "watch",
                   "The storage's state and its changes, again and again", WATCH_FOOTER);
    AddWord(command, "--format", line->format, "The form of the output; text when not given",
            WATCH_FORMATS, "text|json");
    command
        ->add_option("--interval", line->options.interval,
                     "Seconds from one request to the next; 60 when not given")
        ->transform(qorapps::NumberFromTo(1, MAX_SECONDS))
        ->type_name("SECONDS");
    command
        ->add_option("--count", line->options.count,
                     "End after so many requests; 0, when not given: go on until interrupted")
        ->transform(qorapps::NumberFromTo(0, MAX_COUNT))
        ->type_name("NUMBER");
    command->callback(
        [line, &status] { status = RunWatchCommand(line->plugin, line->options, line->format); });
}

}  // namespace

void AddHealthCommands(CLI::App& app, int& status) {
    AddCheck(app, status);
    AddWatch(app, status);
}

int ExitUnparsed(const CLI::App& app, const CLI::ParseError& error) {
    const bool isFailure = error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success);
    if (isFailure && app.got_subcommand(CHECK)) {
        return ReportCheckUsage(error.what());
    }
    std::ostringstream problem;  // it repeats words of the command line
    const int status = app.exit(error, std::cout, problem);
    ReportLines(problem.str());
    return status;
}

}  // namespace qorctl
