// Recordings: what the tools of a server printed, as a directory. It may be somebody else's: what
// stands in it is believed only where it can do no harm.
//
//     index.json     the tools, the files of the server, and the calls in the order of their start
//     calls/N.out    what the Nth call wrote on its standard output, byte for byte
//     calls/N.err    and on its standard error
//     files/NAME     the server's lists of devices
#ifndef QORSIM_RECORDFILE_H
#define QORSIM_RECORDFILE_H

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace qorsim {

// What a tool writes at most in one call that can be played back.
inline constexpr size_t MAX_OUTPUT = size_t{64} << 20;

struct CRecordedCall {
    std::vector<std::string> commandLine;  // the tool's name and its arguments
    std::optional<long> status;            // the exit status; without it and
    std::optional<long> signal;            // without the deadly signal the call never ended
    long milliseconds = 0;
    std::string out;  // the files, relative to the recording
    std::string err;
};

struct CRecording {
    std::vector<std::string> tools;  // those that are installed
    std::vector<std::string> files;  // names below "files"
    std::vector<CRecordedCall> calls;
};

// A list that tells which devices there are: its name in a recording and its path on a server.
struct CServerFile {
    const char* name;
    const char* path;
};
const std::vector<CServerFile>& ServerFiles();

// The names of the tools that can be recorded.
const std::vector<std::string>& RecordableTools();

// The name of the index in a recording.
inline constexpr const char* INDEX = "index.json";

nlohmann::json WriteCall(const CRecordedCall& call);
std::optional<CRecordedCall> ReadCall(const nlohmann::json& object, std::string& error);

// The text of the index. Reading one demands the names of known tools, paths below the recording
// and numbers that a call can have; on a mistake it returns nothing, and `error` says where and
// what.
std::string WriteIndex(const CRecording& recording);
std::optional<CRecording> ParseIndex(const std::string& text, std::string& error);
// The same of a recording's index.
std::optional<CRecording> ReadIndex(const std::string& directory, std::string& error);

// The absolute path of a directory that a user named for a recording; "" with `error` set when it
// lies where only the simulated server is seen.
std::string RecordingPath(const std::string& directory, std::string& error);

// A command line for a person to read.
std::string CommandText(const std::vector<std::string>& commandLine);

}  // namespace qorsim

#endif  // QORSIM_RECORDFILE_H
