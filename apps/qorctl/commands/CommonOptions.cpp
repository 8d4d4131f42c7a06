#include "commands/CommonOptions.h"

#include <unistd.h>

#include "terminal/Output.h"

namespace qorctl {

CLI::App* AddCommand(CLI::App& app, std::string& plugin, const std::string& name,
                     const std::string& description, const std::string& footer) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("--plugin", plugin, "The plug-in library to load")->type_name("PATH");
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
