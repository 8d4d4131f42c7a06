// Recordings of qorsim: the reader of the index, and the files that an index names. Outside the
// recording stands a text that nothing may reach.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "Folder.h"
#include "Fuzz.h"
#include "RecordFile.h"
#include "Server.h"
#include "VisibleText.h"

namespace {

namespace fs = std::filesystem;
using namespace qorfuzz;

constexpr const char* RECORDING = "/opt/tarmica/recording";
constexpr const char* SECRET = "what nobody gave away";
constexpr const char* REPORT = "a report";
// Each of the calls may name files.
constexpr size_t MOST_CALLS = 16;

// Beside what a recording holds: links, a FIFO, a folder.
bool MakeRecording() {
    const fs::path recording = RECORDING;
    fs::create_directories(recording / "calls" / "folder");
    WriteServerFile("/opt/tarmica/secret", SECRET);
    WriteServerFile("/opt/tarmica/recording/calls/1.out", REPORT);
    fs::create_symlink("../../secret", recording / "calls" / "link");
    fs::create_symlink("..", recording / "up");
    fs::create_symlink("calls", recording / "inside");
    return mkfifo((recording / "calls" / "fifo").c_str(), 0600) == 0;
}

// An independent reading of what a path below a folder is.
bool StaysBelow(const std::string& path) {
    const fs::path parts(path);
    return !path.empty() && parts.is_relative() && path.find('\0') == std::string::npos &&
           path.find("//") == std::string::npos && parts.has_filename() &&
           std::none_of(parts.begin(), parts.end(), [](const fs::path& part) {
               return part == "." || part == ".." || part.empty();
           });
}

void DemandNoSecret(const std::string& name) {
    std::string error;
    const std::optional<std::string> text = qorsim::ReadBeneath(RECORDING, name, error);
    Demand(text.has_value() == error.empty(), "a refusal says why", error);
    Demand(!text || text->find(SECRET) == std::string::npos, "nothing outside is read", name);
}

bool IsKnownTool(const std::string& tool) {
    return tool == "krzcli" || tool == "MegaCli" || tool == "storcli";
}

void DemandCall(const qorsim::CRecordedCall& call) {
    Demand(!call.commandLine.empty(), "a call has a command line");
    for (const std::string& name : {call.out, call.err}) {
        Demand(StaysBelow(name), "a file is below the recording", name);
        DemandNoSecret(name);
    }
    Demand(!call.status || (*call.status >= 0 && *call.status < 256), "a status is one");
    Demand(!call.signal || (*call.signal > 0 && *call.signal < 65), "a signal is one");
    Demand(call.milliseconds >= 0, "a time is one");
}

void DemandRecording(const qorsim::CRecording& recording) {
    for (const std::string& tool : recording.tools) {
        Demand(IsKnownTool(tool), "no other tool is laid out", tool);
    }
    const size_t count = std::min(recording.calls.size(), MOST_CALLS);
    std::for_each_n(recording.calls.begin(), count, DemandCall);
    std::string error;
    const std::string text = WriteIndex(recording);
    const auto again = qorsim::ParseIndex(text, error);
    Demand(again.has_value(), "what is written can be read", error);
    Demand(WriteIndex(*again) == text, "and is the same", text);
}

void DemandVisible(const std::string& text) {
    const std::string visible = qorsim::Visible(text);
    Demand(std::none_of(visible.begin(), visible.end(),
                        [](char c) { return (c >= 0 && c < 0x20) || c == 0x7f; }),
           "messages hold no control character", visible);
    Demand(qorsim::Visible(visible) == visible, "what is visible stays as it is", visible);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool made = MakeRecording();
    Demand(made, "the recording can be made");
    const std::string text = InputText(data, size);
    DemandVisible(text);
    DemandNoSecret(text);  // as a name that nobody looked at before
    std::string error;
    const auto recording = qorsim::ParseIndex(text, error);
    Demand(recording.has_value() == error.empty(), "a refusal says why", error);
    if (recording) {
        DemandRecording(*recording);
    }
    return 0;
}
