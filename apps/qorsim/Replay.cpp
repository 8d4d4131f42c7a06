#include "Replay.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "FaultServer.h"
#include "Files.h"
#include "Folder.h"
#include "RecordFile.h"
#include "RecordTool.h"
#include "Run.h"
#include "ServerPaths.h"

namespace qorsim {
namespace {

constexpr int INCOMPLETE = 124;

struct CReplayOptions {
    std::string directory;
    std::vector<std::string> command;
};

bool PlaceTools(const CRecording& recording, std::string& error) {
    for (const std::string& tool : recording.tools) {
        if (!PlaceReplayingTool(tool, error)) {
            return false;
        }
    }
    return true;
}

bool PlaceFiles(const std::string& directory, const CRecording& recording, std::string& error) {
    for (const auto& [name, path] : ServerFiles()) {
        if (std::find(recording.files.begin(), recording.files.end(), name) ==
            recording.files.end()) {
            continue;
        }
        const std::optional<std::string> text =
            ReadBeneath(directory, std::string("files/") + name, error);
        if (!text || !WriteFile(path, *text, error)) {
            return false;
        }
    }
    return true;
}

bool LayOutRecording(const std::string& directory, const CRecording& recording,
                     std::string& error) {
    return MakeDirectory(std::string(PROVIDER_DIR) + "/tmp", error) &&
           MakeDirectory(KRZ_CLI_DIR, error) && MakeDirectory(KRZ_LIB_DIR, error) &&
           MakeDirectory(UTILITY_DIR, error) && MakeDirectory(CONFIG_DIR, error) &&
           PlaceInterpreter(error) && WriteFile(RECORDING_NOTE, directory, error) &&
           HoldSignOfLife(REPLAY_SIGN_OF_LIFE, error) && PlaceTools(recording, error) &&
           PlaceFiles(directory, recording, error);
}

int Summarise(int status) {
    std::string error;
    if (access(UNRECORDED_CALLS, F_OK) != 0) {
        return status;
    }
    std::fprintf(stderr, "qorsim: these command lines were not recorded:\n%s",
                 ReadFile(UNRECORDED_CALLS, error).value_or(error + "\n").c_str());
    return INCOMPLETE;
}

int Replay(const CReplayOptions& options) {
    std::string error;
    const std::string directory = RecordingPath(options.directory, error);
    const std::optional<CRecording> recording =
        directory.empty() ? std::nullopt : ReadIndex(directory, error);
    if (!recording || !EnterEmptyServer(error) || !LayOutRecording(directory, *recording, error)) {
        return FailToSimulate(error);
    }
    return Summarise(RunInServer(options.command));
}

}  // namespace

void AddReplayCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CReplayOptions>();
    CLI::App* replay = app.add_subcommand(
        "replay", "Run a command on a server whose tools repeat what was recorded");
    replay->add_option("directory", options->directory, "The recording")->required()->type_name("");
    replay->add_option("command", options->command, "The command and its arguments, behind --")
        ->required()
        ->type_name("");
    replay->callback([options, &status] { status = Replay(*options); });
    replay->footer(
        "Ends as \"qorsim run\" does, but with 124 when a tool was asked for what was not\n"
        "recorded; such a call fails with exit status 97.\n"
        "\n"
        "Example:\n"
        "  qorsim replay ./server-7 -- qorctl raid");
}

}  // namespace qorsim
