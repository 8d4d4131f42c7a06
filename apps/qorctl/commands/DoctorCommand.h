// `qorctl doctor`: what a support engineer would look at first.
#ifndef QORCTL_COMMANDS_DOCTORCOMMAND_H
#define QORCTL_COMMANDS_DOCTORCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command, which writes every check with its verdict, reason and remedy. `status`,
// which must outlive the parsing, becomes 0 when no check failed (warnings do not count), else 1.
void AddDoctorCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_DOCTORCOMMAND_H
