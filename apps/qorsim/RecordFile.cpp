#include "RecordFile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>

#include "Folder.h"
#include "JsonText.h"
#include "ServerPaths.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

using nlohmann::json;

constexpr int VERSION = 1;
constexpr long MAX_STATUS = 255;
constexpr long MAX_SIGNAL = 64;
constexpr long MAX_MILLISECONDS = 4294967295;

bool IsTextList(const json& value) {
    return value.is_array() && std::all_of(value.begin(), value.end(),
                                           [](const json& each) { return each.is_string(); });
}

std::optional<long> NumberIfPresent(const json& object, const char* key) {
    return object.contains(key) ? std::optional(object[key].get<long>()) : std::nullopt;
}

bool IsNumberIfPresent(const json& object, const char* key) {
    return !object.contains(key) || object[key].is_number_integer();
}

bool IsListOf(const json& index, const char* key, bool (*isList)(const json&)) {
    return index.contains(key) && isList(index[key]);
}

bool IsIndex(const json& index) {
    return index.is_object() && index.contains("version") && index["version"] == VERSION &&
           IsListOf(index, "tools", IsTextList) && IsListOf(index, "files", IsTextList) &&
           IsListOf(index, "calls", [](const json& calls) { return calls.is_array(); });
}

bool IsText(const json& object, const char* key) {
    return object.contains(key) && object[key].is_string();
}

bool IsCall(const json& object) {
    return object.is_object() && IsListOf(object, "commandLine", IsTextList) &&
           !object["commandLine"].empty() && IsText(object, "out") && IsText(object, "err") &&
           IsNumberIfPresent(object, "milliseconds") && IsNumberIfPresent(object, "status") &&
           IsNumberIfPresent(object, "signal");
}

// Numbers that do not fit are seen as doubles.
bool IsWithin(const json& object, const char* key, long most) {
    return !object.contains(key) || (object[key].get<double>() >= 0 &&
                                     object[key].get<double>() <= static_cast<double>(most));
}

// A call cannot have ended by a signal that is ignored at first, or that stops or continues.
bool IsDeadly(long signal) {
    constexpr std::array<long, 9> HARMLESS = {0,       SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP,
                                              SIGTTIN, SIGTTOU, SIGURG,  SIGWINCH};
    return std::find(HARMLESS.begin(), HARMLESS.end(), signal) == HARMLESS.end();
}

bool HasNumbersOfACall(const json& object) {
    return IsWithin(object, "status", MAX_STATUS) && IsWithin(object, "signal", MAX_SIGNAL) &&
           IsWithin(object, "milliseconds", MAX_MILLISECONDS) &&
           IsDeadly(NumberIfPresent(object, "signal").value_or(SIGKILL));
}

std::string ProblemOf(const json& call) {
    if (!IsCall(call)) {
        return "a call has a \"commandLine\", \"out\" and \"err\", and numbers as \"status\", "
               "\"signal\" and \"milliseconds\"";
    }
    if (!IsPathBelow(call["out"]) || !IsPathBelow(call["err"])) {
        return "\"out\" and \"err\" are paths below the recording";
    }
    return HasNumbersOfACall(call)
               ? ""
               : fmt::format(
                     "\"status\" is 0 to {}, \"signal\" a deadly one, \"milliseconds\" 0 to {}",
                     MAX_STATUS, MAX_MILLISECONDS);
}

// Tools are laid out by their names.
bool DemandTools(const json& tools, std::string& error) {
    const std::vector<std::string>& known = RecordableTools();
    for (size_t i = 0; i < tools.size(); ++i) {
        if (std::find(known.begin(), known.end(), tools[i].get_ref<const std::string&>()) ==
            known.end()) {
            error = fmt::format("/tools/{}: the tools are krzcli, MegaCli and storcli, is \"{}\"",
                                i, tools[i].get_ref<const std::string&>());
            return false;
        }
    }
    return true;
}

bool ReadCalls(const json& calls, CRecording& recording, std::string& error) {
    for (size_t i = 0; i < calls.size(); ++i) {
        std::string problem;
        std::optional<CRecordedCall> call = ReadCall(calls[i], problem);
        if (!call) {
            error = fmt::format("/calls/{}: {}", i, problem);
            return false;
        }
        recording.calls.push_back(std::move(*call));
    }
    return true;
}

// A text that is not UTF-8 cannot stand in JSON; its bad bytes are replaced.
std::string Dump(const json& value) {
    return value.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace

const std::vector<CServerFile>& ServerFiles() {
    static const std::vector<CServerFile> files = {
        {"devices.tmp", DEVICE_LIST},
        {"RaidVCFac.ini", "/opt/tarmica/qor/provider/RaidVCFac.ini"},
        {"PciessdVCFac.ini", "/opt/tarmica/qor/provider/PciessdVCFac.ini"},
    };
    return files;
}

const std::vector<std::string>& RecordableTools() {
    static const std::vector<std::string> tools = {"krzcli", "MegaCli", "storcli"};
    return tools;
}

json WriteCall(const CRecordedCall& call) {
    json object = {{"commandLine", call.commandLine},
                   {"milliseconds", call.milliseconds},
                   {"out", call.out},
                   {"err", call.err}};
    if (call.status) {
        object["status"] = *call.status;
    }
    if (call.signal) {
        object["signal"] = *call.signal;
    }
    return object;
}

std::optional<CRecordedCall> ReadCall(const json& object, std::string& error) {
    error = ProblemOf(object);
    if (!error.empty()) {
        return std::nullopt;
    }
    return CRecordedCall{object["commandLine"],
                         NumberIfPresent(object, "status"),
                         NumberIfPresent(object, "signal"),
                         NumberIfPresent(object, "milliseconds").value_or(0),
                         object["out"],
                         object["err"]};
}

std::string WriteIndex(const CRecording& recording) {
    json calls = json::array();
    for (const CRecordedCall& call : recording.calls) {
        calls.push_back(WriteCall(call));
    }
    return Dump({{"version", VERSION},
                 {"tools", recording.tools},
                 {"files", recording.files},
                 {"calls", calls}});
}

std::optional<CRecording> ParseIndex(const std::string& text, std::string& error) {
    error = JsonExcess(text);
    if (!error.empty()) {
        return std::nullopt;
    }
    const json index = json::parse(text, nullptr, false);
    if (!IsIndex(index)) {
        error = fmt::format(
            "it is not the index of a recording of version {}, with \"tools\", \"files\" and "
            "\"calls\"",
            VERSION);
        return std::nullopt;
    }
    CRecording recording{index["tools"], index["files"], {}};
    if (!DemandTools(index["tools"], error) || !ReadCalls(index["calls"], recording, error)) {
        return std::nullopt;
    }
    return recording;
}

std::optional<CRecording> ReadIndex(const std::string& directory, std::string& error) {
    const std::optional<std::string> text = ReadBeneath(directory, INDEX, error);
    if (!text) {
        return std::nullopt;
    }
    std::optional<CRecording> recording = ParseIndex(*text, error);
    if (!recording) {
        error = fmt::format("{}/{}: {}", directory, INDEX, error);
    }
    return recording;
}

std::string RecordingPath(const std::string& directory, std::string& error) {
    std::error_code failure;
    fs::path path = fs::absolute(directory, failure);
    path = failure ? "" : fs::weakly_canonical(path, failure);
    if (failure || path.empty()) {
        error = fmt::format("cannot use the directory \"{}\": {}", directory, failure.message());
        return "";
    }
    for (const std::string hidden : {"/opt/tarmica", "/etc/opt/tarmica"}) {
        if ((path / "").string().starts_with(hidden + "/")) {
            error =
                fmt::format("a recording cannot be in {}: the simulated server is there", hidden);
            return "";
        }
    }
    return path;
}

std::string CommandText(const std::vector<std::string>& commandLine) {
    return fmt::format("{}", fmt::join(commandLine, " "));
}

}  // namespace qorsim
