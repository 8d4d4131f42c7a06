// The tools of a server on which calls are recorded or played back. Each is a script of one line
// that has this program as its interpreter:
//
//     #!/opt/tarmica/qorsim/qorsim record-call
#ifndef QORSIM_RECORDTOOL_H
#define QORSIM_RECORDTOOL_H

#include <optional>
#include <string>
#include <vector>

namespace qorsim {

// Where this program and its notes stand on such a server, for it alone to see.
inline constexpr const char* NOTES_DIR = "/opt/tarmica/qorsim";

// Copies this program to where the scripts expect it.
bool PlaceInterpreter(std::string& error);

// Makes a tool one that records, and keeps the true one beside it.
bool PlaceRecordingTool(const std::string& tool, std::string& error);
// Makes a tool one that plays back.
bool PlaceReplayingTool(const std::string& tool, std::string& error);

// Plays the tool whose script's interpreter this process is, and returns its exit status; nothing
// when it is none.
std::optional<int> PlayScriptedTool(const std::vector<std::string>& arguments);

// The two kinds of calls, by the tool's path and its arguments.
int RecordCall(const std::string& path, const std::vector<std::string>& arguments);
int ReplayCall(const std::string& path, const std::vector<std::string>& arguments);

// The true tool beside a recording one.
std::string TrueTool(const std::string& path);

}  // namespace qorsim

#endif  // QORSIM_RECORDTOOL_H
