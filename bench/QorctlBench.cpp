// qorctl as a whole process beside the runs of the tool that it cannot do without and the start of
// a program that does nothing; and its start alone beside that of its peers. To be run on a
// simulated server: qorsim run --host large -- bench_qorctl.
#include "Bench.h"

namespace {

constexpr int CONTROLLERS = 4;

template <class Work>
void RegisterWay(const std::string& name, int repetitions, Work work) {
    qorbench::Register(name, 1, repetitions, [=](benchmark::State& state) {
        qorbench::TimeEach(state, qorbench::WallSeconds, work, [] {});
    });
}

void RegisterStart(const std::string& who, const std::vector<std::string>& program) {
    RegisterWay("start/--version/" + who, 100, [=] { qorbench::RunProgram(program, "/dev/null"); });
}

std::vector<std::string> Commands() {
    const std::string tool = "/opt/tarmica/krz/cli/krzcli ";
    std::vector<std::string> commands = {tool + "-v", tool + "-ctrlinfo -aAll"};
    for (int i = 0; i < CONTROLLERS; ++i) {
        const std::string which = " -a" + std::to_string(i);
        for (const char* verb : {"-ctrlinfo", "-ldpdinfo", "-ldpdinfo", "-pdinfo -nosmart"}) {
            commands.push_back(tool + verb + which);
        }
    }
    return commands;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string output = qorbench::ScratchDir() + "/output";
    const std::vector<std::string> commands = Commands();
    RegisterWay("qorctl raid/240 drives/ours", 15, [=] {
        qorbench::RunProgram({QORBENCH_QORCTL, "raid", "--format", "json"}, output);
    });
    RegisterWay("qorctl raid/240 drives/floor", 15, [=] {
        for (const std::string& command : commands) {
            qorbench::RunShell(command, output);
        }
        qorbench::RunProgram({"/bin/true"}, output);
    });
    RegisterStart("ours", {QORBENCH_QORCTL, "--version"});
    RegisterStart("peer:smartctl", {"/usr/sbin/smartctl", "--version"});
    RegisterStart("peer:lsblk", {"lsblk", "-J"});
    return qorbench::RunAll(argc, argv);
}
