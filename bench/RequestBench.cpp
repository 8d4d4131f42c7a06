// A whole request with a tool that answers at once, beside the same runs of the tool into files and
// nothing else. In private mounts: the real server stays as it is.
#include <cstdlib>
#include <filesystem>

#include "Bench.h"
#include "PrivateMounts.h"
#include "ReportWriter.h"
#include "ServerPaths.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* TOOL = "/opt/tarmica/krz/cli/krzcli";
constexpr const char* REPORT_DIR = "/opt/tarmica/krz/reports/";
constexpr std::size_t REPORT_SIZE = 1000;

// The tool (InstantTool.cpp) prints the file that is called like its arguments.
void LayOutReports(unsigned controllers) {
    const auto write = [](const std::string& arguments, const std::string& report) {
        qorbench::WriteFile(REPORT_DIR + arguments, report);
    };
    write("-v", "Product Version : 7.2\n");
    std::string headers;
    for (unsigned i = 0; i < controllers; ++i) {
        headers += "RAID Controller : " + std::to_string(i) + "\n";
        const std::string which = " -a" + std::to_string(i);
        using qorbench::EReport;
        write("-ctrlinfo" + which, qorbench::MakeReport(EReport::CONTROLLERS, REPORT_SIZE));
        write("-ldpdinfo" + which, qorbench::MakeReport(EReport::LOGICAL_DRIVES, REPORT_SIZE));
        write("-pdinfo -nosmart" + which,
              qorbench::MakeReport(EReport::PHYSICAL_DRIVES, REPORT_SIZE));
    }
    write("-ctrlinfo -aAll", headers);
}

void LayOutServer() {
    qorbench::WriteFile(qorsim::DEVICE_LIST, "01:00.0_1000:005d_0000_02\n");
    qorbench::WriteFile("/opt/tarmica/qor/provider/RaidVCFac.ini",
                        "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1000\nDevice1=DEV_005D\n");
    fs::create_directories(fs::path(TOOL).parent_path());
    fs::copy_file(QORBENCH_TOOL, TOOL);
}

std::vector<std::string> CommandsOf(unsigned controllers) {
    std::vector<std::string> commands = {"krzcli -v", "krzcli -ctrlinfo -aAll"};
    for (unsigned i = 0; i < controllers; ++i) {
        const std::string which = " -a" + std::to_string(i);
        for (const char* command : {"krzcli -ctrlinfo", "krzcli -ldpdinfo", "krzcli -ldpdinfo",
                                    "krzcli -pdinfo -nosmart"}) {
            commands.push_back("/opt/tarmica/krz/cli/" + (command + which));
        }
    }
    commands[0].insert(0, "/opt/tarmica/krz/cli/");
    commands[1].insert(0, "/opt/tarmica/krz/cli/");
    return commands;
}

void Request() {
    auto* object = static_cast<CMngSrv_QorLibIF*>(CreateLibIF());
    std::list<CItemDisp*> items;
    std::string error;
    std::string notice;
    std::string detail;
    if (object->GetRAIDInfo(&items, &error, &notice, &detail) == 0 || items.empty()) {
        std::exit(1);
    }
    object->FreeItemList(&items);
    DeleteLibIF(object);
}

template <class Work>
void RegisterWay(const std::string& name, unsigned controllers, int repetitions, Work work) {
    qorbench::Register(name, 1, repetitions, [=](benchmark::State& state) {
        LayOutReports(controllers);
        qorbench::TimeEach(state, qorbench::WallSeconds, work, [] {});
    });
}

}  // namespace

int main(int argc, char** argv) {
    qorsim::EnterPrivateMounts();
    qorbench::UseToolEnvironment();
    LayOutServer();
    for (const unsigned controllers : {1U, 8U, 64U}) {
        const std::string name = "request/" + std::to_string(controllers) + " controllers";
        const int repetitions = controllers == 1 ? 60 : controllers == 8 ? 30 : 9;
        const std::vector<std::string> commands = CommandsOf(controllers);
        std::string script;
        for (std::size_t i = 0; i < commands.size(); ++i) {
            script += "sh -c '" + commands[i] + "' >/opt/tarmica/output" + std::to_string(i) + "\n";
        }
        RegisterWay(name + "/ours", controllers, repetitions, Request);
        RegisterWay(name + "/floor", controllers, repetitions, [=] {
            for (std::size_t i = 0; i < commands.size(); ++i) {
                qorbench::RunForReport(commands[i], "/opt/tarmica/output" + std::to_string(i));
            }
        });
        RegisterWay(name + "/peer:shell script", controllers, repetitions, [=] {
            qorbench::WriteFile("/opt/tarmica/script", script);
            qorbench::RunProgram({"sh", "/opt/tarmica/script"}, "/dev/null");
        });
    }
    return qorbench::RunAll(argc, argv);
}
