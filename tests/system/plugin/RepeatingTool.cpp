#include "RepeatingTool.h"

#include <filesystem>
#include <string>

#include "PrivateServerFixture.h"

namespace qortest {

void WriteRepeatingTool() {
    const std::string tool = "/opt/tarmica/krz/cli/krzcli";
    const std::string folder = "/opt/tarmica/reports/";
    WriteFile(tool, "#!/bin/sh\nexec cat \"" + folder + "$*\"\n");
    std::filesystem::permissions(tool, std::filesystem::perms(0755));
    WriteFile(folder + "-v", "Product Version : 7.0\n");
    WriteFile(folder + "-ctrlinfo -aAll", "RAID Controller : 0\n");
    WriteFile(folder + "-ctrlinfo -a0", Golden("whole/ctrlinfo.txt"));
    WriteFile(folder + "-ldpdinfo -a0", Golden("whole/ldpdinfo.txt"));
    WriteFile(folder + "-pdinfo -nosmart -a0", Golden("whole/pdinfo.txt"));
    WriteFile(folder + "-pdinfo -pd[252:5] -a0", Golden("smart/sata.txt"));
    WriteFile(folder + "-pssdinfo -aAll", Golden("pssd/two_ssds.txt"));
}

}  // namespace qortest
