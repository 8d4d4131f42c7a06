#include "commands/SupportCommands.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "commands/DoctorCommand.h"
#include "commands/ExecCommand.h"
#include "commands/VersionCommand.h"

namespace qorctl {
namespace {

constexpr const char* DOCTOR_FOOTER =
    "Each check says OK, WARN or FAIL, what was found, and what can be done. Nothing is changed;\n"
    "the RAID tool is asked for its version. Run it as the user that the server runs as.\n"
    "\n"
    "Exit status:\n"
    "  0      no check failed; there may be warnings\n"
    "  1      a check failed\n"
    "  other  the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl doctor\n"
    "  qorctl doctor --format json > doctor.json";

constexpr const char* EXEC_FOOTER =
    "COMMAND begins with the tool's name, krzcli. Its words are joined with blanks and handed to\n"
    "the plug-in, which has a shell run the text. NOTHING IS QUOTED: what the shell takes for\n"
    "special (; | & $ ` > * and blanks inside a word) works as in a script. Never pass on text\n"
    "that somebody else supplied.\n"
    "\n"
    "What the tool printed, also on its standard error, goes to standard output when it has\n"
    "ended: byte for byte, but on a terminal what it would obey is made visible. A run is tried\n"
    "three times and may take 150 seconds each.\n"
    "\n"
    "Exit status:\n"
    "  0..255  the tool's own, when it ended by itself; a tool that reports an error and ends\n"
    "          with 0 gives 0 and a line on standard error\n"
    "  124     it did not end in time and was killed\n"
    "  125     the plug-in could not be loaded or asked, or standard output not be written\n"
    "  126     the tool could not be run, or was killed\n"
    "  127     the tool is not installed\n"
    "  other   the command line was not understood\n"
    "Where the tool uses such a status itself, standard error tells them apart.\n"
    "\n"
    "Example:\n"
    "  qorctl exec -- krzcli -ctrlinfo -aAll";

constexpr const char* VERSION_FOOTER =
    "Exit status:\n"
    "  0      success, also when the RAID tool is missing\n"
    "  1      the plug-in could not be loaded\n"
    "  other  the command line was not understood\n"
    "\n"
    "Example:\n"
    "  qorctl version --format json";

struct COptions {
    std::string plugin;
    EReportFormat format = EReportFormat::TREE;
    std::vector<std::string> words;
};

using COptionsPointer = std::shared_ptr<COptions>;

CLI::App* AddCommand(CLI::App& app, const COptionsPointer& options, const char* name,
                     const char* description, const char* footer) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("--plugin", options->plugin, "The plug-in library to load")
        ->type_name("PATH");
    command->footer(footer);
    return command;
}

void AddFormat(CLI::App* command, const COptionsPointer& options) {
    const std::map<std::string, EReportFormat> formats = {{"tree", EReportFormat::TREE},
                                                          {"json", EReportFormat::JSON}};
    command->add_option("--format", options->format, "The form of the report; tree is the default")
        ->transform(CLI::CheckedTransformer(formats).description(""))
        ->type_name("tree|json");
}

}  // namespace

void AddSupportCommands(CLI::App& app, int& status) {
    const auto options = std::make_shared<COptions>();
    CLI::App* doctor = AddCommand(app, options, "doctor",
                                  "Examine what the plug-in needs on this server", DOCTOR_FOOTER);
    AddFormat(doctor, options);
    doctor->callback(
        [options, &status] { status = RunDoctorCommand(options->plugin, options->format); });
    CLI::App* exec = AddCommand(app, options, "exec",
                                "Run a command of the RAID tool through the plug-in", EXEC_FOOTER);
    exec->add_option("COMMAND", options->words, "The tool's command line, behind --")
        ->required()
        ->type_name("");
    exec->callback(
        [options, &status] { status = RunExecCommand(options->plugin, options->words); });
    CLI::App* version = AddCommand(app, options, "version",
                                   "Versions of program, libraries and RAID tool", VERSION_FOOTER);
    AddFormat(version, options);
    version->callback(
        [options, &status] { status = RunVersionCommand(options->plugin, options->format); });
}

}  // namespace qorctl
