#include "commands/RaidCommand.h"

namespace qorctl {

int RunRaidCommand(const CItemReportOptions& options) {
    return RunItemReport(options,
                         {.command = "raid", .request = RaidRequest(), .controller = std::nullopt});
}

}  // namespace qorctl
