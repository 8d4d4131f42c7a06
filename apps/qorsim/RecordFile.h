// Recordings: what the tools of a server printed, as a directory.
//
//     index.json     the tools, the files of the server, and the calls in the order of their start
//     calls/N.out    what the Nth call wrote on its standard output, byte for byte
//     calls/N.err    and on its standard error
//     files/NAME     the server's lists of devices
#ifndef QORSIM_RECORDFILE_H
#define QORSIM_RECORDFILE_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace qorsim {

struct CRecordedCall {
    std::vector<std::string> commandLine;  // the tool's name and its arguments
    std::optional<int> status;             // the exit status; without it and
    std::optional<int> signal;             // without the deadly signal the call never ended
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

nlohmann::json WriteCall(const CRecordedCall& call);
std::optional<CRecordedCall> ReadCall(const nlohmann::json& object, std::string& error);

bool WriteIndex(const std::string& directory, const CRecording& recording, std::string& error);
std::optional<CRecording> ReadIndex(const std::string& directory, std::string& error);

// The absolute path of a directory that a user named for a recording; "" with `error` set when it
// lies where only the simulated server is seen.
std::string RecordingPath(const std::string& directory, std::string& error);

// A command line for a person to read.
std::string CommandText(const std::vector<std::string>& commandLine);

}  // namespace qorsim

#endif  // QORSIM_RECORDFILE_H
