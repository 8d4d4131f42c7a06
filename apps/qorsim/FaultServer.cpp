#include "FaultServer.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <thread>

#include "Files.h"
#include "ServerPaths.h"
#include "VisibleText.h"
#include "util/UniqueFd.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* FAULT_LIST = "/opt/tarmica/krz/faults/list";  // a fault a line
constexpr const char* FAULT_COUNTER = "/opt/tarmica/krz/faults/{}.count";
constexpr const char* FAULT_RUNS = "/opt/tarmica/krz/faults/runs";  // a command a line
constexpr const char* RESULT_DIR = "/opt/tarmica/qor/provider/tmp/MSRAID";
constexpr const char* FILLER = "/opt/tarmica/qor/provider/tmp/MSRAID/.full";
constexpr milliseconds LOOK_INTERVAL{20};
constexpr int WITHOUT_SERVER = 96;  // nobody is left to see it

bool MountOnResultDir(unsigned long flags, const std::string& options, std::string& error) {
    if (!MakeDirectory(RESULT_DIR, error)) {
        return false;
    }
    if (mount("qorsim", RESULT_DIR, "tmpfs", MS_NOSUID | MS_NODEV | flags, options.c_str()) != 0) {
        error =
            fmt::format("cannot mount a file system on {}: {}", RESULT_DIR, std::strerror(errno));
        return false;
    }
    return true;
}

// Read-only, because permissions do not stop root.
bool MakeResultDirUnwritable(std::string& error) {
    return MountOnResultDir(MS_RDONLY, "mode=0755", error);
}

// The smallest file system has one page, which is filled. Its inodes are as many on every machine.
bool MakeResultDirFull(std::string& error) {
    return MountOnResultDir(
               0, fmt::format("mode=0755,nr_inodes=1000,size={}", sysconf(_SC_PAGESIZE)), error) &&
           WriteFile(FILLER, std::string(static_cast<size_t>(sysconf(_SC_PAGESIZE)), '\0'), error);
}

bool RemoveDeviceList(std::string& error) {
    std::error_code failure;
    fs::remove(DEVICE_LIST, failure);
    if (failure) {
        error = fmt::format("cannot remove {}: {}", DEVICE_LIST, failure.message());
    }
    return !failure;
}

// A directory, because permissions do not stop root.
bool MakeDeviceListUnreadable(std::string& error) {
    return RemoveDeviceList(error) && MakeDirectory(DEVICE_LIST, error);
}

// The tools are names of one file, so that this one becomes a file of its own. A tool that the
// host lacks stays missing.
bool MakeNotExecutable(const std::string& path, std::string& error) {
    std::error_code failure;
    if (!fs::remove(path, failure) && !failure) {
        return true;
    }
    if (failure) {
        error = fmt::format("cannot remove {}: {}", path, failure.message());
        return false;
    }
    if (!CopySelf(path, error)) {
        return false;
    }
    fs::permissions(path, fs::perms(0644), failure);
    if (failure) {
        error = fmt::format("cannot change {}: {}", path, failure.message());
    }
    return !failure;
}

bool ChangeServer(const CFault& fault, std::string& error) {
    switch (fault.kind) {
        case EFault::NOT_EXECUTABLE:
            return MakeNotExecutable(ToolPath(fault.command.empty() ? "krzcli" : fault.command),
                                     error);
        case EFault::RESULT_DIR_UNWRITABLE:
            return MakeResultDirUnwritable(error);
        case EFault::RESULT_DIR_FULL:
            return MakeResultDirFull(error);
        case EFault::NO_DEVICE_LIST:
            return RemoveDeviceList(error);
        case EFault::UNREADABLE_DEVICE_LIST:
            return MakeDeviceListUnreadable(error);
        default:
            return true;  // the tools do it when they run
    }
}

// For the one who reads at the end why a fault was idle: a line that cannot be written is missed by
// nobody else.
void NoteRun(const std::string& tool, const std::vector<std::string>& arguments) {
    std::string line = tool;
    for (const std::string& argument : arguments) {
        line += " " + Visible(argument);
    }
    line += '\n';
    const util::CUniqueFd file(open(FAULT_RUNS, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644));
    static_cast<void>(!file.IsOpen() || write(file.Get(), line.data(), line.size()) < 0);
}

// Each command once, in the order of their first runs.
std::vector<std::string> NotedRuns() {
    std::string error;
    std::istringstream lines(ReadFile(FAULT_RUNS, error).value_or(""));
    std::vector<std::string> runs;
    for (std::string line; std::getline(lines, line);) {
        if (std::find(runs.begin(), runs.end(), line) == runs.end()) {
            runs.push_back(line);
        }
    }
    return runs;
}

unsigned long CountedRuns(size_t fault) {
    std::error_code failure;
    const auto count = fs::file_size(fmt::format(FAULT_COUNTER, fault), failure);
    return failure ? 0 : count;
}

std::string DescribeIdleFault(const std::string& text, unsigned long matched,
                              const std::vector<std::string>& runs) {
    const std::string head = fmt::format("the fault \"{}\" never struck: ", text);
    if (runs.empty()) {
        return head + "no tool was run";
    }
    return fmt::format("{}{} matched it; there were: {}", head,
                       matched == 0   ? "no command"
                       : matched == 1 ? "1 command"
                                      : fmt::format("{} commands", matched),
                       fmt::join(runs, ", "));
}

// A descriptor of the sign of life, or -1 when there is none: the server is gone.
int OpenSignOfLife(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

}  // namespace

std::string ToolPath(const std::string& tool) {
    return std::string(tool == "krzcli" ? KRZ_CLI_DIR : UTILITY_DIR) + "/" + tool;
}

bool PlaceFaults(const std::vector<std::string>& texts, std::string& error) {
    std::string list;
    for (const std::string& text : texts) {
        const std::optional<CFault> fault = ParseFault(text, error);
        if (!fault || !ChangeServer(*fault, error)) {
            return false;
        }
        list += text + "\n";
    }
    return texts.empty() ||
           (WriteFile(FAULT_LIST, list, error) && HoldSignOfLife(FAULT_SIGN_OF_LIFE, error));
}

std::optional<std::vector<CFault>> TakeDueFaults(const std::string& tool,
                                                 const std::vector<std::string>& arguments,
                                                 std::string& error) {
    std::vector<CFault> due;
    if (access(FAULT_LIST, F_OK) != 0) {
        return due;
    }
    const std::optional<std::string> list = ReadFile(FAULT_LIST, error);
    if (!list) {
        return std::nullopt;
    }
    NoteRun(tool, arguments);
    std::istringstream lines(*list);
    std::string line;
    for (size_t number = 0; std::getline(lines, line); ++number) {
        const std::optional<CFault> fault = ParseFault(line, error);
        if (!fault) {
            return std::nullopt;
        }
        if (!fault->Matches(tool, arguments)) {
            continue;
        }
        const unsigned long run = CountOneMore(fmt::format(FAULT_COUNTER, number));
        if (run == 0) {
            error = fmt::format("cannot count the runs of the fault \"{}\"", line);
            return std::nullopt;
        }
        if (fault->Strikes(run)) {
            due.push_back(*fault);
        }
    }
    return due;
}

std::vector<std::string> DescribeIdleFaults(const std::vector<std::string>& texts) {
    std::vector<std::string> sentences;
    for (size_t number = 0; number < texts.size(); ++number) {
        std::string error;
        const std::optional<CFault> fault = ParseFault(texts[number], error);
        const unsigned long matched = CountedRuns(number);
        if (fault && fault->IsOfRuns() && matched < fault->first) {
            sentences.push_back(DescribeIdleFault(texts[number], matched, NotedRuns()));
        }
    }
    return sentences;
}

// An appended byte is one more; the writer's offset behind it is its own count, whatever others
// have appended since.
unsigned long CountOneMore(const std::string& path) {
    const int fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return 0;
    }
    const off_t count = write(fd, "x", 1) == 1 ? lseek(fd, 0, SEEK_CUR) : 0;
    close(fd);
    return count > 0 ? static_cast<unsigned long>(count) : 0;
}

bool HoldSignOfLife(const std::string& path, std::string& error) {
    if (!WriteFile(path, "", error)) {
        return false;
    }
    const int fd = OpenSignOfLife(path);  // stays open: the lock is this process's
    if (fd < 0 || flock(fd, LOCK_EX | LOCK_NB) != 0) {
        error = fmt::format("cannot lock {}: {}", path, std::strerror(errno));
        return false;
    }
    return true;
}

void WaitInServer(const std::string& path, milliseconds time) {
    const int fd = OpenSignOfLife(path);
    const auto end = steady_clock::now() + time;
    for (auto now = steady_clock::now(); now < end; now = steady_clock::now()) {
        if (fd < 0 || flock(fd, LOCK_SH | LOCK_NB) == 0) {
            _exit(WITHOUT_SERVER);
        }
        std::this_thread::sleep_for(std::min<steady_clock::duration>(LOOK_INTERVAL, end - now));
    }
    close(fd);
}

void WaitForServersEnd(const std::string& path) {
    const int fd = OpenSignOfLife(path);
    while (fd >= 0 && flock(fd, LOCK_SH) != 0 && errno == EINTR) {
    }
    _exit(WITHOUT_SERVER);
}

}  // namespace qorsim
