// "qorsim record": a command on a server, real or simulated, whose tools' calls are kept.
#ifndef QORSIM_RECORD_H
#define QORSIM_RECORD_H

#include <CLI/App.hpp>

namespace qorsim {

// Adds the sub-command. When it is the one on the command line, its callback sets `status`, which
// must outlive the parsing, to what this program is to end with.
void AddRecordCommand(CLI::App& app, int& status);

}  // namespace qorsim

#endif  // QORSIM_RECORD_H
