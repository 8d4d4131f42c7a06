// Running a command with its output in a file, and waiting: the runner beside a bare posix_spawn,
// and beside what others would take. With --touched-gib=N first, the process has that much memory
// in use.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "Bench.h"
#include "cli/ExecForeignModule.h"

namespace {

constexpr const char* COMMAND = "echo ready";
constexpr int REPETITIONS = 300;

// Every page is written to, so that the kernel has to keep track of it.
void TouchMemory(std::size_t gib) {
    const std::size_t size = gib << 30U;
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("mmap");
        std::exit(1);
    }
    madvise(memory, size, MADV_NOHUGEPAGE);
    for (std::size_t at = 0; at < size; at += page) {
        static_cast<volatile char*>(memory)[at] = 1;
    }
}

template <class Work>
void RegisterWay(const std::string& name, Work work) {
    qorbench::Register(name, 1, REPETITIONS, [=](benchmark::State& state) {
        const std::string file = qorbench::ScratchDir() + "/output";
        qorbench::TimeEach(
            state, qorbench::WallSeconds, [&] { work(file); }, [] {});
    });
}

void RunByPopen(const std::string& file) {
    std::ofstream out(file);
    FILE* pipe = popen(COMMAND, "r");
    for (int character = 0; (character = std::getc(pipe)) != EOF;) {
        out.put(static_cast<char>(character));
    }
    pclose(pipe);
}

// Python measures itself: its start is not what is asked for.
void RegisterPython(const std::string& name) {
    qorbench::Register(name, 1, 5, [=](benchmark::State& state) {
        const std::string file = qorbench::ScratchDir() + "/seconds";
        for (auto iteration : state) {
            static_cast<void>(iteration);
            qorbench::RunProgram({"python3", QORBENCH_PEERS_DIR "/run_command.py", COMMAND,
                                  qorbench::ScratchDir() + "/output"},
                                 file);
            double seconds = 0;
            std::ifstream(file) >> seconds;
            state.SetIterationTime(seconds);
        }
    });
}

}  // namespace

int main(int argc, char** argv) {
    qorbench::UseToolEnvironment();
    std::string measure = "command/small process";
    const std::string_view option = "--touched-gib=";
    if (argc > 1 && std::string_view(argv[1]).starts_with(option)) {
        const std::string gib(std::string_view(argv[1]).substr(option.size()));
        TouchMemory(std::stoul(gib));
        measure = "command/" + gib + " GiB touched";
        argv[1] = argv[0];
        ++argv;
        --argc;
    }
    RegisterWay(measure + "/ours", [](const std::string& file) {
        unsigned long exitCode = 0;
        ExecForeignModule(COMMAND, file, &exitCode);
    });
    RegisterWay(measure + "/floor",
                [](const std::string& file) { qorbench::RunShell(COMMAND, file); });
    RegisterWay(measure + "/peer:popen", RunByPopen);
    RegisterWay(measure + "/peer:system", [](const std::string& file) {
        if (std::system((std::string(COMMAND) + " >" + file).c_str()) != 0) {
            std::exit(1);
        }
    });
    RegisterPython(measure + "/peer:python3 subprocess");
    return qorbench::RunAll(argc, argv);
}
