#include "commands/DoctorCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "commands/CommonOptions.h"
#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"
#include "format/JsonDocument.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

using doctor::CCheck;
using doctor::CFinding;
using doctor::CServerFacts;
using doctor::EVerdict;
using doctor::VerdictName;

constexpr const char* DOCTOR_FOOTER =
    "Each check says OK, WARN or FAIL, what was found, and what can be done. Nothing is changed:\n"
    "the RAID tool is asked for its version, and a file is written where result files are, read\n"
    "back and removed. Run it as the user that the server runs as.\n"
    "\n"
    "Exit status:\n"
    "  0      no check failed; there may be warnings\n"
    "  1      a check failed\n"
    "  other  the command line was not understood\n"
    "\n"
    "Examples:\n"
    "  qorctl doctor\n"
    "  qorctl doctor --format json > doctor.json";

constexpr std::array<CCheck, 20> CHECKS = {{
    {"libraries", "plug-in", doctor::ExaminePlugin},
    {"libraries", "exports", doctor::ExamineExports},
    {"libraries", "common library", doctor::ExamineCommonLibrary},
    {"installation", "install path", doctor::ExamineInstallPath},
    {"supported devices", "RAID list", doctor::ExamineRaidList},
    {"supported devices", "PCIe SSD list", doctor::ExamineSsdList},
    {"devices", "device list", doctor::ExamineDeviceList},
    {"devices", "live PCI bus", doctor::ExamineLiveBus},
    {"RAID tool", "presence", doctor::ExamineToolPresence},
    {"RAID tool", "permissions", doctor::ExamineToolPermissions},
    {"RAID tool", "version for RAID", doctor::ExamineToolForRaid},
    {"RAID tool", "version for PCIe SSDs", doctor::ExamineToolForSsds},
    {"RAID tool", "LSI utility", doctor::ExamineLsiUtility},
    {"result files", "directory", doctor::ExamineResultDirectory},
    {"result files", "space", doctor::ExamineResultSpace},
    {"result files", "mode", doctor::ExamineResultMode},
    {"result files", "owner", doctor::ExamineResultOwner},
    {"result files", "leftovers", doctor::ExamineLeftovers},
    {"trace", "settings", doctor::ExamineTraceSettings},
    {"trace", "sink", doctor::ExamineTraceSink},
}};

struct CExamined {
    const CCheck* check;
    CFinding finding;
};

using CReport = std::vector<CExamined>;

CReport Examine(const CPluginChoice& plugin) {
    CServerFacts facts(plugin);
    CReport report;
    for (const CCheck& check : CHECKS) {
        report.push_back({&check, check.examine(facts)});
    }
    return report;
}

EVerdict Worst(const CReport& report) {
    EVerdict worst = EVerdict::OK;
    for (const CExamined& examined : report) {
        worst = std::max(worst, examined.finding.verdict);
    }
    return worst;
}

constexpr std::string_view ColourOf(EVerdict verdict) {
    switch (verdict) {
        case EVerdict::OK:
            return GREEN;
        case EVerdict::WARN:
            return YELLOW;
        case EVerdict::FAIL:
            return RED;
    }
    return "";
}

std::string Verdict(EVerdict verdict, const CTextStyle& style) {
    return Coloured(fmt::format("{:<4}", VerdictName(verdict)), ColourOf(verdict), style);
}

// The lines of `text`, each made safe; continuation lines stand below the first, of which `used`
// columns are taken.
std::string Indented(const std::string& text, size_t used, const std::string& indent,
                     const CTextStyle& style) {
    std::string out;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = MakeVisible(text.substr(begin, end - begin), style);
        out += (out.empty() ? "" : indent) +
               WrapText(line, style.width, out.empty() ? used : CountColumns(indent), indent) +
               "\n";
        begin = end + 1;
    }
    return out;
}

std::string FormatCheck(const CExamined& examined, bool last, const CTextStyle& style) {
    constexpr std::string_view BELOW_VERDICT = "     ";
    constexpr std::string_view REMEDY = "remedy: ";
    const CBranchMarks& marks = BranchMarks(style);
    const CFinding& finding = examined.finding;
    const std::string indent =
        std::string(last ? marks.none : marks.through) + std::string(BELOW_VERDICT);
    std::string text = fmt::format("{}{} {}: ", last ? marks.last : marks.fork,
                                   Verdict(finding.verdict, style), examined.check->name);
    const size_t column = CountColumns(indent);
    text += Indented(finding.reason, column + examined.check->name.size() + 2, indent, style);
    if (!finding.remedy.empty()) {
        text += indent + std::string(REMEDY) +
                Indented(finding.remedy, column + REMEDY.size(), indent, style);
    }
    return text;
}

std::string AsTree(const CReport& report) {
    const CTextStyle style = DetectTextStyle(STDOUT_FILENO);
    std::string text;
    for (size_t i = 0; i < report.size(); ++i) {
        const std::string_view group = report[i].check->group;
        if (i == 0 || group != report[i - 1].check->group) {
            text += fmt::format("{}{}\n", i == 0 ? "" : "\n", group);
        }
        const bool last = i + 1 == report.size() || group != report[i + 1].check->group;
        text += FormatCheck(report[i], last, style);
    }
    return text;
}

std::string AsJson(const CReport& report) {
    CJson checks = CJson::array();
    for (const CExamined& examined : report) {
        checks.push_back({{"group", examined.check->group},
                          {"name", examined.check->name},
                          {"verdict", VerdictName(examined.finding.verdict)},
                          {"reason", examined.finding.reason},
                          {"remedy", examined.finding.remedy}});
    }
    CJson json = NewDocument("doctor");
    json["verdict"] = VerdictName(Worst(report));
    json["checks"] = std::move(checks);
    return JsonText(json, INDENTATION);
}

struct CDoctorOptions {
    CPluginChoice plugin;
    EReportFormat format = EReportFormat::TREE;
};

int RunDoctor(const CDoctorOptions& options) {
    const CReport report = Examine(options.plugin);
    const int written = options.format == EReportFormat::JSON ? WriteJson(AsJson(report))
                                                              : WriteOut(AsTree(report));
    return Worst(report) == EVerdict::FAIL ? EXIT_FAILURE : written;
}

}  // namespace

void AddDoctorCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CDoctorOptions>();
    CLI::App* command = AddCommand(app, options->plugin, "doctor",
                                   "Examine what the plug-in needs on this server", DOCTOR_FOOTER);
    AddReportFormat(command, options->format);
    command->callback([options, &status] { status = RunDoctor(*options); });
}

}  // namespace qorctl
