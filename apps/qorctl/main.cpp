#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "HelpText.h"
#include "commands/CheckCommand.h"
#include "commands/CommonOptions.h"
#include "commands/DoctorCommand.h"
#include "commands/ExecCommand.h"
#include "commands/MetricsCommand.h"
#include "commands/PageCommand.h"
#include "commands/ReportCommand.h"
#include "commands/SvpCommand.h"
#include "commands/VersionCommand.h"
#include "commands/WatchCommand.h"
#include "commands/XmlCommand.h"

namespace {

constexpr const char* VERSION_LINE = "qorctl " QORCTL_VERSION;

constexpr const char* FOOTER =
    "Environment:\n"
    "  QOR_PLUGIN  the plug-in to load when --plugin is not given\n"
    "  NO_COLOR    no colours on a terminal\n"
    "\n"
    "Example:\n"
    "  qorctl raid | less";

// A stream that is closed would be the next file that is opened, and get what is said. In its place
// is what fails as a closed one does; for standard error, of which nobody hears, what takes all.
void FillClosedStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        const int mode = stream == STDIN_FILENO    ? O_WRONLY
                         : stream == STDOUT_FILENO ? O_RDONLY
                                                   : O_RDWR;
        if (fcntl(stream, F_GETFD) < 0) {
            // The lowest number that is free is the stream's. Without the device it stays closed.
            static_cast<void>(open("/dev/null", mode));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    FillClosedStreams();
    std::signal(SIGCHLD, SIG_DFL);  // an inherited "ignore" would throw the tool's end away
    std::signal(SIGXFSZ, SIG_IGN);  // what is too large for a file is told as a full disk is
    // Scripts that ask for nothing else need not wait for the whole command line to be made.
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (words == std::vector<std::string>{"--version"} || words == std::vector<std::string>{"-V"}) {
        return std::puts(VERSION_LINE) < 0 || std::fflush(stdout) != 0 ? EXIT_FAILURE
                                                                       : EXIT_SUCCESS;
    }
    CLI::App app("Shows the storage information that the RAID plug-in reports.", "qorctl");
    app.formatter(std::make_shared<qorapps::CHelpText>());
    app.set_version_flag("-V,--version", VERSION_LINE);
    app.footer(std::string(qorctl::EXIT_STATUS) + FOOTER);
    app.require_subcommand(0, 1);
    int status = EXIT_SUCCESS;
    for (const auto add :
         {qorctl::AddStatusCommand, qorctl::AddRaidCommand, qorctl::AddStorageCommand,
          qorctl::AddDriveCommand, qorctl::AddXmlCommand, qorctl::AddSvpCommand,
          qorctl::AddDoctorCommand, qorctl::AddExecCommand, qorctl::AddVersionCommand,
          qorctl::AddCheckCommand, qorctl::AddWatchCommand, qorctl::AddMetricsCommand,
          qorctl::AddPageCommand, qorapps::AddHelpCommand}) {
        add(app, status);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return qorctl::ExitUnparsed(app, error, words);
    }
    return app.get_subcommands().empty() ? qorctl::RunStatus() : status;
}
