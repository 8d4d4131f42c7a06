// One call of a tool that plays a recording back.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "FaultPlay.h"
#include "FaultServer.h"
#include "Files.h"
#include "Folder.h"
#include "RecordFile.h"
#include "RecordTool.h"
#include "Replay.h"
#include "VisibleText.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr int BROKEN = 96;  // the recording itself is broken: no status of a tool
constexpr int NOT_RECORDED = 97;

int FailPlayback(const std::string& error) {
    Complain("qorsim: cannot play back", error);
    return BROKEN;
}

// The summary at the end names it.
int RefuseCommand(const std::vector<std::string>& commandLine) {
    const std::string text = Visible(CommandText(commandLine));
    const int fd = open(UNRECORDED_CALLS, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    WriteText(fd, text + "\n");
    close(fd);
    std::fprintf(stderr, "%s: this command line was not recorded: %s\n",
                 commandLine.front().c_str(), text.c_str());
    return NOT_RECORDED;
}

// The calls of that command line, in recorded order, by their places among all.
std::vector<size_t> FindCalls(const CRecording& recording,
                              const std::vector<std::string>& commandLine) {
    std::vector<size_t> places;
    for (size_t i = 0; i < recording.calls.size(); ++i) {
        if (recording.calls[i].commandLine == commandLine) {
            places.push_back(i);
        }
    }
    return places;
}

int Play(const std::string& directory, const CRecordedCall& call) {
    std::string error;
    const std::optional<std::string> out = ReadBeneath(directory, call.out, error, MAX_OUTPUT);
    const std::optional<std::string> err = ReadBeneath(directory, call.err, error, MAX_OUTPUT);
    if (!out || !err) {
        return FailPlayback(error);
    }
    WriteText(STDOUT_FILENO, *out);
    WriteText(STDERR_FILENO, *err);
    if (call.signal) {
        DieOfSignal(static_cast<int>(*call.signal));
    }
    if (!call.status) {
        WaitForServersEnd(REPLAY_SIGN_OF_LIFE);
    }
    return static_cast<int>(*call.status);
}

}  // namespace

int ReplayCall(const std::string& path, const std::vector<std::string>& arguments) {
    std::string error;
    const std::optional<std::string> directory = ReadFile(RECORDING_NOTE, error);
    const std::optional<CRecording> recording =
        directory ? ReadIndex(*directory, error) : std::nullopt;
    if (!recording) {
        return FailPlayback(error);
    }
    std::vector<std::string> commandLine = {fs::path(path).filename()};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    const std::vector<size_t> places = FindCalls(*recording, commandLine);
    if (places.empty()) {
        return RefuseCommand(commandLine);
    }
    const unsigned long turn = CountOneMore(fmt::format("{}/{}.count", NOTES_DIR, places.front()));
    if (turn == 0) {
        return FailPlayback("the call cannot be counted");
    }
    return Play(*directory, recording->calls[places[std::min(turn, places.size()) - 1]]);
}

}  // namespace qorsim
