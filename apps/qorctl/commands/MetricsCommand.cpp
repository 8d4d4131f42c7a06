#include "commands/MetricsCommand.h"

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>

#include "commands/CommonOptions.h"
#include "commands/SmartRequests.h"
#include "host/Ask.h"
#include "metrics/Metrics.h"
#include "terminal/Output.h"
#include "terminal/OutputFile.h"

namespace qorctl {
namespace {

using std::chrono::steady_clock;
using std::chrono::system_clock;
using CSeconds = std::chrono::duration<double>;

constexpr const char* METRICS_FOOTER =
    "The text is for node_exporter's textfile collector; docs/metrics.md lists what there is.\n"
    "A request that fails makes a whole text, too: qor_collection_success is 0, and nothing is\n"
    "told of any device. --output replaces FILE whole, readable for all (mode 0644); it is as it\n"
    "was when it cannot be written.\n"
    "\n"
    "--smart runs the RAID tool twice more for each physical drive: minutes on a large server, so\n"
    "do it less often. A drive that does not answer is left out and counted. --timeout is for all\n"
    "of it; what is told by then is written.\n"
    "\n"
    "Exit status:\n"
    "  0      the text was written, whatever it says\n"
    "  1      it could not be written\n"
    "  other  the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl metrics\n"
    "  qorctl metrics --timeout 50 --output qor.prom";

struct CMetricsLine {
    CPluginChoice plugin;
    std::string output;  // empty or "-": standard output
    bool smart = false;
};

CCollection Collect(const CMetricsLine& line) {
    const steady_clock::time_point start = steady_clock::now();
    const CTimeLimit limit(line.plugin);
    // That which command runs can be shown is how the runs are counted and the version is told.
    CCollection collection = {.answer = Ask(line.plugin, StorageRequest(), EProgress::SHOWN),
                              .version = QORCTL_VERSION};
    if (line.smart && collection.answer.IsAnswered()) {
        collection.smart = AskForAllSmart(limit, collection.answer.inventory);
    }
    collection.seconds = CSeconds(steady_clock::now() - start).count();
    collection.time = CSeconds(system_clock::now().time_since_epoch()).count();
    return collection;
}

int Deliver(const CMetricsLine& line, const std::string& text) {
    if (line.output.empty() || line.output == "-") {
        return WriteOut(text);
    }
    std::string problem;
    if (!WriteOutputFile(line.output, text, EFileMode::READABLE, problem)) {
        Report(problem);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

// A journal that gets a line each minute from a server that is well would hide the others.
int RunMetrics(const CMetricsLine& line) {
    const CCollection collection = Collect(line);
    if (!collection.answer.IsWhole()) {
        ReportMessages(collection.answer);
    }
    return Deliver(line, FormatMetrics(collection));
}

}  // namespace

void AddMetricsCommand(CLI::App& app, int& status) {
    const auto line = std::make_shared<CMetricsLine>();
    CLI::App* command =
        AddCommand(app, line->plugin, "metrics",
                   "The state of everything for Prometheus' node_exporter", METRICS_FOOTER);
    command->add_flag("--smart", line->smart,
                      "The drives' SMART data too: two more runs of the RAID tool for each drive");
    command->add_option("--output", line->output, "Write the text to FILE, whole or not at all")
        ->type_name("FILE");
    command->callback([line, &status] { status = RunMetrics(*line); });
}

}  // namespace qorctl
