// "qorsim show": a host's profile, or a report on it, without a simulated server.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <sstream>

#include "Commands.h"
#include "HostProfile.h"
#include "Options.h"
#include "ProfileFile.h"
#include "StandIn.h"
#include "Timeline.h"
#include "VisibleText.h"

namespace qorsim {
namespace {

using nlohmann::json;

struct CShowOptions {
    std::string host;
    std::string report;
    bool atTime = false;
    long seconds = 0;
};

std::vector<std::string> Words(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// What a profile holds is somebody else's: a terminal does not get all of it as it stands.
void WriteOut(const std::string& text) {
    const std::string shown = isatty(STDOUT_FILENO) == 1 ? VisibleLines(text) : text;
    std::fwrite(shown.data(), 1, shown.size(), stdout);
}

int ShowReport(const json& state, const std::string& commandLine) {
    std::string error;
    const std::optional<CHost> host = ReadHostProfile(state, error);
    if (!host) {
        return ReportFailure(error);
    }
    const std::optional<CToolAnswer> answer = AnswerTool(*host, Words(commandLine));
    if (!answer) {
        return ReportFailure("this host has no tool for \"" + commandLine +
                             "\": the tools are krzcli, MegaCli and storcli, less those that the "
                             "profile calls missing");
    }
    WriteOut(answer->out);
    return answer->status;
}

int Show(const CShowOptions& options) {
    std::string error;
    const std::optional<json> profile = LoadProfile(options.host, error);
    if (!profile) {
        return ReportFailure(error);
    }
    if (options.report.empty() && !options.atTime) {
        WriteOut(profile->dump(2) + "\n");
        return 0;
    }
    const std::optional<json> state = ProfileAt(*profile, options.seconds, error);
    if (!state) {
        return ReportFailure(error);
    }
    if (!options.report.empty()) {
        return ShowReport(*state, options.report);
    }
    WriteOut(state->dump(2) + "\n");
    return 0;
}

}  // namespace

void AddShowCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CShowOptions>();
    CLI::App* show = app.add_subcommand(
        "show", "Show a host's profile as it is with everything that it extends");
    show->add_option("profile", options->host,
                     "The host: the name of a shipped one, or the path of a profile")
        ->required()
        ->type_name("");
    show->add_option("--report", options->report,
                     "Show what a tool prints on the host instead: its command line in one word")
        ->type_name("COMMAND");
    const CLI::Option* startAt = AddStartAtOption(*show, options->seconds);
    show->callback([options, startAt, &status] {
        options->atTime = startAt->count() != 0;
        status = Show(*options);
    });
    show->footer(
        "With --start-at, the profile is shown as its events have left it by then. With --report,\n"
        "the exit status is the tool's.\n"
        "\n"
        "Examples:\n"
        "  qorsim show degraded\n"
        "  qorsim show small --report \"krzcli -ctrlinfo -a0\"\n"
        "  qorsim show lifecycle --start-at 30 --report \"krzcli -pdinfo -nosmart -a0\"");
}

}  // namespace qorsim
