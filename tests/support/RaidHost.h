// A host with one supported RAID card, and what its RAID tool prints about small controllers.
#ifndef QORTEST_RAIDHOST_H
#define QORTEST_RAIDHOST_H

#include <string>

#include "PrivateServerFixture.h"
#include "StandInTool.h"

namespace qortest {

inline constexpr const char* RAID_INI = "/opt/tarmica/qor/provider/RaidVCFac.ini";

// A step's `run`: the tool is killed, and the shell that runs its command line where the tool did
// not take its place, so that the run itself ends by a signal.
inline constexpr const char* KILL_TOOL =
    "read -r parent < /proc/$PPID/comm\n"
    "[ \"$parent\" != sh ] || kill -9 $PPID\n"
    "kill -9 $$";

// One card that is asked about with storcli where the RAID tool is missing.
inline void PutRaidCard() {
    WriteFile(RAID_INI, "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1000\nDevice1=DEV_005D\n");
    WriteFile(DEVICE_LIST, "02:00.0_1000:005d_0000_02\n");
}

// No card of the list.
inline void PutNoCard() {
    PutRaidCard();
    WriteFile(DEVICE_LIST, "05:00.0_8086:1521_0000_01\n");
}

inline std::string VersionReport(const std::string& version) {
    return "RAID tool\nProduct Version : " + version + "\n";
}

inline std::string ControllerList(int count) {
    std::string report;
    for (int i = 0; i < count; ++i) {
        report += "RAID Controller ID : " + std::to_string(i) + "\n";
    }
    return report;
}

inline std::string ControllerReport(int number) {
    return "RAID Controller ID : " + std::to_string(number) +
           "\n### General Information ###\nProduct Name : Card " + std::to_string(number) + "\n\n";
}

inline std::string GroupReport(int number) {
    return "RG" + std::to_string(number) + "\nRG No. : RG" + std::to_string(number) +
           "\n\n### General Information ###\nLD No. : LD0\n>>PD3(LD0)\n\n";
}

inline std::string DriveReport() {
    return "PD3(LD0)\n### General Information ###\nPD Status : ONLINE\nTemperature : 31C\n\n";
}

// The four commands about controller `number`, all answered.
inline void PlayController(CStandInTool& tool, int number,
                           const std::string& driveCommand = "-pdinfo -nosmart") {
    const std::string argument = " -a" + std::to_string(number);
    tool.Play("-ctrlinfo" + argument, {.out = ControllerReport(number)});
    tool.Play("-ldpdinfo" + argument, {.out = GroupReport(number)});
    tool.Play("-ldpdinfo" + argument, {.out = GroupReport(number)});
    tool.Play(driveCommand + argument, {.out = DriveReport()});
}

}  // namespace qortest

#endif  // QORTEST_RAIDHOST_H
