// Runs a command on a server and says what it left there:
//
//     probe FACTS COMMAND ARGUMENT...
//
// The file FACTS gets a line a fact: "signal N" when the command died of one, "process" for a
// process that goes on, "file NAME" for a file among the results, "mount" when there is another
// number of mounts. The exit status is the command's.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace fs = std::filesystem;

namespace {

constexpr const char* RESULT_DIR = "/opt/tarmica/qor/provider/tmp/MSRAID";
constexpr const char* FILLER = ".full";  // of the simulated server's full file system
constexpr int FAILED = 255;

size_t CountMounts() {
    std::ifstream file("/proc/self/mountinfo");
    size_t count = 0;
    for (std::string line; std::getline(file, line);) {
        ++count;
    }
    return count;
}

// State and parent of a process, the two fields behind its name in brackets.
bool IsOwnAndWaiting(const fs::path& process) {
    std::ifstream file(process / "stat");
    std::string text;  // stays empty where the process ends meanwhile
    std::getline(file, text, '\0');
    const size_t name = text.rfind(") ");
    if (name == std::string::npos) {
        return false;
    }
    char state = 0;
    int parent = 0;
    std::sscanf(text.c_str() + name, ") %c %d", &state, &parent);
    return parent == getpid() && (state == 'S' || state == 'T');
}

bool HasChildThatWaits() {
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        const bool isProcess = std::isdigit(entry.path().filename().native().front()) != 0;
        if (isProcess && IsOwnAndWaiting(entry.path())) {
            return true;
        }
    }
    return false;
}

// Who was killed runs or is gone, so only one that waits for something else was left.
bool IsProcessLeft() {
    for (;;) {
        const pid_t ended = waitpid(-1, nullptr, WNOHANG);
        if (ended < 0) {
            return false;
        }
        if (ended == 0 && HasChildThatWaits()) {
            return true;
        }
        std::this_thread::yield();
    }
}

void TellFiles(std::FILE* facts) {
    std::error_code missing;
    for (const fs::directory_entry& entry : fs::directory_iterator(RESULT_DIR, missing)) {
        if (entry.path().filename() != FILLER) {
            std::fprintf(facts, "file %s\n", entry.path().filename().c_str());
        }
    }
}

int Run(char** command) {
    const pid_t child = fork();
    if (child == 0) {
        execvp(command[0], command);
        _exit(FAILED);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    // Orphans of the command become children of this program.
    if (argc < 3 || prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
        return FAILED;
    }
    std::FILE* const facts = std::fopen(argv[1], "we");
    if (facts == nullptr) {
        return FAILED;
    }
    const size_t mounts = CountMounts();
    const int status = Run(argv + 2);
    if (WIFSIGNALED(status)) {
        std::fprintf(facts, "signal %d\n", WTERMSIG(status));
    }
    if (IsProcessLeft()) {
        std::fputs("process\n", facts);
    }
    TellFiles(facts);
    if (CountMounts() != mounts) {
        std::fputs("mount\n", facts);
    }
    std::fclose(facts);
    return WIFEXITED(status) ? WEXITSTATUS(status) : FAILED;
}
