// The sub-commands besides "run". Each function adds one to the command line; when it is the one
// that is given, its callback sets `status`, which must outlive the parsing, to what this program
// is to end with: 0, or 1 after a message on standard error.
#ifndef QORSIM_COMMANDS_H
#define QORSIM_COMMANDS_H

#include <CLI/App.hpp>
#include <string>

namespace qorsim {

void AddListCommand(CLI::App& app, int& status);
void AddShowCommand(CLI::App& app, int& status);
void AddValidateCommand(CLI::App& app, int& status);
void AddNewCommand(CLI::App& app, int& status);
void AddInstallCommand(CLI::App& app, int& status);

// "qorsim: " and the message as a line on standard error; returns 1.
int ReportFailure(const std::string& message);

}  // namespace qorsim

#endif  // QORSIM_COMMANDS_H
