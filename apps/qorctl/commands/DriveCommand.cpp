#include "commands/DriveCommand.h"

namespace qorctl {

int RunDriveCommand(const CItemReportOptions& options, const CDriveAddress& address) {
    return RunItemReport(
        options,
        {.command = "drive", .request = DriveRequest(address), .controller = address.controller});
}

}  // namespace qorctl
