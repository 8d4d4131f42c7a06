#include "page/ServerReport.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "format/JsonDocument.h"
#include "format/JsonScan.h"
#include "page/PageText.h"
#include "terminal/TerminalText.h"
#include "util/FileIo.h"
#include "util/UniqueFd.h"
#include "watch/WatchClock.h"

namespace qorctl {
namespace {

using CReadJson = nlohmann::json;

constexpr const char* COMMAND = "storage";
constexpr const char* NO_REPORT = "not the JSON of qorctl storage";
constexpr const char* LISTS[] = {"messages",       "controllers",     "raid_groups",
                                 "logical_drives", "physical_drives", "pcie_ssds"};
constexpr const char* HEALTHS[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
constexpr size_t MAX_SHOWN = 60;  // bytes of a word of a file

bool IsListOfObjects(const CReadJson& document, const char* name) {
    const auto list = document.find(name);
    return list != document.end() && list->is_array() &&
           std::all_of(list->begin(), list->end(),
                       [](const CReadJson& entry) { return entry.is_object(); });
}

bool HasHealth(const CReadJson& document) {
    const auto health = document.find("health");
    return health != document.end() && health->is_object() &&
           IsListOfObjects(*health, "findings") &&
           std::find(std::begin(HEALTHS), std::end(HEALTHS), FieldText(*health, "status")) !=
               std::end(HEALTHS);
}

std::string VersionProblem(const CReadJson& version) {
    if (version == JSON_SCHEMA_VERSION) {
        return "";
    }
    return fmt::format("written by {} qorctl: its schema_version is {}, this one reads {}",
                       version > JSON_SCHEMA_VERSION ? "a newer" : "an older",
                       CutText(version.dump(), MAX_SHOWN), JSON_SCHEMA_VERSION);
}

std::string CommandProblem(const std::string& command) {
    return command == COMMAND
               ? ""
               : fmt::format("the JSON of qorctl {}; a page is made of that of qorctl storage",
                             CutText(command, MAX_SHOWN));
}

std::string ContentProblem(const CReadJson& document) {
    for (const char* name : LISTS) {
        if (!IsListOfObjects(document, name)) {
            return fmt::format("{}: \"{}\" is no list of objects", NO_REPORT, name);
        }
    }
    return HasHealth(document) ? "" : fmt::format("{}: it tells no health", NO_REPORT);
}

// Why the document is not that of `storage`; empty when it is.
std::string DocumentProblem(const CReadJson& document) {
    if (!document.is_object()) {
        return NO_REPORT;
    }
    const auto version = document.find("schema_version");
    const std::string command = FieldText(document, "command");
    if (version == document.end() || !version->is_number_integer() || command.empty()) {
        return NO_REPORT;
    }
    std::string problem = VersionProblem(*version);
    problem = problem.empty() ? CommandProblem(command) : problem;
    return problem.empty() ? ContentProblem(document) : problem;
}

std::string SizeProblem() {
    return fmt::format("larger than {} MiB", MAX_REPORT_SIZE / 1024 / 1024);
}

// Returns the problem.
std::string ReadReportFile(const std::string& path, std::string& text, std::string& time) {
    const util::CUniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) {
        return std::strerror(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return "not a regular file";
    }
    time = FormatTime(status.st_mtime);
    if (util::ReadAll(file.Get(), MAX_REPORT_SIZE, text)) {
        return "";
    }
    return errno == EFBIG ? SizeProblem() : std::strerror(errno);
}

// "web01" of "/var/reports/web01.json"
std::string NameOf(const std::string& path) {
    constexpr std::string_view END = ".json";
    std::string name = path.substr(path.rfind('/') + 1);
    if (name.size() > END.size() && name.ends_with(END)) {
        name.resize(name.size() - END.size());
    }
    return name.empty() ? path : name;
}

}  // namespace

CServerReport ParseServerReport(const std::string& json) {
    CServerReport report;
    if (json.empty()) {
        report.problem = "empty";
        return report;
    }
    if (JsonDepth(json) > MAX_REPORT_DEPTH) {
        report.problem = fmt::format("{}: nested too deeply", NO_REPORT);
        return report;
    }
    CReadJson content = CReadJson::parse(json, nullptr, false);
    report.problem =
        content.is_discarded() ? "not JSON, or not all of it" : DocumentProblem(content);
    if (report.problem.empty()) {
        report.json = json;
        report.content = std::move(content);
    }
    return report;
}

CServerReport ReadServerReport(const std::string& path) {
    std::string text;
    std::string time;
    const std::string problem = ReadReportFile(path, text, time);
    CServerReport report = problem.empty() ? ParseServerReport(text) : CServerReport();
    if (!problem.empty()) {
        report.problem = problem;
    }
    report.name = NameOf(path);
    report.file = path;
    report.time = time;
    return report;
}

std::string FieldText(const nlohmann::json& object, const char* name) {
    if (!object.is_object()) {
        return "";
    }
    const auto field = object.find(name);
    if (field == object.end()) {
        return "";
    }
    if (field->is_string()) {
        return field->get<std::string>();
    }
    return field->is_number_integer() ? field->dump() : "";
}

}  // namespace qorctl
