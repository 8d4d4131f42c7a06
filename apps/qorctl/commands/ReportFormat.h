// The forms in which `doctor` and `version` write their reports.
#ifndef QORCTL_COMMANDS_REPORTFORMAT_H
#define QORCTL_COMMANDS_REPORTFORMAT_H

namespace qorctl {

enum class EReportFormat { TREE, JSON };

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_REPORTFORMAT_H
