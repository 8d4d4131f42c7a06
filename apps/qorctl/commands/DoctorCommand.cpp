#include "commands/DoctorCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <vector>

#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"
#include "format/JsonReport.h"
#include "format/JsonText.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

using doctor::CCheck;
using doctor::CFinding;
using doctor::CServerFacts;
using doctor::EVerdict;
using doctor::VerdictName;
using CJson = nlohmann::ordered_json;

constexpr std::array<CCheck, 19> CHECKS = {{
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

CReport Examine(const std::string& pluginPath) {
    CServerFacts facts(pluginPath);
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

struct CMarks {
    std::string_view fork;
    std::string_view last;
    std::string_view through;
    std::string_view none;
};

constexpr CMarks BOX_MARKS = {"├─ ", "└─ ", "│  ", "   "};
constexpr CMarks ASCII_MARKS = {"|- ", "`- ", "|  ", "   "};

constexpr std::string_view Colour(EVerdict verdict) {
    switch (verdict) {
        case EVerdict::OK:
            return "\x1b[32m";
        case EVerdict::WARN:
            return "\x1b[33m";
        case EVerdict::FAIL:
            return "\x1b[31m";
    }
    return "";
}

std::string Verdict(EVerdict verdict, const CTextStyle& style) {
    const std::string text = fmt::format("{:<4}", VerdictName(verdict));
    return style.colour ? fmt::format("{}{}\x1b[0m", Colour(verdict), text) : text;
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
    const CMarks& marks = style.utf8 ? BOX_MARKS : ASCII_MARKS;
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
    const CJson json = {{"schema_version", JSON_SCHEMA_VERSION},
                        {"command", "doctor"},
                        {"verdict", VerdictName(Worst(report))},
                        {"checks", checks}};
    return JsonText(json, 2);
}

}  // namespace

int RunDoctorCommand(const std::string& pluginPath, EReportFormat format) {
    const CReport report = Examine(pluginPath);
    const int written =
        format == EReportFormat::JSON ? WriteJson(AsJson(report)) : WriteOut(AsTree(report));
    return Worst(report) == EVerdict::FAIL ? EXIT_FAILURE : written;
}

}  // namespace qorctl
