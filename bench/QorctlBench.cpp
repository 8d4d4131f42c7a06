// qorctl as a whole process beside the runs of the tool that it cannot do without and the start of
// a program that does nothing; and its start alone beside that of its peers. To be run on a
// simulated server: qorsim run --host large -- bench_qorctl.
#include "Bench.h"

namespace {

constexpr int CONTROLLERS = 4;
constexpr int CRITICAL = 2;  // what `check` says of that server

template <class Work>
void RegisterWay(const std::string& name, int repetitions, Work work) {
    qorbench::Register(name, 1, repetitions, [=](benchmark::State& state) {
        qorbench::TimeEach(state, qorbench::WallSeconds, work, [] {});
    });
}

void RegisterStart(const std::string& who, const std::vector<std::string>& program) {
    RegisterWay("start/--version/" + who, 100, [=] { qorbench::RunProgram(program, "/dev/null"); });
}

// The runs of the tool that a request for the RAID controllers takes, and for the storage.
std::vector<std::string> RaidCommands() {
    std::vector<std::string> commands = {"-v", "-ctrlinfo -aAll"};
    for (int i = 0; i < CONTROLLERS; ++i) {
        const std::string which = " -a" + std::to_string(i);
        for (const char* verb : {"-ctrlinfo", "-ldpdinfo", "-ldpdinfo", "-pdinfo -nosmart"}) {
            commands.push_back(verb + which);
        }
    }
    return commands;
}

std::vector<std::string> StorageCommands() {
    std::vector<std::string> commands = RaidCommands();
    commands.insert(commands.end(), {"-v", "-pssdinfo -aAll"});
    return commands;
}

void RegisterRequest(const std::string& name, const std::vector<std::string>& options,
                     const std::vector<std::string>& commands, int status = 0) {
    const std::string output = qorbench::ScratchDir() + "/output";
    std::vector<std::string> program = {QORBENCH_QORCTL};
    program.insert(program.end(), options.begin(), options.end());
    RegisterWay(name + "/240 drives/ours", 15,
                [=] { qorbench::RunProgram(program, output, status); });
    RegisterWay(name + "/240 drives/floor", 15, [=] {
        for (const std::string& command : commands) {
            qorbench::RunForReport("/opt/tarmica/krz/cli/krzcli " + command, output);
        }
        qorbench::RunProgram({"/bin/true"}, output);
    });
}

}  // namespace

int main(int argc, char** argv) {
    RegisterRequest("qorctl raid", {"raid", "--format", "json"}, RaidCommands());
    RegisterRequest("qorctl svp", {"svp"}, RaidCommands());
    RegisterRequest("qorctl status", {"status"}, StorageCommands());
    RegisterRequest("qorctl check", {"check"}, StorageCommands(), CRITICAL);
    RegisterRequest("qorctl metrics", {"metrics"}, StorageCommands());
    RegisterStart("ours", {QORBENCH_QORCTL, "--version"});
    RegisterStart("peer:smartctl", {"/usr/sbin/smartctl", "--version"});
    RegisterStart("peer:lsblk", {"lsblk", "-J"});
    return qorbench::RunAll(argc, argv);
}
