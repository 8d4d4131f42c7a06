#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DriveCommand.h"
#include "HealthCommands.h"
#include "HelpText.h"
#include "PluginRequest.h"
#include "RaidCommand.h"
#include "StorageCommand.h"
#include "SupportCommands.h"
#include "SvpCommand.h"
#include "XmlCommand.h"

namespace {

constexpr const char* VERSION_LINE = "qorctl " QORCTL_VERSION;

constexpr const char* EXIT_STATUS =
    "Exit status:\n"
    "  0      success, also when there is nothing to report\n"
    "  1      the request failed, the plug-in could not be loaded, or the report not be written\n"
    "  130    interrupted by Ctrl-C\n"
    "  other  the command line was not understood\n"
    "\n";

constexpr const char* FOOTER =
    "Environment:\n"
    "  QOR_PLUGIN  the plug-in to load when --plugin is not given\n"
    "  NO_COLOR    no colours on a terminal\n"
    "\n"
    "Example:\n"
    "  qorctl raid | less";

constexpr const char* PLUGIN_WHERE =
    "Without --plugin, the plug-in is the file that QOR_PLUGIN names, or libqor_MngSrv_QorLib.so\n"
    "in ../lib beside this program, in the program's own folder, or where the loader searches.\n"
    "\n"
    "The report goes to standard output; error and notice codes are explained on standard error.\n"
    "\n";

constexpr const char* FORMATS_ABOUT =
    "Formats:\n"
    "  tree   every item that the plug-in reports, and the problems in sentences\n"
    "  table  a line a device, marked \"!!\", \"!\" or \"?\" where it is critical, a warning or\n"
    "         unknown; and the problems in sentences\n"
    "  json   for programs, see docs/formats/qorctl-json.md; also written after a failure\n"
    "  csv    for spreadsheets (RFC 4180): a row a physical drive and a PCIe SSD; what a\n"
    "         spreadsheet would take for a formula gets an apostrophe in front\n"
    "  xml    the plug-in's own document\n"
    "What a terminal would obey is made visible; in a file only XML has the tool's bytes.\n"
    "\n"
    "--output writes beside FILE and renames, so that FILE is whole at any time. It stays as it "
    "was\n"
    "when the request fails (but JSON tells of that) or the report cannot be written. A new FILE\n"
    "has the rights that the umask leaves. A pipe must have a reader; another user's pipe or\n"
    "symbolic link is refused. /dev/stdout and /dev/fd/N mean that descriptor.\n"
    "On a terminal, standard error shows which command runs. Ctrl-C ends that command too.\n"
    "\n";

constexpr const char* RAID_EXAMPLE =
    "Examples:\n"
    "  qorctl raid --plugin /usr/local/lib/libqor_MngSrv_QorLib.so\n"
    "  qorctl raid --format json | jq '.physical_drives[] | select(.status != \"NO ERROR\")'";

constexpr const char* STORAGE_EXAMPLE =
    "Examples:\n"
    "  qorctl storage --format table\n"
    "  qorctl storage --format csv --output drives.csv";

constexpr const char* DRIVE_EXAMPLE =
    "Example, the drive in slot 3 of enclosure 252 at the first controller:\n"
    "  qorctl drive 0 252 3";

constexpr const char* XML_ABOUT =
    "The document is written byte for byte as the plug-in returns it, and a line feed; on a\n"
    "terminal, what it would obey is made visible. Nothing is escaped: a value that holds \"<\" "
    "or\n"
    "\"&\" makes the document unfit for an XML reader.\n"
    "The plug-in makes no document of an empty list: with nothing to report, standard error says\n"
    "so, standard output stays empty, and the exit status is 0.\n"
    "\n";

constexpr const char* XML_EXAMPLE =
    "Examples:\n"
    "  qorctl xml --of storage | xmllint --format -\n"
    "  qorctl xml --of drive 0 252 3 --component disk";

constexpr const char* SVP_ABOUT =
    "Without --decode the digits are written as the plug-in returns them, and a line feed.\n"
    "--decode shows header, controllers, drives and items, each with its offset in bytes. FILE\n"
    "holds the digits, \"-\" is standard input; no plug-in is needed then, and white space does "
    "not\n"
    "count. A form that is malformed is not shown: the offset and the reason go to standard "
    "error,\n"
    "and the exit status is 1.\n"
    "\n";

constexpr const char* SVP_EXAMPLE =
    "Examples:\n"
    "  qorctl svp > form.txt\n"
    "  qorctl svp --decode form.txt";

// The options of all sub-commands.
struct COptions {
    std::string plugin;
    std::vector<std::string> address = {"", "", ""};
    std::vector<std::string> of = {"raid"};
    std::string component;
    std::string form;
    std::string format = "tree";
    std::string output;
};

CLI::App* AddCommand(CLI::App& app, COptions& options, const char* name, const char* description,
                     const std::string& footer) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("--plugin", options.plugin, "The plug-in library to load")
        ->type_name("PATH");
    command->footer(footer);
    return command;
}

// A sub-command whose answer comes in several forms.
CLI::App* AddReportCommand(CLI::App& app, COptions& options, const char* name,
                           const char* description, const std::string& footer) {
    CLI::App* command =
        AddCommand(app, options, name, description,
                   std::string(FORMATS_ABOUT) + PLUGIN_WHERE + EXIT_STATUS + footer);
    command->add_option("--format", options.format, "tree (the default), table, json, csv or xml")
        ->type_name("FORMAT")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return qorctl::ReadItemFormat(text) ? ""
                                                    : "not tree, table, json, csv or xml: " + text;
            },
            "", "format"));
    command->add_option("--output", options.output, "Write the report to FILE, whole or not at all")
        ->type_name("FILE");
    return command;
}

CLI::App* AddDriveCommand(CLI::App& app, COptions& options) {
    CLI::App* command = AddReportCommand(app, options, "drive",
                                         "One physical drive with its SMART data", DRIVE_EXAMPLE);
    const CLI::Validator number(
        [](const std::string& text) {
            return qorctl::ReadAddressNumber(text) ? ""
                                                   : "not a number from 0 to 2147483647: " + text;
        },
        "", "number");
    const char* names[] = {"CONTROLLER", "ENCLOSURE", "SLOT"};
    const char* meanings[] = {"Number of the controller, from 0",
                              "Number of the enclosure, the first part of the drive's address",
                              "Number of the slot, the second part of the drive's address"};
    for (size_t i = 0; i < options.address.size(); ++i) {
        command->add_option(names[i], options.address[i], meanings[i])
            ->required()
            ->check(number)
            ->type_name("");
    }
    return command;
}

CLI::App* AddXmlCommand(CLI::App& app, COptions& options) {
    CLI::App* command =
        AddCommand(app, options, "xml", "The plug-in's XML document of a request",
                   std::string(XML_ABOUT) + PLUGIN_WHERE + EXIT_STATUS + XML_EXAMPLE);
    command
        ->add_option("--of", options.of,
                     "What to ask for: raid (the default), storage, or drive and its three numbers")
        ->type_name("raid|storage|drive CONTROLLER ENCLOSURE SLOT")
        ->expected(1, 4);
    command
        ->add_option("--component", options.component,
                     "Text of the document's component element; empty when not given")
        ->type_name("TEXT");
    return command;
}

CLI::App* AddSvpCommand(CLI::App& app, COptions& options) {
    CLI::App* command =
        AddCommand(app, options, "svp", "The service-processor form, as hexadecimal digits",
                   std::string(SVP_ABOUT) + PLUGIN_WHERE + EXIT_STATUS + SVP_EXAMPLE);
    command
        ->add_option("--decode", options.form,
                     "Show what the form says: the one in FILE, or the plug-in's without FILE")
        ->type_name("[FILE|-]")
        ->expected(0, 1);
    return command;
}

// The request that `--of` names; nothing when it names none.
std::optional<qorctl::CItemRequest> RequestOf(const std::vector<std::string>& of) {
    if (of == std::vector<std::string>{"raid"}) {
        return qorctl::RaidRequest();
    }
    if (of == std::vector<std::string>{"storage"}) {
        return qorctl::StorageRequest();
    }
    if (of.size() != 4 || of[0] != "drive") {
        return std::nullopt;
    }
    const auto address = qorctl::ReadDriveAddress(of[1], of[2], of[3]);
    return address ? std::make_optional(qorctl::DriveRequest(*address)) : std::nullopt;
}

int RunXml(const COptions& options) {
    const std::optional<qorctl::CItemRequest> request = RequestOf(options.of);
    if (!request) {
        throw CLI::ValidationError("--of",
                                   "raid, storage, or drive CONTROLLER ENCLOSURE SLOT is expected");
    }
    return qorctl::RunXmlCommand(options.plugin, *request, options.component);
}

int RunSvp(const COptions& options, bool decode) {
    if (!decode) {
        return qorctl::RunSvpCommand(options.plugin);
    }
    return options.form.empty() ? qorctl::RunSvpDecodeCommand(options.plugin)
                                : qorctl::DecodeSvpFile(options.form);
}

qorctl::CItemReportOptions ReportOptions(const COptions& options) {
    return {.plugin = options.plugin,
            .format = *qorctl::ReadItemFormat(options.format),
            .outputPath = options.output};
}

int RunDrive(const COptions& options) {
    const auto address =
        qorctl::ReadDriveAddress(options.address[0], options.address[1], options.address[2]);
    return qorctl::RunDriveCommand(ReportOptions(options), *address);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGCHLD, SIG_DFL);  // an inherited "ignore" would throw the tool's end away
    // Scripts that ask for nothing else need not wait for the whole command line to be made.
    if (argc == 2 && std::string_view(argv[1]) == "--version") {
        return std::puts(VERSION_LINE) < 0 || std::fflush(stdout) != 0 ? EXIT_FAILURE
                                                                       : EXIT_SUCCESS;
    }
    CLI::App app("Shows the storage information that the RAID plug-in reports.", "qorctl");
    app.formatter(std::make_shared<qorapps::CHelpText>());
    app.set_version_flag("--version", VERSION_LINE);
    app.footer(std::string(EXIT_STATUS) + FOOTER);
    app.require_subcommand(1);

    COptions options;
    int status = EXIT_SUCCESS;
    AddReportCommand(app, options, "raid",
                     "RAID controllers with their logical and physical drives", RAID_EXAMPLE)
        ->callback([&] { status = qorctl::RunRaidCommand(ReportOptions(options)); });
    AddReportCommand(app, options, "storage", "RAID controllers with their drives, and PCIe SSDs",
                     STORAGE_EXAMPLE)
        ->callback([&] { status = qorctl::RunStorageCommand(ReportOptions(options)); });
    AddDriveCommand(app, options)->callback([&] { status = RunDrive(options); });
    AddXmlCommand(app, options)->callback([&] { status = RunXml(options); });
    CLI::App* svp = AddSvpCommand(app, options);
    svp->callback([&] { status = RunSvp(options, svp->count("--decode") > 0); });
    qorctl::AddSupportCommands(app, status);
    qorctl::AddHealthCommands(app, status);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return qorctl::ExitUnparsed(app, error);
    }
    return status;
}
