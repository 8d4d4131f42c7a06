#include "commands/PageCommand.h"

#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "commands/CommonOptions.h"
#include "commands/SmartRequests.h"
#include "format/Json.h"
#include "health/Verdict.h"
#include "host/Ask.h"
#include "host/HostName.h"
#include "page/Page.h"
#include "terminal/Output.h"
#include "terminal/OutputFile.h"
#include "watch/WatchClock.h"

namespace qorctl {
namespace {

constexpr const char* PAGE_FOOTER =
    "The page is one file that needs nothing else: mail it, attach it, print it, open it without\n"
    "a network; docs/page.md shows one. Without a FILE it is about this server, and a request "
    "that\n"
    "fails makes a page, too, which says so. A FILE is what qorctl storage --format json wrote on "
    "a\n"
    "server; the page names the server after it, and the time is when it was written. One that is\n"
    "no such JSON is a line that says so, and hides no other. --output replaces the page whole; "
    "it\n"
    "is as it was when it cannot be written.\n"
    "\n"
    "--smart runs the RAID tool twice more for each physical drive: minutes on a large server. A\n"
    "drive that does not answer has no SMART data. --timeout is for all of it.\n"
    "\n"
    "Exit status:\n"
    "  0      the page was written, whatever it says\n"
    "  1      it could not be written\n"
    "  other  the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl page --output server.html\n"
    "  qorctl page --smart --output server.html\n"
    "  qorctl page reports/*.json --output fleet.html";

struct CPageLine {
    CPluginChoice plugin;
    std::string output;              // empty or "-": standard output
    std::vector<std::string> files;  // none: this server
    bool smart = false;
};

CServerReport AskThisServer(const CPageLine& line) {
    const CTimeLimit limit(line.plugin);
    CAnswer answer = Ask(line.plugin, StorageRequest(), EProgress::SHOWN);
    if (line.smart && answer.IsAnswered()) {
        AskForAllSmart(limit, answer.inventory);
    }
    if (!answer.IsWhole()) {
        ReportMessages(answer);
    }
    CServerReport report = ParseServerReport(FormatJson(answer, JudgeAnswer(answer), "storage"));
    report.name = HostName();
    report.time = FormatTime(std::time(nullptr));
    return report;
}

int Deliver(const CPageLine& line, CPage& page) {
    const CGivePieces give = [&page](const CTakePiece& take) { return page.Give(take); };
    if (line.output.empty() || line.output == "-") {
        return WriteBytes(give);
    }
    std::string problem;
    if (!WriteOutputFile(line.output, give, EFileMode::KEPT, problem)) {
        Report(problem);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

int RunPage(const CPageLine& line) {
    CPage page;
    if (line.files.empty()) {
        page.Add(AskThisServer(line));
    }
    for (const std::string& file : line.files) {
        const CServerReport report = ReadServerReport(file);
        if (!report.problem.empty()) {
            Report(file + ": " + report.problem);
        }
        page.Add(report);
    }
    return Deliver(line, page);
}

void DemandOneSource(const CPageLine& line) {
    if (line.files.empty()) {
        return;
    }
    if (line.smart || line.plugin.timeout || !line.plugin.path.empty()) {
        throw CLI::ValidationError(
            "--smart, --timeout and --plugin are for the page of this server, not of files");
    }
}

}  // namespace

void AddPageCommand(CLI::App& app, int& status) {
    const auto line = std::make_shared<CPageLine>();
    CLI::App* command = AddCommand(app, line->plugin, "page",
                                   "A server, or many, as a page for a browser", PAGE_FOOTER);
    command->add_flag("--smart", line->smart,
                      "The drives' SMART data too: two more runs of the RAID tool for each drive");
    command->add_option("--output", line->output, "Write the page to FILE, whole or not at all")
        ->type_name("FILE");
    command
        ->add_option("FILE", line->files,
                     "The JSON of qorctl storage, of any number of servers; this server without")
        ->type_name("");
    command->callback([line, &status] {
        DemandOneSource(*line);
        status = RunPage(*line);
    });
}

}  // namespace qorctl
