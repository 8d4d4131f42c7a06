// "qorsim replay": a command on a server whose tools repeat what was recorded.
#ifndef QORSIM_REPLAY_H
#define QORSIM_REPLAY_H

#include <CLI/App.hpp>

namespace qorsim {

// Adds the sub-command. When it is the one on the command line, its callback sets `status`, which
// must outlive the parsing, to what this program is to end with.
void AddReplayCommand(CLI::App& app, int& status);

// What the tools of such a server are told, and tell: the recording's path, the command lines that
// they were asked for in vain, and the sign that the server lives.
inline constexpr const char* RECORDING_NOTE = "/opt/tarmica/qorsim/recording";
inline constexpr const char* UNRECORDED_CALLS = "/opt/tarmica/qorsim/unrecorded";
inline constexpr const char* REPLAY_SIGN_OF_LIFE = "/opt/tarmica/qorsim/alive";

}  // namespace qorsim

#endif  // QORSIM_REPLAY_H
