#include "Bench.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace qorbench {
namespace {

constexpr mode_t OUTPUT_MODE = 0600;
constexpr const char* MEMORY_DIR = "/dev/shm";

double Seconds(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

[[noreturn]] void Fail(const std::string& what) {
    std::perror(what.c_str());
    std::exit(1);
}

class CScratchDir {
public:
    CScratchDir() {
        // In memory where there is such a place: a disk's moods are not what is measured.
        const fs::path parent =
            fs::is_directory(MEMORY_DIR) ? fs::path(MEMORY_DIR) : fs::temp_directory_path();
        std::string name = (parent / "qor-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            Fail(name);
        }
        m_Path = name;
    }
    ~CScratchDir() {
        std::error_code ignored;
        fs::remove_all(m_Path, ignored);
    }
    CScratchDir(const CScratchDir&) = delete;  // one directory, one owner
    CScratchDir& operator=(const CScratchDir&) = delete;

    const std::string& Path() const { return m_Path; }

private:
    std::string m_Path;
};

}  // namespace

double CpuSeconds() {
    return Seconds(CLOCK_THREAD_CPUTIME_ID);
}

double WallSeconds() {
    return Seconds(CLOCK_MONOTONIC);
}

double RunProgram(const std::vector<std::string>& arguments, const std::string& outFile,
                  int expectedStatus) {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, OUTPUT_MODE);
    pid_t child = 0;
    if (posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ) != 0) {
        Fail(arguments[0]);
    }
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage = {};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != expectedStatus) {
        Fail(arguments[0]);
    }
    return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

void RunShell(const std::string& command, const std::string& outFile) {
    RunProgram({"sh", "-c", command}, outFile);
}

void RunForReport(const std::string& command, const std::string& outFile) {
    RunShell(command, outFile);
    std::ifstream report(outFile, std::ios::binary);
    std::string line;
    while (std::getline(report, line)) {
    }
    if (!report.eof() || !fs::remove(outFile)) {
        Fail(outFile);
    }
}

void UseToolEnvironment() {
    setenv("LD_LIBRARY_PATH", "/opt/tarmica/krz/lib", 1);
}

void WriteFile(const std::string& path, const std::string& text) {
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        Fail(path);
    }
}

const std::string& ScratchDir() {
    static const CScratchDir directory;
    return directory.Path();
}

double LowerQuartile(const std::vector<double>& values) {
    std::vector<double> sorted = values;
    const auto place = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 4);
    std::nth_element(sorted.begin(), place, sorted.end());
    return *place;
}

int RunAll(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace qorbench
