#include "commands/ReportCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "HelpText.h"
#include "Quoted.h"
#include "commands/CommonOptions.h"
#include "commands/XmlCommand.h"
#include "format/Csv.h"
#include "format/Json.h"
#include "format/Overview.h"
#include "format/Table.h"
#include "format/Tree.h"
#include "health/Advice.h"
#include "health/Verdict.h"
#include "host/Ask.h"
#include "model/DriveAddress.h"
#include "model/DriveSearch.h"
#include "model/ObjectNames.h"
#include "terminal/Output.h"
#include "terminal/OutputFile.h"

namespace qorctl {
namespace {

constexpr const char* FORMATS_ABOUT =
    "Formats:\n"
    "  status  the verdict, what to do, and a line for each controller, RAID group and problem\n"
    "  tree    every item that the plug-in reports, and the problems in sentences\n"
    "  table   a line a device, marked \"!!\", \"!\" or \"?\" where it is critical, a warning or\n"
    "          unknown; and the problems in sentences\n"
    "  json    for programs, see docs/formats/qorctl-json.md\n"
    "  csv     for spreadsheets (RFC 4180): a row a physical drive and a PCIe SSD; what a\n"
    "          spreadsheet would take for a formula gets an apostrophe in front\n"
    "  xml     the plug-in's own document\n"
    "What a terminal would obey is made visible; in a file only XML has the tool's bytes.\n"
    "\n"
    "--output writes beside FILE and renames, so that FILE is whole at any time. It stays as it "
    "was\n"
    "when the report cannot be written, or the request fails: but status and JSON tell of that. A\n"
    "new FILE has the rights that the umask leaves. A pipe must have a reader; another user's pipe "
    "or\n"
    "symbolic link is refused. /dev/stdout and /dev/fd/N mean that descriptor.\n"
    "On a terminal, standard error shows which command runs. Ctrl-C ends that command too.\n"
    "\n";

constexpr const char* RAID_EXAMPLE =
    "Examples:\n"
    "  qorctl raid --plugin /usr/local/lib/qor/libqor_MngSrv_QorLib.so\n"
    "  qorctl raid --format json | jq '.physical_drives[] | select(.status != \"NO ERROR\")'";

constexpr const char* STORAGE_EXAMPLE =
    "Examples:\n"
    "  qorctl storage --format table\n"
    "  qorctl storage --format csv --output drives.csv";

constexpr const char* STATUS_EXAMPLE =
    "Examples:\n"
    "  qorctl status\n"
    "  qorctl status --problems --controller 0";

constexpr const char* DRIVE_EXAMPLE =
    "Examples, the drive in slot 3 of enclosure 252 at the first controller, and the one with "
    "that\n"
    "serial number:\n"
    "  qorctl drive 0 252 3\n"
    "  qorctl drive S0M2KX41";

constexpr const char* DRIVE = "drive";

enum class EItemFormat {
    STATUS,  // see Overview.h
    TREE,    // every item, for people
    TABLE,   // a line a device, for people
    JSON,    // docs/formats/qorctl-json.md
    CSV,     // see Csv.h
    XML,     // the plug-in's own document
};

struct CFormatName {
    EItemFormat format;
    std::string_view name;
};

constexpr CFormatName FORMATS[] = {
    {EItemFormat::STATUS, "status"}, {EItemFormat::TREE, "tree"}, {EItemFormat::TABLE, "table"},
    {EItemFormat::JSON, "json"},     {EItemFormat::CSV, "csv"},   {EItemFormat::XML, "xml"},
};

std::optional<EItemFormat> ReadItemFormat(const std::string& name) {
    const auto* found = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                     [&](const CFormatName& row) { return row.name == name; });
    return found == std::end(FORMATS) ? std::nullopt : std::make_optional(found->format);
}

std::vector<std::string> FormatNames() {
    std::vector<std::string> names;
    for (const CFormatName& row : FORMATS) {
        names.emplace_back(row.name);
    }
    return names;
}

struct CReportOptions {
    CPluginChoice plugin;
    std::string format = "tree";
    std::string output;              // empty or "-": standard output
    std::vector<std::string> drive;  // of `drive`: three numbers of an address, or one word
    CInventoryFilter filter;         // of the others
};

class CItemReport {
public:
    CItemReport(const CReportOptions& options, const char* command)
        : m_Options(options),
          m_Command(command),
          m_Format(ReadItemFormat(options.format).value_or(EItemFormat::TREE)),
          m_Style(DetectTextStyle(STDOUT_FILENO)) {
        if (!IsToStandardOutput()) {
            m_Style.colour = false;
            m_Style.width = ANY_WIDTH;
        }
    }

    int Run(const CRequest& request);
    int Show(CAnswer answer);

private:
    bool IsToStandardOutput() const { return m_Options.output.empty() || m_Options.output == "-"; }
    std::string Document(const CAnswer& answer, const CVerdict& verdict) const;
    bool TellsOfFailure() const {
        return m_Format == EItemFormat::STATUS || m_Format == EItemFormat::JSON;
    }
    int Write(const std::string& document) const;
    int Deliver(const std::string& document) const;

    const CReportOptions& m_Options;
    const std::string m_Command;
    const EItemFormat m_Format;
    CTextStyle m_Style;
};

int CItemReport::Run(const CRequest& request) {
    const bool isXml = m_Format == EItemFormat::XML;
    return Show(Ask(m_Options.plugin, isXml ? WithXml(request, "") : request, EProgress::SHOWN));
}

int CItemReport::Show(CAnswer answer) {
    CVerdict verdict = JudgeAnswer(answer);
    Narrow(answer, verdict, m_Options.filter);
    ReportMessages(answer);
    const bool isXml = m_Format == EItemFormat::XML;
    const std::string xmlProblem = isXml ? XmlProblem(answer) : "";
    if (!xmlProblem.empty()) {
        Report(xmlProblem);
        return EXIT_FAILURE;
    }
    if (!answer.IsAnswered() && !TellsOfFailure()) {
        return EXIT_FAILURE;
    }
    const int delivered = Deliver(Document(answer, verdict));
    return answer.IsWhole() ? delivered : EXIT_FAILURE;
}

std::string CItemReport::Document(const CAnswer& answer, const CVerdict& verdict) const {
    const std::vector<CHealthFinding>& findings = verdict.health.findings;
    switch (m_Format) {
        case EItemFormat::STATUS:
            return FormatOverview(answer, verdict, m_Style);
        case EItemFormat::TREE: {
            const std::set<size_t> roots = RootsOf(answer.inventory);
            return FormatTree(CItemTree(*answer.items), m_Style,
                              [&roots](size_t node) { return roots.contains(node); }) +
                   FormatProblems(findings, m_Style);
        }
        case EItemFormat::TABLE:
            return FormatTables(answer.inventory, CProblemMarks(findings), m_Style) +
                   FormatProblems(findings, m_Style);
        case EItemFormat::JSON:
            return FormatJson(answer, verdict, m_Command);
        case EItemFormat::CSV:
            return FormatCsv(answer.inventory, CProblemMarks(findings));
        case EItemFormat::XML:
            return answer.document.empty() ? "" : answer.document + '\n';
    }
    return "";
}

int CItemReport::Write(const std::string& document) const {
    switch (m_Format) {
        case EItemFormat::STATUS:
        case EItemFormat::TREE:
        case EItemFormat::TABLE:
            return WriteOut(document);
        case EItemFormat::JSON:
            return WriteJson(document);
        case EItemFormat::CSV:
        case EItemFormat::XML:
            return WriteBytes(document);
    }
    return EXIT_FAILURE;
}

int CItemReport::Deliver(const std::string& document) const {
    if (IsToStandardOutput()) {
        return Write(document);
    }
    std::string problem;
    if (!WriteOutputFile(m_Options.output, document, EFileMode::KEPT, problem)) {
        Report(problem);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

CLI::App* AddReportCommand(CLI::App& app, CReportOptions& options, const char* name,
                           const char* description, const std::string& examples) {
    CLI::App* command =
        AddCommand(app, options.plugin, name, description,
                   std::string(FORMATS_ABOUT) + PLUGIN_WHERE + EXIT_STATUS + examples);
    command
        ->add_option("--format", options.format,
                     fmt::format("The form of the report; {} when not given", options.format))
        ->check(qorapps::OneOf(FormatNames()))
        ->type_name(qorapps::WordsText(FormatNames()));
    command->add_option("--output", options.output, "Write the report to FILE, whole or not at all")
        ->type_name("FILE");
    return command;
}

// "  qorctl drive 0 252 3: controller 0 drive 252:3 (PD7, serial S123)"
std::string CandidateLine(const CPhysicalDrive& drive) {
    const std::optional<CDriveAddress> address = AddressOf(drive);
    const std::string command = address
                                    ? fmt::format("qorctl drive {} {} {}: ", address->controller,
                                                  address->enclosure, address->slot)
                                    : "";
    return "\n  " + command + ObjectName(drive);
}

CAnswer NoSuchDrive(const std::string& word, const CInventory& inventory) {
    std::string problem =
        "no drive is " + word +
        (inventory.physicalDrives.empty() ? "; there is none at all" : "; there are:");
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        problem += CandidateLine(drive);
    }
    return NotAsked("no-such-drive", problem);
}

CAnswer AmbiguousDrive(const std::string& word, const std::vector<const CPhysicalDrive*>& drives) {
    std::string problem = word + " may be any of these drives; ask for one:";
    for (const CPhysicalDrive* drive : drives) {
        problem += CandidateLine(*drive);
    }
    return NotAsked("ambiguous-drive", problem);
}

// By one word: what it means is told by a report of all drives.
int RunFoundDrive(const CReportOptions& options, const std::string& word) {
    CItemReport report(options, DRIVE);
    const CAnswer all = Ask(options.plugin, RaidRequest(), EProgress::SHOWN);
    if (!all.IsAnswered()) {
        return report.Show(all);
    }
    const std::vector<const CPhysicalDrive*> found = FindDrives(all.inventory, word);
    if (found.empty()) {
        return report.Show(NoSuchDrive(word, all.inventory));
    }
    if (found.size() > 1) {
        return report.Show(AmbiguousDrive(word, found));
    }
    const std::optional<CDriveAddress> address = AddressOf(*found.front());
    if (!address) {
        return report.Show(NotAsked("no-such-drive", ObjectName(*found.front()) +
                                                         ": the RAID tool does not tell its "
                                                         "enclosure and slot, to be asked by"));
    }
    return report.Run(DriveRequest(*address));
}

int RunDrive(const CReportOptions& options) {
    const std::vector<std::string>& words = options.drive;
    if (words.size() == 1) {
        return RunFoundDrive(options, words[0]);
    }
    return CItemReport(options, DRIVE)
        .Run(DriveRequest(*ReadDriveAddress(words[0], words[1], words[2])));
}

void DemandDrive(const std::vector<std::string>& words) {
    if (words.size() == 2) {
        throw CLI::ValidationError(
            "a drive is CONTROLLER ENCLOSURE SLOT, three numbers, or one word");
    }
    for (const std::string& word : words) {
        if (words.size() > 1 && !ReadAddressNumber(word)) {
            throw CLI::ValidationError("not a number from 0 to 2147483647: " +
                                       qorapps::Shown(word));
        }
    }
}

// A sub-command that asks about the whole server.
struct CServerCommand {
    const char* name;
    const char* description;
    const char* examples;
    const char* format = "tree";  // when none is given
    CRequest (*request)();
};

void DemandOwnDocument(const CReportOptions& options) {
    if (options.filter.IsSet() && ReadItemFormat(options.format) == EItemFormat::XML) {
        throw CLI::ValidationError(
            "--format xml is the plug-in's own document: whole, without --problems, --controller "
            "and --enclosure");
    }
}

void AddServerCommand(CLI::App& app, int& status, const CServerCommand& about) {
    const auto options = std::make_shared<CReportOptions>();
    options->format = about.format;
    CLI::App* command =
        AddReportCommand(app, *options, about.name, about.description, about.examples);
    AddFilter(command, options->filter);
    command->callback([options, about, &status] {
        DemandOwnDocument(*options);
        status = CItemReport(*options, about.name).Run(about.request());
    });
}

}  // namespace

void AddStatusCommand(CLI::App& app, int& status) {
    AddServerCommand(app, status,
                     {.name = "status",
                      .description = "What is wrong with the storage, and its state on a screen",
                      .examples = STATUS_EXAMPLE,
                      .format = "status",
                      .request = StorageRequest});
}

void AddRaidCommand(CLI::App& app, int& status) {
    AddServerCommand(app, status,
                     {.name = "raid",
                      .description = "RAID controllers with their logical and physical drives",
                      .examples = RAID_EXAMPLE,
                      .request = RaidRequest});
}

void AddStorageCommand(CLI::App& app, int& status) {
    AddServerCommand(app, status,
                     {.name = "storage",
                      .description = "RAID controllers with their drives, and PCIe SSDs",
                      .examples = STORAGE_EXAMPLE,
                      .request = StorageRequest});
}

int RunStatus() {
    CReportOptions options;
    options.format = "status";
    return CItemReport(options, "status").Run(StorageRequest());
}

void AddDriveCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CReportOptions>();
    CLI::App* command = AddReportCommand(app, *options, DRIVE,
                                         "One physical drive with its SMART data", DRIVE_EXAMPLE);
    command
        ->add_option("DRIVE", options->drive,
                     "CONTROLLER ENCLOSURE SLOT, from 0; or one of ENCLOSURE:SLOT, a PD number, a "
                     "serial number, a WWN")
        ->required()
        ->expected(1, 3)
        ->type_name("");
    command->callback([options, &status] {
        DemandDrive(options->drive);
        status = RunDrive(*options);
    });
}

}  // namespace qorctl
