#include "commands/WatchCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include "HelpText.h"
#include "commands/CommonOptions.h"
#include "host/PluginLibrary.h"
#include "host/Request.h"
#include "host/RequestProcess.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"
#include "watch/EventProgram.h"
#include "watch/EventView.h"
#include "watch/WatchFile.h"
#include "watch/WatchTerminal.h"

namespace qorctl {
namespace {

enum class EWatchFormat { TEXT, JSON };

constexpr const char* WATCH_FOOTER =
    "On a terminal there is a screen: Up, Down, PgUp, PgDn, Home, End, j and k scroll, q ends it. "
    "What\n"
    "was seen stays behind. Elsewhere each change is a line. A request that fails is shown, and\n"
    "watching goes on, until q, Ctrl-C or SIGTERM.\n"
    "\n"
    "With --exec, PROGRAM is run once for each change, without a shell: the event is a line of "
    "JSON\n"
    "on its standard input; QOR_EVENT_ID, QOR_SEVERITY, QOR_OBJECT, QOR_SUMMARY and QOR_HOST are "
    "in\n"
    "its environment. Status 0 takes the event; any other has it come again, after a pause. FILE\n"
    "holds what was seen and what is still to be handed over, so that nothing is lost when watch\n"
    "ends; what changed meanwhile is told at the next start. Each change is a line then, on a\n"
    "terminal too.\n"
    "\n"
    "Exit status:\n"
    "  0      the last request had an answer, and each event was taken\n"
    "  1      it had none, an event is left, the plug-in could not be loaded, PROGRAM or FILE not "
    "used\n"
    "  other  a signal ended it, or the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl watch --interval 10\n"
    "  qorctl watch --format json >> changes.jsonl\n"
    "  qorctl watch --exec /etc/qor/tell --state /var/lib/qor/watch.json";

constexpr int64_t MAX_SECONDS = 86400;
constexpr int64_t MAX_COUNT = 1000000000;
constexpr int64_t MAX_EXEC_SECONDS = 3600;

// A line a change.
class CLineView final : public IWatchView {
public:
    explicit CLineView(EWatchFormat format) : m_Format(format) {}

    bool Show(const CTick& tick) override {
        const int written = m_Format == EWatchFormat::JSON ? WriteJson(FormatTickJson(tick))
                                                           : WriteOut(FormatTickText(tick));
        return written == EXIT_SUCCESS;
    }

private:
    EWatchFormat m_Format;
};

std::unique_ptr<IWatchView> MakeView(int64_t interval, EWatchFormat format) {
    if (format == EWatchFormat::TEXT && CanMoveCursor(STDOUT_FILENO)) {
        if (std::unique_ptr<IWatchView> view = CTerminalView::Open(interval)) {
            return view;
        }
        Report(
            fmt::format("this system does not describe a terminal of the type TERM={} that has "
                        "a screen; each change is a line",
                        std::getenv("TERM")));
    }
    return std::make_unique<CLineView>(format);
}

struct CWatchLine {
    CPluginChoice plugin;
    CWatchOptions options;
    EWatchFormat format = EWatchFormat::TEXT;
    std::optional<std::string> program = std::nullopt;  // takes the events
    std::string statePath;
    int64_t programSeconds = 30;
};

int Watch(const CWatchLine& line, const CWatchOptions& options, CSignalClock& clock,
          IWatchView& view) {
    const CRequest request = StorageRequest();
    const auto ask = [&](const CWatch::CWait& wait) {
        CRequestProcess process(line.plugin, request, EProgress::HIDDEN);
        while (process.Advance()) {
            if (!wait(process.Descriptor(), process.Patience())) {
                return std::optional<CAnswer>();
            }
        }
        return std::make_optional(process.TakeAnswer());
    };
    const int status = CWatch(options, ask, clock, view).Run();
    return clock.StopStatus().value_or(status);
}

int WatchForProgram(const CWatchLine& line) {
    std::string problem;
    const std::optional<std::string> path = CEventProgram::Find(*line.program, problem);
    if (!path) {
        Report(problem);
        return EXIT_FAILURE;
    }
    const std::unique_ptr<CWatchFile> file =
        CWatchFile::Open(line.statePath, line.options.filter, std::time(nullptr), problem);
    if (!file) {
        Report(problem);
        return EXIT_FAILURE;
    }
    CSignalClock clock;
    CEventProgram program(*path, line.programSeconds * MILLISECONDS);
    CLineView lines(line.format);
    CEventView view(lines, *file, program, clock);
    CWatchOptions options = line.options;
    options.past = file->State().Past();
    return Watch(line, options, clock, view);
}

// As text on a terminal that can move its cursor, the screen is redrawn; otherwise changes are
// lines.
int RunWatch(const CWatchLine& line) {
    std::string problem;
    if (!CPluginLibrary::Load(line.plugin.path, problem)) {
        Report(problem);
        return EXIT_FAILURE;
    }
    if (line.program) {
        return WatchForProgram(line);
    }
    CSignalClock clock;
    const std::unique_ptr<IWatchView> view = MakeView(line.options.interval, line.format);
    return Watch(line, line.options, clock, *view);
}

}  // namespace

void AddWatchCommand(CLI::App& app, int& status) {
    const auto line = std::make_shared<CWatchLine>();
    CLI::App* command =
        AddCommand(app, line->plugin, "watch",
                   "The storage's state and its changes, again and again", WATCH_FOOTER);
    qorapps::AddWordOption<EWatchFormat>(
        command, "--format", line->format, "The form of the output; text when not given",
        {{"text", EWatchFormat::TEXT}, {"json", EWatchFormat::JSON}});
    command
        ->add_option("--interval", line->options.interval,
                     "Seconds from one request to the next; 60 when not given")
        ->transform(qorapps::NumberFromTo(1, MAX_SECONDS))
        ->type_name("SECONDS");
    command
        ->add_option("--count", line->options.count,
                     "End after so many requests; 0, when not given: go on until interrupted")
        ->transform(qorapps::NumberFromTo(0, MAX_COUNT))
        ->type_name("NUMBER");
    CLI::Option* program = command
                               ->add_option("--exec", line->program,
                                            "Run this program once for each change; needs --state")
                               ->type_name("PROGRAM");
    CLI::Option* state =
        command
            ->add_option("--state", line->statePath,
                         "Remember in this file what was seen and handed over; for --exec")
            ->type_name("FILE");
    program->needs(state);
    state->needs(program);
    command
        ->add_option("--exec-timeout", line->programSeconds,
                     "Seconds after which the program is killed; 30 when not given")
        ->transform(qorapps::NumberFromTo(1, MAX_EXEC_SECONDS))
        ->type_name("SECONDS")
        ->needs(program);
    AddFilter(command, line->options.filter);
    command->callback([line, &status] { status = RunWatch(*line); });
}

}  // namespace qorctl
