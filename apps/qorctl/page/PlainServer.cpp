#include "page/PlainServer.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <vector>

#include "page/PageText.h"

namespace qorctl {
namespace {

using CReadJson = nlohmann::json;

// What the cell of a column says: the texts of the fields, a space between them.
struct CColumn {
    const char* heading;
    std::vector<const char*> fields;
    const char* inside = nullptr;  // the object that has the fields; null: the device itself
};

struct CTable {
    const char* title;
    const char* list;  // of the report
    std::vector<CColumn> columns;
};

const std::vector<CTable>& Tables() {
    static const std::vector<CTable> TABLES = {
        {"Controllers",
         "controllers",
         {{"Controller", {"number"}},
          {"Product", {"product"}},
          {"Serial", {"serial"}},
          {"Firmware", {"firmware_package"}},
          {"Memory", {"memory"}},
          {"Battery", {"status", "charge"}, "battery"}}},
        {"Logical drives",
         "logical_drives",
         {{"Controller", {"controller"}},
          {"LD", {"number"}},
          {"Name", {"name"}},
          {"State", {"state"}},
          {"Capacity", {"capacity"}},
          {"Group", {"raid_group"}},
          {"Level", {"raid_level"}}}},
        {"Drives",
         "physical_drives",
         {{"Controller", {"controller"}},
          {"Enclosure", {"enclosure"}},
          {"Slot", {"slot"}},
          {"State", {"status_detail", "progress"}},
          {"Group", {"raid_group"}},
          {"Role", {"role"}},
          {"Temperature", {"temperature"}},
          {"Media errors", {"media_error_count"}},
          {"Other errors", {"other_error_count"}},
          {"Predictive failures", {"predictive_failure_count"}},
          {"Product", {"product"}},
          {"Capacity", {"capacity"}},
          {"Serial", {"serial"}}}},
        {"PCIe SSDs",
         "pcie_ssds",
         {{"Bus", {"bus"}},
          {"Product", {"product"}},
          {"Status", {"status"}},
          {"Used", {"used"}},
          {"Written", {"written"}},
          {"Temperature", {"temperature"}},
          {"Capacity", {"capacity"}},
          {"Serial", {"serial"}}}},
    };
    return TABLES;
}

const CReadJson& Member(const CReadJson& object, const char* name) {
    static const CReadJson NONE;
    const auto found = object.find(name);
    return found == object.end() ? NONE : *found;
}

std::string CellText(const CReadJson& device, const CColumn& column) {
    const CReadJson& object = column.inside == nullptr ? device : Member(device, column.inside);
    std::string text;
    for (const char* field : column.fields) {
        const std::string value = FieldText(object, field);
        text += text.empty() || value.empty() ? value : " " + value;
    }
    return text;
}

std::string HealthOf(const CReadJson& device) {
    return FieldText(Member(device, "health"), "status");
}

std::string RowHtml(const CReadJson& device, const CTable& table) {
    const std::string health = HealthOf(device);
    std::string row = fmt::format("<tr class=\"{}\"><td>{}</td>", HealthClass(health),
                                  health == "OK" ? "" : HealthSign(health) + HtmlText(health));
    for (const CColumn& column : table.columns) {
        row += "<td>" + HtmlText(CellText(device, column)) + "</td>";
    }
    return row + "</tr>\n";
}

// Empty without a device.
std::string TableHtml(const CReadJson& report, const CTable& table) {
    const CReadJson& devices = report[table.list];
    if (devices.empty()) {
        return "";
    }
    std::string html = fmt::format(
        "<section>\n<h2>{}</h2>\n<div class=\"scroll\" tabindex=\"0\" role=\"region\" "
        "aria-label=\"{}\">"
        "<table>\n<thead><tr><th scope=\"col\">Health</th>",
        table.title, table.title);
    for (const CColumn& column : table.columns) {
        html += fmt::format("<th scope=\"col\">{}</th>", column.heading);
    }
    html += "</tr></thead>\n<tbody>\n";
    for (const CReadJson& device : devices) {
        html += RowHtml(device, table);
    }
    return html + "</tbody></table></div>\n</section>\n";
}

std::string EntryHtml(const std::string& health, const std::string& text) {
    return fmt::format("<li class=\"{}\"><span>{}</span></li>\n", HealthClass(health),
                       HtmlText(text));
}

// An error of the request is as bad as not to know. What is only to be noted is told where nothing
// else says why the state is not known.
std::string MessageEntry(const CReadJson& message, bool isNoted) {
    const std::string severity = FieldText(message, "severity");
    if (severity == "info" && !isNoted) {
        return "";
    }
    std::string remedy = FieldText(message, "remedy");
    std::replace(remedy.begin(), remedy.end(), '\n', ' ');  // a paragraph here
    return EntryHtml(severity == "warning" ? "WARNING" : "UNKNOWN",
                     FieldText(message, "text") + (remedy.empty() ? "" : ". " + remedy));
}

std::string Counted(size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace

std::string HealthClass(const std::string& status) {
    return status == "CRITICAL"  ? "is-critical"
           : status == "WARNING" ? "is-warning"
           : status == "OK"      ? "is-ok"
                                 : "is-unknown";
}

std::string HealthSign(const std::string& status) {
    return fmt::format("<svg class=\"sign\" aria-hidden=\"true\"><use href=\"#{}\"/></svg>",
                       HealthClass(status));
}

std::string TimeHtml(const std::string& time) {
    constexpr size_t MINUTES = 16;  // "2026-11-20T10:00"
    if (time.size() <= MINUTES) {
        return HtmlText(time);
    }
    std::string shown = time.substr(0, MINUTES);
    shown[shown.find('T')] = ' ';
    return fmt::format("<time datetime=\"{}\">{} UTC</time>", HtmlText(time), HtmlText(shown));
}

std::string CountsText(const nlohmann::json& report) {
    return fmt::format("{}, {}, {}, {}", Counted(report["controllers"].size(), "controller"),
                       Counted(report["logical_drives"].size(), "logical drive"),
                       Counted(report["physical_drives"].size(), "drive"),
                       Counted(report["pcie_ssds"].size(), "PCIe SSD"));
}

std::string ProblemEntries(const nlohmann::json& report) {
    const CReadJson& findings = report["health"]["findings"];
    const bool isNoted = findings.empty() && HealthOf(report) != "OK";
    std::string entries;
    for (const CReadJson& message : report["messages"]) {
        entries += MessageEntry(message, isNoted);
    }
    // The worst of an object stands first, and says enough.
    std::set<std::string> objects;
    for (const CReadJson& finding : findings) {
        const std::string object = FieldText(finding, "object");
        if (object.empty() || objects.insert(object).second) {
            entries += EntryHtml(FieldText(finding, "severity"), FieldText(finding, "sentence"));
        }
    }
    return entries;
}

std::string PlainServer(const CServerReport& report) {
    const CReadJson& content = report.content;
    const std::string status = HealthOf(content);
    std::string html = fmt::format(
        "<header class=\"top {}\">\n<h1>{}</h1>\n<p class=\"verdict\">{}<strong>{}</strong></p>\n"
        "<p class=\"counts\">{}</p>\n<p class=\"when\">{}</p>\n</header>\n",
        HealthClass(status), HtmlText(report.name), HealthSign(status), HtmlText(status),
        HtmlText(CountsText(content)), TimeHtml(report.time));
    const std::string problems = ProblemEntries(content);
    if (!problems.empty()) {
        html += "<section class=\"advice\">\n<h2>What to do</h2>\n<ul class=\"problems\">\n" +
                problems + "</ul>\n</section>\n";
    }
    for (const CTable& table : Tables()) {
        html += TableHtml(content, table);
    }
    return html;
}

}  // namespace qorctl
