#include "presence/CMSRAID_MegaStorCLI.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "base/ServerPaths.h"
#include "base/Trace.h"
#include "cli/ExecForeignModule.h"
#include "cli/ResultFile.h"
#include "getters/CMSRAID_InfoGetter.h"
#include "presence/LsiUtility.h"

namespace {

// The inside of a text in double quotes, as the shell reads it: sane paths stay as they are.
std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        if (std::string_view("$`\"\\").find(c) != std::string_view::npos) {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted;
}

std::string CommandOf(const CLsiUtility& utility) {
    return "\"" + Quoted(PathOf(utility)) + "\" " + utility.arguments;
}

std::int64_t AddClamped(std::int64_t left, std::int64_t right) {
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(left, right, &sum)) {
        return sum;
    }
    return left < 0 ? std::numeric_limits<std::int64_t>::min()
                    : std::numeric_limits<std::int64_t>::max();
}

std::int64_t CountDisks(const std::string& path, std::string_view countKey) {
    std::int64_t disks = 0;
    CResultStream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.find(countKey) != std::string::npos) {
            // The count is read behind where the key stands when it begins the line.
            disks = AddClamped(disks, CStringUtil::TStringToNumber(line.substr(countKey.size())));
        }
    }
    return disks;
}

std::int64_t RunUtility(const CLsiUtility& utility) {
    const std::string command = CommandOf(utility);
    QOR_TRACE(RESULT, "Execute LSI RAID Utilty command. %s", command.c_str());
    CResultFile file(CMSRAID_InfoGetter::GetRsltFilePath());
    unsigned long exitCode = 0;
    const unsigned int run =
        ExecForeignModule(command, file, UTILITY_WORK_DIRECTORY, &exitCode, EXEC_NO_TIMEOUT);
    if (run != EXEC_OK) {
        QOR_TRACE(FAILURE,
                  "Failed to execute LSI RAID Utilty command. (ExecForeignModule() error %d).",
                  static_cast<int>(run));
        file.Keep();
        return 0;
    }
    if (exitCode != 0) {
        QOR_TRACE(FAILURE, "LSI RAID Utilty command Exit Code: 0x%02X",
                  static_cast<unsigned int>(exitCode));
        return 0;
    }
    if (IsTooLarge(file.Path())) {
        TraceTooLarge(file.Path());
        return 0;
    }
    return CountDisks(file.Path(), utility.countKey);
}

}  // namespace

// Its trace lines carry the orchestrator's name: support tools know them so.
bool CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk(const std::list<DevicePCIID>& devices) {
    const CTraceScope trace("CMSRAID_InterFace::IsPresentRAIDPhysDisk");
    const std::int64_t disks = RunUtility(UtilityFor(devices));
    QOR_TRACE(RESULT, "CMSRAID_InterFace::IsPresentRAIDPhysDisk diskNum=%d",
              static_cast<int>(disks));
    return disks > 0;
}
