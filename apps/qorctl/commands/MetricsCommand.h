// `qorctl metrics`: the storage as the text that node_exporter's textfile collector reads.
// docs/metrics.md lists what there is.
#ifndef QORCTL_COMMANDS_METRICSCOMMAND_H
#define QORCTL_COMMANDS_METRICSCOMMAND_H

#include <CLI/CLI.hpp>

namespace qorctl {

// Adds the sub-command; `status`, which must outlive the parsing, becomes the exit status: 0 when
// the text was written, whatever it says.
void AddMetricsCommand(CLI::App& app, int& status);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_METRICSCOMMAND_H
