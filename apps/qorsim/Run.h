// "qorsim run": a command in a view of the file system that holds a simulated server.
#ifndef QORSIM_RUN_H
#define QORSIM_RUN_H

#include <CLI/App.hpp>

namespace qorsim {

// Adds the sub-command. When it is the one on the command line, its callback sets `status`, which
// must outlive the parsing, to what this program is to end with.
void AddRunCommand(CLI::App& app, int& status);

}  // namespace qorsim

#endif  // QORSIM_RUN_H
