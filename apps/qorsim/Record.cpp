#include "Record.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "FaultServer.h"
#include "Files.h"
#include "Folder.h"
#include "Layout.h"
#include "PrivateMounts.h"
#include "RecordFile.h"
#include "RecordTool.h"
#include "Redact.h"
#include "Run.h"
#include "ServerPaths.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr const char* SERVER_DIR = "/opt/tarmica";

struct CRecordOptions {
    std::string directory;
    std::string host;  // "" is the real server
    bool redact = false;
    std::vector<std::string> command;
};

// The texts of a recording's files, by their names in it.
using CTexts = std::map<std::string, std::string>;

bool IsDirectory(const std::string& path) {
    std::error_code failure;
    return fs::is_directory(path, failure);
}

bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

std::vector<std::string> InstalledTools() {
    std::vector<std::string> tools;
    for (const std::string& name : RecordableTools()) {
        if (Exists(ToolPath(name))) {
            tools.push_back(name);
        }
    }
    return tools;
}

// A view of the real server in which its tools can be replaced.
bool EnterRealServer(std::string& error) {
    if (InstalledTools().empty()) {
        error = fmt::format(
            "there is no tool to record in {}: install it, or name a simulated server with --host",
            SERVER_DIR);
        return false;
    }
    try {
        EnterMountNamespace();
        for (const std::string directory : {SERVER_DIR, KRZ_CLI_DIR, UTILITY_DIR}) {
            if (IsDirectory(directory)) {
                CoverWithWritableCopy(directory);
            }
        }
        return true;
    } catch (const std::runtime_error& failure) {
        error = failure.what();
        return false;
    }
}

bool EnterSimulatedServer(const std::string& host, std::string& error) {
    const std::optional<CServerSource> source = LoadServer(host, error);
    return source && EnterEmptyServer(error) && LayOutServer(*source, 0, "", error);
}

bool PlaceTools(const std::vector<std::string>& tools, std::string& error) {
    return PlaceInterpreter(error) && MakeDirectory(std::string(NOTES_DIR) + "/calls", error) &&
           std::all_of(tools.begin(), tools.end(),
                       [&](const std::string& tool) { return PlaceRecordingTool(tool, error); });
}

std::vector<std::string> CallNotes() {
    std::vector<std::string> paths;
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(std::string(NOTES_DIR) + "/calls", failure)) {
        if (entry.path().extension() == ".json") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());  // the numbers have leading zeros
    return paths;
}

// A call that was killed early may have left no file.
bool TakeText(const std::string& name, CTexts& texts, std::string& error) {
    const std::string path = std::string(NOTES_DIR) + "/" + name;
    const std::optional<std::string> text = ReadFile(path, error, MAX_OUTPUT);
    texts[name] = text.value_or("");
    return text || !Exists(path);
}

bool CollectCalls(CRecording& recording, CTexts& texts, std::string& error) {
    for (const std::string& path : CallNotes()) {
        const std::optional<std::string> text = ReadFile(path, error);
        if (!text) {
            return false;
        }
        const std::optional<CRecordedCall> call =
            ReadCall(nlohmann::json::parse(*text, nullptr, false), error);
        if (!call) {
            return false;
        }
        if (!TakeText(call->out, texts, error) || !TakeText(call->err, texts, error)) {
            return false;
        }
        recording.calls.push_back(*call);
    }
    return true;
}

void CollectFiles(CRecording& recording, CTexts& texts) {
    for (const auto& [name, path] : ServerFiles()) {
        std::string error;
        if (std::optional<std::string> text = ReadFile(path, error)) {
            recording.files.emplace_back(name);
            texts[std::string("files/") + name] = std::move(*text);
        }
    }
}

void Redact(CRecording& recording, CTexts& texts) {
    CRedactor redactor;
    for (const auto& [name, text] : texts) {
        redactor.Learn(text);
    }
    for (auto& [name, text] : texts) {
        text = redactor.Redact(text);
    }
    for (CRecordedCall& call : recording.calls) {
        for (std::string& argument : call.commandLine) {
            argument = redactor.Redact(argument);
        }
    }
}

// What was noted stood in memory until now, so that nothing unredacted is ever on a disk.
bool Keep(const CRecordOptions& options, const CNewFolder& folder,
          const std::vector<std::string>& tools, std::string& error) {
    CRecording recording;
    recording.tools = tools;
    CTexts texts;
    if (!CollectCalls(recording, texts, error)) {
        return false;
    }
    CollectFiles(recording, texts);
    if (options.redact) {
        Redact(recording, texts);
    }
    for (const auto& [name, text] : texts) {
        if (!folder.Write(name, text, error)) {
            return false;
        }
    }
    return folder.Write(INDEX, WriteIndex(recording), error);
}

int Record(const CRecordOptions& options) {
    std::string error;
    const std::string directory = RecordingPath(options.directory, error);
    const bool placed =
        !directory.empty() && MakeDirectory(fs::path(directory).parent_path(), error);
    const std::optional<CNewFolder> folder =
        placed ? CNewFolder::Make(directory, error) : std::nullopt;
    if (!folder || !(options.host.empty() ? EnterRealServer(error)
                                          : EnterSimulatedServer(options.host, error))) {
        return FailToSimulate(error);
    }
    const std::vector<std::string> tools = InstalledTools();
    if (!PlaceTools(tools, error)) {
        return FailToSimulate(error);
    }
    const int status = RunInServer(options.command);
    return Keep(options, *folder, tools, error) ? status : FailToSimulate(error);
}

}  // namespace

void AddRecordCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CRecordOptions>();
    CLI::App* record =
        app.add_subcommand("record", "Run a command and keep what the server's tools tell it");
    record->add_option("directory", options->directory, "A new directory for the recording")
        ->required()
        ->type_name("");
    record
        ->add_option("--host", options->host,
                     "Record on this simulated server, not on the real one")
        ->type_name("HOST");
    record->add_flag("--redact", options->redact,
                     "Replace serial numbers, WWNs and SAS addresses by others");
    record->add_option("command", options->command, "The command and its arguments, behind --")
        ->required()
        ->type_name("");
    record->callback([options, &status] { status = Record(*options); });
    record->footer(
        "Ends as \"qorsim run\" does. The recording is written when the command has ended.\n"
        "\n"
        "Example:\n"
        "  qorsim record --redact ./server-7 -- qorctl raid");
}

}  // namespace qorsim
