#include "commands/VersionCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "commands/CommonOptions.h"
#include "format/JsonDocument.h"
#include "host/LibraryFacts.h"
#include "host/PluginLibrary.h"
#include "host/ToolRun.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr const char* VERSION_FOOTER =
    "Exit status:\n"
    "  0      success, also when the RAID tool is missing\n"
    "  1      the plug-in could not be loaded\n"
    "  other  the command line was not understood\n"
    "\n"
    "Example:\n"
    "  qorctl version --format json";

struct CVersions {
    CLibraryFacts program;
    CLibraryFacts plugin;
    CLibraryFacts commonLibrary;
    std::string pluginProblem;  // not empty: plug-in and tool are unknown
    std::string toolVersion;
    std::string toolProblem;  // not empty: the version is unknown
};

CLibraryFacts FactsOfProgram() {
    CLibraryFacts facts = FactsOfLibraryAt(reinterpret_cast<const void*>(&AddVersionCommand));
    std::error_code error;
    facts.path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    facts.version = QORCTL_VERSION;
    return facts;
}

void AskTool(const CPluginChoice& plugin, CVersions& versions) {
    const CToolRun run = RunTool(plugin, "krzcli -v");
    if (!run.problem.empty()) {
        versions.toolProblem = run.problem;
    } else if (run.result != EToolResult::DONE) {
        versions.toolProblem = ExplainToolRun(run);
    } else {
        versions.toolVersion = ProductVersion(run.output);
        versions.toolProblem = versions.toolVersion.empty() ? "it printed no version" : "";
    }
}

CVersions Collect(const CPluginChoice& plugin) {
    CVersions versions;
    versions.program = FactsOfProgram();
    const auto library = CPluginLibrary::Load(plugin.path, versions.pluginProblem);
    if (!library) {
        versions.toolProblem = "not asked, the plug-in could not be loaded";
        return versions;
    }
    versions.plugin = FactsOfLibraryAt(library->Symbol("CreateLibIF"));
    versions.commonLibrary = FactsOfLibraryAt(library->Symbol("GetPrivateProfileIntA"));
    AskTool(plugin, versions);
    return versions;
}

std::string Line(const char* name, const std::string& text, const CTextStyle& style) {
    const std::string head = fmt::format("{:<14} : ", name);
    return head +
           WrapText(MakeVisible(text, style), style.width, head.size(),
                    std::string(head.size(), ' ')) +
           '\n';
}

std::string LineOf(const char* name, const CLibraryFacts& facts, const CTextStyle& style) {
    if (facts.path.empty()) {
        return Line(name, "not loaded", style);
    }
    return Line(name,
                fmt::format("{}  {}  build {}", facts.version.empty() ? "unknown" : facts.version,
                            facts.path, facts.buildId.empty() ? "unknown" : facts.buildId),
                style);
}

std::string AsText(const CVersions& versions) {
    const CTextStyle style = DetectTextStyle(STDOUT_FILENO);
    return LineOf("qorctl", versions.program, style) + LineOf("plug-in", versions.plugin, style) +
           LineOf("common library", versions.commonLibrary, style) +
           Line("RAID tool",
                versions.toolProblem.empty() ? versions.toolVersion
                                             : "unknown (" + versions.toolProblem + ")",
                style);
}

CJson JsonOf(const CLibraryFacts& facts) {
    if (facts.path.empty()) {
        return nullptr;
    }
    return {{"version", TextOrNull(facts.version)},
            {"path", facts.path},
            {"build_id", TextOrNull(facts.buildId)}};
}

std::string AsJson(const CVersions& versions) {
    CJson json = NewDocument("version");
    json["qorctl"] = JsonOf(versions.program);
    json["plugin"] = JsonOf(versions.plugin);
    json["common_library"] = JsonOf(versions.commonLibrary);
    json["tool"] = {{"version", TextOrNull(versions.toolVersion)},
                    {"problem", TextOrNull(versions.toolProblem)}};
    return JsonText(json, INDENTATION);
}

struct CVersionOptions {
    CPluginChoice plugin;
    EReportFormat format = EReportFormat::TREE;
};

int RunVersion(const CVersionOptions& options) {
    const CVersions versions = Collect(options.plugin);
    if (!versions.pluginProblem.empty()) {
        Report(versions.pluginProblem);
    }
    const int written = options.format == EReportFormat::JSON ? WriteJson(AsJson(versions))
                                                              : WriteOut(AsText(versions));
    return versions.pluginProblem.empty() ? written : EXIT_FAILURE;
}

}  // namespace

void AddVersionCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CVersionOptions>();
    CLI::App* command = AddCommand(app, options->plugin, "version",
                                   "Versions of program, libraries and RAID tool", VERSION_FOOTER);
    AddReportFormat(command, options->format);
    command->callback([options, &status] { status = RunVersion(*options); });
}

}  // namespace qorctl
