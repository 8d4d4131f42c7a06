#include <CLI/CLI.hpp>
#include <string>

#include "RaidCommand.h"

namespace {

constexpr const char* EXIT_STATUS =
    "Exit status:\n"
    "  0      success, also when there is nothing to report\n"
    "  1      the request failed, or the plug-in could not be loaded\n"
    "  other  the command line was not understood\n"
    "\n";

constexpr const char* FOOTER =
    "Environment:\n"
    "  QOR_PLUGIN  the plug-in to load when --plugin is not given\n"
    "  NO_COLOR    no colours on a terminal\n"
    "\n"
    "Example:\n"
    "  qorctl raid | less";

constexpr const char* RAID_WHERE =
    "Without --plugin, the plug-in is the file that QOR_PLUGIN names, or libqor_MngSrv_QorLib.so\n"
    "in ../lib beside this program, in the program's own folder, or where the loader searches.\n"
    "\n"
    "The report goes to standard output; error and notice codes are explained on standard error.\n"
    "\n";

constexpr const char* RAID_EXAMPLE =
    "Example:\n"
    "  qorctl raid --plugin /usr/local/lib/libqor_MngSrv_QorLib.so";

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Shows the storage information that the RAID plug-in reports.", "qorctl");
    app.set_version_flag("--version", "qorctl " QORCTL_VERSION);
    app.footer(std::string(EXIT_STATUS) + FOOTER);
    app.require_subcommand(1);

    std::string plugin;
    CLI::App* raid = app.add_subcommand(
        "raid", "RAID controllers with their logical and physical drives, as a tree");
    raid->add_option("--plugin", plugin, "The plug-in library to load")->type_name("PATH");
    raid->footer(std::string(RAID_WHERE) + EXIT_STATUS + RAID_EXAMPLE);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    return qorctl::RunRaidCommand(plugin);
}
