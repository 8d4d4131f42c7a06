#include "presence/CMSRAID_MegaStorCLI.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "base/ServerPaths.h"
#include "cli/ExecForeignModule.h"
#include "cli/ResultFile.h"
#include "getters/CMSRAID_InfoGetter.h"
#include "plugin/Trace.h"

namespace {

struct CUtility {
    const char* name;
    const char* arguments;
    std::string_view countKey;  // a count line begins with it
};

constexpr CUtility MEGACLI = {"MegaCli", "-AdpAllInfo -aALL", "  Disks           :"};
constexpr CUtility STORCLI = {"storcli", "/call show", "Physical Drives ="};

constexpr const char* INTEL_VENDOR = "VEN_8086";
constexpr const char* LSI_VENDOR = "VEN_1000";
constexpr std::array<std::string_view, 3> OLDER_LSI_DEVICES = {"DEV_005B", "DEV_0073", "DEV_0079"};

bool IsOlderModel(const DevicePCIID& controller) {
    if (controller.vendor == INTEL_VENDOR) {
        return true;
    }
    return controller.vendor == LSI_VENDOR &&
           std::find(OLDER_LSI_DEVICES.begin(), OLDER_LSI_DEVICES.end(), controller.device) !=
               OLDER_LSI_DEVICES.end();
}

const CUtility& UtilityFor(const std::list<DevicePCIID>& devices) {
    return std::all_of(devices.begin(), devices.end(), IsOlderModel) ? MEGACLI : STORCLI;
}

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

std::string CommandOf(const CUtility& utility) {
    return "\"" + Quoted(CFileUtility::GetInstallPath(0)) + "/RAID/tool/" + utility.name + "\" " +
           utility.arguments;
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

std::int64_t RunUtility(const CUtility& utility) {
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
