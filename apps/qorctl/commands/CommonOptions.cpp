#include "commands/CommonOptions.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <tuple>

#include "HelpText.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

constexpr int64_t MAX_TIMEOUT = 86400;
constexpr int64_t MAX_ADDRESS = std::numeric_limits<int32_t>::max();

}  // namespace

CLI::App* AddCommand(CLI::App& app, CPluginChoice& plugin, const std::string& name,
                     const std::string& description, const std::string& footer) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("--plugin", plugin.path, "The plug-in library to load")->type_name("PATH");
    command
        ->add_option_function<int64_t>(
            "--timeout", [&plugin](int64_t limit) { plugin.timeout = std::chrono::seconds(limit); },
            "End a request, the RAID tool included, that takes longer; no limit when not given")
        ->transform(qorapps::NumberFromTo(1, MAX_TIMEOUT))
        ->type_name("SECONDS");
    command->footer(footer);
    return command;
}

void AddReportFormat(CLI::App* command, EReportFormat& format) {
    qorapps::AddWordOption<EReportFormat>(
        command, "--format", format, "The form of the report; tree is the default",
        {{"tree", EReportFormat::TREE}, {"json", EReportFormat::JSON}});
}

void AddFilter(CLI::App* command, CInventoryFilter& filter) {
    command->add_flag("--problems", filter.problems,
                      "Only what has a problem, with the controllers and RAID groups of that");
    for (const auto& [name, number, what] :
         {std::tuple("--controller", &filter.controller, "Only this controller"),
          std::tuple("--enclosure", &filter.enclosure,
                     "Only drives of this enclosure, with their RAID groups and controllers")}) {
        command
            ->add_option_function<int64_t>(
                name, [target = number](int64_t value) { *target = value; }, what)
            ->transform(qorapps::NumberFromTo(0, MAX_ADDRESS))
            ->type_name("NUMBER");
    }
}

void ReportMessages(const CAnswer& answer) {
    for (const CMessage& message : answer.messages) {
        Report(MessageText(message, DetectTextStyle(STDERR_FILENO)));
    }
}

}  // namespace qorctl
