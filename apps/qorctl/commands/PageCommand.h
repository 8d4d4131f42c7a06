// `qorctl page`: a server, or many, as an HTML document.
#ifndef QORCTL_COMMANDS_PAGECOMMAND_H
#define QORCTL_COMMANDS_PAGECOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command to `app`. When it is run, it sets `status` to the exit status. All must
// outlive the parsing.
void AddPageCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_PAGECOMMAND_H
