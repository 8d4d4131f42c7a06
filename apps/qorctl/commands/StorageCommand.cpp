#include "commands/StorageCommand.h"

namespace qorctl {

int RunStorageCommand(const CItemReportOptions& options) {
    return RunItemReport(
        options, {.command = "storage", .request = StorageRequest(), .controller = std::nullopt});
}

}  // namespace qorctl
