// "qorsim run": a command in a view of the file system that holds a simulated server.
#ifndef QORSIM_RUN_H
#define QORSIM_RUN_H

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace qorsim {

// Adds the sub-command. When it is the one on the command line, its callback sets `status`, which
// must outlive the parsing, to what this program is to end with.
void AddRunCommand(CLI::App& app, int& status);

// Moves this process into a view of the file system in which no server's tools are installed.
bool EnterEmptyServer(std::string& error);

// Runs a command that finds the programs of this build or installation first. Returns what
// RunAndWait does.
int RunInServer(const std::vector<std::string>& command);

// Says on standard error why there is no simulated server; returns this program's own exit status.
int FailToSimulate(const std::string& error);

}  // namespace qorsim

#endif  // QORSIM_RUN_H
