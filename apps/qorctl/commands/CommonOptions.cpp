#include "commands/CommonOptions.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>

#include "HelpText.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

constexpr int64_t MAX_TIMEOUT = 86400;

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
    AddWordOption<EReportFormat>(
        command, "--format", format, "The form of the report; tree is the default",
        {{"tree", EReportFormat::TREE}, {"json", EReportFormat::JSON}}, "tree|json");
}

void ReportMessages(const CAnswer& answer) {
    for (const CMessage& message : answer.messages) {
        Report(MessageText(message, DetectTextStyle(STDERR_FILENO)));
    }
}

}  // namespace qorctl
