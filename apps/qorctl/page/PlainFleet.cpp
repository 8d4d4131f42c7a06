#include "page/PlainFleet.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>

#include "page/PageText.h"
#include "page/PlainServer.h"

namespace qorctl {
namespace {

using CReadJson = nlohmann::json;

struct CStateWords {
    EServerState state;
    const char* name;  // in the page: of classes, and of what is filtered by
    const char* word;
    const char* health;
};

constexpr CStateWords STATES[] = {
    {EServerState::CRITICAL, "critical", "CRITICAL", "CRITICAL"},
    {EServerState::NO_ANSWER, "none", "NO ANSWER", "UNKNOWN"},
    {EServerState::UNKNOWN, "unknown", "UNKNOWN", "UNKNOWN"},
    {EServerState::WARNING, "warning", "WARNING", "WARNING"},
    {EServerState::OK, "ok", "OK", "OK"},
};

const CStateWords& WordsOf(EServerState state) {
    return *std::find_if(std::begin(STATES), std::end(STATES),
                         [state](const CStateWords& row) { return row.state == state; });
}

bool HasDevices(const CReadJson& report) {
    return !report["controllers"].empty() || !report["physical_drives"].empty() ||
           !report["pcie_ssds"].empty();
}

EServerState StateOf(const CReadJson& report) {
    if (FieldText(report, "result") != "success" && !HasDevices(report)) {
        return EServerState::NO_ANSWER;
    }
    const std::string status = FieldText(report["health"], "status");
    return status == "CRITICAL"  ? EServerState::CRITICAL
           : status == "WARNING" ? EServerState::WARNING
           : status == "OK"      ? EServerState::OK
                                 : EServerState::UNKNOWN;
}

// The text of the first message, or of the first one of `severity`; empty without.
std::string MessageText(const CReadJson& report, const std::string& severity = "") {
    for (const CReadJson& message : report["messages"]) {
        if (severity.empty() || FieldText(message, "severity") == severity) {
            return FieldText(message, "text");
        }
    }
    return "";
}

// What a finding is about, without what stands in front of the server itself.
std::string SubjectText(const CReadJson& finding) {
    const auto drive = finding.find("physical_drive");
    const std::string enclosure = drive == finding.end() ? "" : FieldText(*drive, "enclosure");
    const std::string slot = drive == finding.end() ? "" : FieldText(*drive, "slot");
    if (enclosure.empty() || slot.empty()) {
        return FieldText(finding, "object");
    }
    const std::string serial = FieldText(*drive, "serial");
    return fmt::format("controller {} drive {}:{}{}{}", FieldText(*drive, "controller"), enclosure,
                       slot, serial.empty() ? "" : ", serial ", serial);
}

// The first error of a request, then the worst finding.
std::string WorstOf(const CReadJson& report) {
    const std::string error = MessageText(report, "error");
    const CReadJson& findings = report["health"]["findings"];
    if (!error.empty() || findings.empty()) {
        return error.empty() ? MessageText(report) : error;
    }
    const std::string subject = SubjectText(findings[0]);
    const std::string message = FieldText(findings[0], "message");
    const std::string more =
        findings.size() > 1 ? fmt::format(", and {} more", findings.size() - 1) : "";
    return (subject.empty() ? message : subject + ": " + message) + more;
}

// How a drive is drawn: the worse, the longer the stroke. Rows stand one below the other.
struct CStroke {
    const char* health;
    int top;  // of the stroke in its row
};

constexpr CStroke STROKES[] = {{"OK", 7}, {"WARNING", 4}, {"UNKNOWN", 4}, {"CRITICAL", 0}};
constexpr int STROKE_WIDTH = 4;
constexpr int ROW_HEIGHT = 12;
constexpr int ROW_DISTANCE = 16;
constexpr int MAX_COLUMNS = 48;
constexpr int MAX_STROKES = 20 * MAX_COLUMNS;

// The drives of one health as a path; the first `count` of the report.
std::string StrokesOf(const CReadJson& drives, int count, const CStroke& stroke) {
    std::string path;
    for (int i = 0; i < count; ++i) {
        const auto health = drives[static_cast<size_t>(i)].find("health");
        if (health != drives[static_cast<size_t>(i)].end() &&
            FieldText(*health, "status") == stroke.health) {
            path +=
                fmt::format("M{} {}v{}", i % MAX_COLUMNS * STROKE_WIDTH + STROKE_WIDTH / 2,
                            i / MAX_COLUMNS * ROW_DISTANCE + stroke.top, ROW_HEIGHT - stroke.top);
        }
    }
    return path.empty()
               ? ""
               : fmt::format("<path class=\"{}\" d=\"{}\"/>", HealthClass(stroke.health), path);
}

std::string StripOf(const CReadJson& drives) {
    const int count = static_cast<int>(std::min<size_t>(drives.size(), MAX_STROKES));
    if (count == 0) {
        return "";
    }
    std::string paths;
    for (const CStroke& stroke : STROKES) {
        paths += StrokesOf(drives, count, stroke);
    }
    const int width = std::min(count, MAX_COLUMNS) * STROKE_WIDTH;
    const int height = (count - 1) / MAX_COLUMNS * ROW_DISTANCE + ROW_HEIGHT;
    return fmt::format(
        "<svg class=\"strip\" aria-hidden=\"true\" width=\"{0}\" height=\"{1}\" "
        "viewBox=\"0 0 {0} {1}\">{2}</svg>",
        width, height, paths);
}

std::string LineHtml(const CFleetLine& line) {
    const CStateWords& words = WordsOf(line.state);
    return fmt::format(
        "<tr data-state=\"{}\" data-server=\"{}\"><td class=\"state {}\">{}<span>{}</span></td>"
        "<th scope=\"row\"><a href=\"#{}-{}\">{}</a></th><td class=\"drives\">{}<span>{}</span>"
        "</td><td class=\"what\">{}</td><td class=\"when\">{}</td></tr>\n",
        words.name, line.index, HealthClass(words.health), HealthSign(words.health), words.word,
        line.problems.empty() ? "server" : "problems", line.index, line.name, line.strip,
        line.count, line.what, line.time);
}

std::string CountsHtml(const std::vector<CFleetLine>& lines) {
    std::string html;
    for (const CStateWords& words : STATES) {
        const auto count =
            std::count_if(lines.begin(), lines.end(),
                          [&words](const CFleetLine& line) { return line.state == words.state; });
        html += count == 0 ? ""
                           : fmt::format(
                                 "<li data-state=\"{}\" class=\"{}\">{}<strong>{}</strong> "
                                 "<span>{}</span></li>\n",
                                 words.name, HealthClass(words.health), HealthSign(words.health),
                                 count, words.word);
    }
    return html;
}

bool GiveProblems(const std::vector<CFleetLine>& lines, const CTakePiece& take) {
    const auto hasProblems = [](const CFleetLine& line) { return !line.problems.empty(); };
    if (std::none_of(lines.begin(), lines.end(), hasProblems)) {
        return true;
    }
    return take("<section class=\"all-problems\">\n<h2>What to do</h2>\n") &&
           std::all_of(lines.begin(), lines.end(),
                       [&](const CFleetLine& line) {
                           return !hasProblems(line) ||
                                  take(fmt::format("<h3 id=\"problems-{}\">{}</h3>\n"
                                                   "<ul class=\"problems\">\n{}</ul>\n",
                                                   line.index, line.name, line.problems));
                       }) &&
           take("</section>\n");
}

}  // namespace

CFleetLine FleetLine(const CServerReport& report, size_t index) {
    CFleetLine line;
    line.index = index;
    line.name = HtmlText(report.name);
    line.time = TimeHtml(report.time);
    if (!report.problem.empty()) {
        line.what = HtmlText(report.file + ": " + report.problem);
        return line;
    }
    const CReadJson& drives = report.content["physical_drives"];
    line.state = StateOf(report.content);
    line.what = HtmlText(WorstOf(report.content));
    line.strip = StripOf(drives);
    line.count = std::to_string(drives.size());
    line.problems = ProblemEntries(report.content);
    return line;
}

std::string FleetVerdict(const std::vector<CFleetLine>& lines) {
    const auto well = std::count_if(lines.begin(), lines.end(), [](const CFleetLine& line) {
        return line.state == EServerState::OK;
    });
    const auto all = static_cast<std::ptrdiff_t>(lines.size());
    const char* servers = all == 1 ? "server" : "servers";
    return well == all ? fmt::format("{} {}: all is well", all, servers)
                       : fmt::format("{} of {} {} {} not well", all - well, all, servers,
                                     all - well == 1 ? "is" : "are");
}

bool GivePlainFleet(std::vector<CFleetLine>& lines, const CTakePiece& take) {
    std::sort(lines.begin(), lines.end(), [](const CFleetLine& one, const CFleetLine& other) {
        return std::tie(one.state, one.name, one.index) <
               std::tie(other.state, other.name, other.index);
    });
    const std::string head = fmt::format(
        "<header class=\"top\">\n<h1>{}</h1>\n<ul class=\"states\">\n{}</ul>\n</header>\n"
        "<table class=\"fleet\">\n<thead><tr><th scope=\"col\">State</th>"
        "<th scope=\"col\">Server</th><th scope=\"col\">Drives</th><th scope=\"col\">What</th>"
        "<th scope=\"col\">Time</th></tr></thead>\n<tbody>\n",
        FleetVerdict(lines), CountsHtml(lines));
    return take(head) &&
           std::all_of(lines.begin(), lines.end(),
                       [&take](const CFleetLine& line) { return take(LineHtml(line)); }) &&
           take("</tbody></table>\n") && GiveProblems(lines, take);
}

}  // namespace qorctl
