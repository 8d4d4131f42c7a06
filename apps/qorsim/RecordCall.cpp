// One call of a tool that records.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "FaultPlay.h"
#include "FaultServer.h"
#include "Files.h"
#include "RecordFile.h"
#include "RecordTool.h"
#include "VisibleText.h"
#include "util/ReplaceFile.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

using std::chrono::steady_clock;

constexpr int BROKEN_RECORDING = 96;  // the recording itself is broken: no status of a tool
constexpr int NOT_RUNNABLE = 126;
constexpr mode_t FILE_MODE = 0644;

std::string Note(const std::string& name) {
    return std::string(NOTES_DIR) + "/" + name;
}

int Fail(const std::string& error) {
    Complain("qorsim: cannot record", error);
    return BROKEN_RECORDING;
}

void Redirect(const std::string& path, int channel) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, FILE_MODE);
    dup2(fd, channel);
    close(fd);
}

[[noreturn]] void Execute(const std::string& path, const CRecordedCall& call,
                          const std::vector<std::string>& arguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // who ends the recording tool means the true one
    Redirect(Note(call.out), STDOUT_FILENO);
    Redirect(Note(call.err), STDERR_FILENO);
    std::vector<char*> pointers = {const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    execv(TrueTool(path).c_str(), pointers.data());
    std::fprintf(stderr, "%s: %s\n", path.c_str(), std::strerror(errno));
    _exit(NOT_RUNNABLE);
}

// Replaces the file in one step, so that a call that is killed leaves no half of it.
bool Save(const std::string& path, const CRecordedCall& call, std::string& error) {
    util::CReplacement file(AT_FDCWD, path + ".", FILE_MODE);
    const bool saved =
        file.IsOpen() &&
        file.Write(WriteCall(call).dump(2, ' ', false, nlohmann::json::error_handler_t::replace)) &&
        file.TakePlace(path);
    if (!saved) {
        error = fmt::format("cannot write {}: {}", path, std::strerror(errno));
    }
    return saved;
}

void Await(pid_t child, CRecordedCall& call) {
    const auto start = steady_clock::now();
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    call.milliseconds = static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - start).count());
    if (WIFSIGNALED(status)) {
        call.signal = WTERMSIG(status);
    } else {
        call.status = WEXITSTATUS(status);
    }
}

// Whatever its size: the caller has to see what the tool wrote.
void PassOn(const std::string& path, int channel) {
    std::array<char, 65536> buffer = {};
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (ssize_t count = 0; (count = read(fd, buffer.data(), buffer.size())) > 0;) {
        WriteText(channel, {buffer.data(), static_cast<size_t>(count)});
    }
    close(fd);
}

}  // namespace

int RecordCall(const std::string& path, const std::vector<std::string>& arguments) {
    const unsigned long number = CountOneMore(Note("count"));
    if (number == 0) {
        return Fail("the call cannot be counted");
    }
    const std::string name = fmt::format("calls/{:06}", number);
    CRecordedCall call{{fs::path(path).filename()}, {}, {}, 0, name + ".out", name + ".err"};
    call.commandLine.insert(call.commandLine.end(), arguments.begin(), arguments.end());
    std::string error;
    if (!Save(Note(name + ".json"), call, error)) {
        return Fail(error);
    }
    std::signal(SIGCHLD, SIG_DFL);  // an inherited "ignore" would throw the exit status away
    const pid_t child = fork();
    if (child < 0) {
        return Fail(std::strerror(errno));
    }
    if (child == 0) {
        Execute(path, call, arguments);
    }
    Await(child, call);
    if (!Save(Note(name + ".json"), call, error)) {
        return Fail(error);
    }
    PassOn(Note(call.out), STDOUT_FILENO);
    PassOn(Note(call.err), STDERR_FILENO);
    if (call.signal) {
        DieOfSignal(static_cast<int>(*call.signal));
    }
    return static_cast<int>(*call.status);
}

}  // namespace qorsim
