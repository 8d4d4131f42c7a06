#include "RecordFile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "Files.h"
#include "ServerPaths.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

using nlohmann::json;

constexpr int VERSION = 1;
constexpr const char* INDEX = "index.json";

bool IsTextList(const json& value) {
    return value.is_array() && std::all_of(value.begin(), value.end(),
                                           [](const json& each) { return each.is_string(); });
}

bool IsNumberIfPresent(const json& object, const char* key) {
    return !object.contains(key) || object[key].is_number_integer();
}

std::optional<int> NumberIfPresent(const json& object, const char* key) {
    return object.contains(key) ? std::optional(object[key].get<int>()) : std::nullopt;
}

bool IsIndex(const json& index) {
    return index.is_object() && index.value("version", json()) == VERSION &&
           IsTextList(index.value("tools", json())) && IsTextList(index.value("files", json())) &&
           index.value("calls", json()).is_array();
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
    const bool valid = object.is_object() && IsTextList(object.value("commandLine", json())) &&
                       !object["commandLine"].empty() && object.value("out", json()).is_string() &&
                       object.value("err", json()).is_string() &&
                       IsNumberIfPresent(object, "milliseconds") &&
                       IsNumberIfPresent(object, "status") && IsNumberIfPresent(object, "signal");
    if (!valid) {
        error =
            "a call has a \"commandLine\", \"out\" and \"err\", and numbers as \"status\", "
            "\"signal\" and \"milliseconds\"";
        return std::nullopt;
    }
    return CRecordedCall{object["commandLine"],
                         NumberIfPresent(object, "status"),
                         NumberIfPresent(object, "signal"),
                         NumberIfPresent(object, "milliseconds").value_or(0),
                         object["out"],
                         object["err"]};
}

bool WriteIndex(const std::string& directory, const CRecording& recording, std::string& error) {
    json calls = json::array();
    for (const CRecordedCall& call : recording.calls) {
        calls.push_back(WriteCall(call));
    }
    const json index = {{"version", VERSION},
                        {"tools", recording.tools},
                        {"files", recording.files},
                        {"calls", calls}};
    return WriteFile(directory + "/" + INDEX, Dump(index), error);
}

std::optional<CRecording> ReadIndex(const std::string& directory, std::string& error) {
    const std::string path = directory + "/" + INDEX;
    const std::optional<std::string> text = ReadFile(path, error);
    if (!text) {
        return std::nullopt;
    }
    const json index = json::parse(*text, nullptr, false);
    if (!IsIndex(index)) {
        error = fmt::format(
            "{}: it is not the index of a recording of version {}, with \"tools\", \"files\" and "
            "\"calls\"",
            path, VERSION);
        return std::nullopt;
    }
    CRecording recording{index["tools"], index["files"], {}};
    for (size_t i = 0; i < index["calls"].size(); ++i) {
        std::string problem;
        std::optional<CRecordedCall> call = ReadCall(index["calls"][i], problem);
        if (!call) {
            error = fmt::format("{}: /calls/{}: {}", path, i, problem);
            return std::nullopt;
        }
        recording.calls.push_back(std::move(*call));
    }
    return recording;
}

std::string RecordingPath(const std::string& directory, std::string& error) {
    std::error_code failure;
    const fs::path path = fs::weakly_canonical(directory, failure);
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
