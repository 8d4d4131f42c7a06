// What the sub-commands' command lines have in common.
#ifndef QORCTL_COMMANDS_COMMONOPTIONS_H
#define QORCTL_COMMANDS_COMMONOPTIONS_H

#include <CLI/CLI.hpp>
#include <string>

#include "host/Answer.h"
#include "model/InventoryFilter.h"

namespace qorctl {

// Parts of footers, each with an empty line behind it.
inline constexpr const char* EXIT_STATUS =
    "Exit status:\n"
    "  0      success, also when the server has no RAID hardware\n"
    "  1      the request failed, or what has to be there was not reported: a controller although\n"
    "         the server has a RAID card, or the drive that was named; the plug-in could not be\n"
    "         loaded, or the report not be written; docs/exit-status.md tells more\n"
    "  130    interrupted by Ctrl-C\n"
    "  other  the command line was not understood\n"
    "\n";
inline constexpr const char* PLUGIN_WHERE =
    "Without --plugin, the plug-in is the file that QOR_PLUGIN names, or libqor_MngSrv_QorLib.so\n"
    "in ../lib/qor, ../lib64/qor or ../lib beside this program, in the program's own folder, or\n"
    "where the loader searches.\n"
    "\n"
    "The report goes to standard output; error and notice codes are explained on standard error.\n"
    "\n";

// Adds a sub-command with the options --plugin and --timeout; `plugin` must outlive the parsing.
CLI::App* AddCommand(CLI::App& app, CPluginChoice& plugin, const std::string& name,
                     const std::string& description, const std::string& footer);

// The forms of `doctor` and `version`.
enum class EReportFormat { TREE, JSON };

void AddReportFormat(CLI::App* command, EReportFormat& format);

// Adds --problems, --controller and --enclosure.
void AddFilter(CLI::App* command, CInventoryFilter& filter);

// Writes the messages of an answer to standard error.
void ReportMessages(const CAnswer& answer);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_COMMONOPTIONS_H
