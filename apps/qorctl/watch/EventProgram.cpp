#include "watch/EventProgram.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "format/JsonDocument.h"
#include "terminal/TerminalText.h"
#include "util/FileIo.h"

namespace qorctl {
namespace {

// What the worker says about the program, each with a number and a line feed.
constexpr std::string_view NOT_RUN = "error ";  // the number of an error
constexpr std::string_view ENDED = "ended ";    // a status as waitpid() gives it

constexpr int CANNOT_RUN = 127;
constexpr int REPLY_FD = STDERR_FILENO + 1;  // in the program's process, until it is the program
constexpr int FIRST_SPARE_FD = 16;           // above those
constexpr rlim_t MOST_DESCRIPTORS = 1U << 20U;
constexpr int64_t MILLISECONDS_OF_SECOND = 1000;

constexpr const char* DEFAULT_PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

std::string FromEnvironment(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

// A directory can be searched, not run.
bool CanRun(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        errno = EACCES;
        return false;
    }
    return access(path.c_str(), X_OK) == 0;
}

std::string Absolute(const std::string& path) {
    std::array<char, PATH_MAX> folder = {};
    if (path.front() == '/' || getcwd(folder.data(), folder.size()) == nullptr) {
        return path;
    }
    return std::string(folder.data()) + '/' + path;
}

std::vector<std::string> Environment(const std::string& line) {
    const CJson event = CJson::parse(line, nullptr, false);
    std::vector<std::string> environment = {
        "PATH=" + FromEnvironment("PATH", DEFAULT_PATH),
        "LANG=" + FromEnvironment("LANG", "C.UTF-8"),
        "HOME=" + FromEnvironment("HOME", "/"),
    };
    struct CVariable {
        const char* name;
        const char* member;
    };
    constexpr CVariable VARIABLES[] = {{"QOR_EVENT_ID", "id"},
                                       {"QOR_SEVERITY", "severity"},
                                       {"QOR_OBJECT", "object"},
                                       {"QOR_SUMMARY", "summary"},
                                       {"QOR_HOST", "host"}};
    for (const CVariable& variable : VARIABLES) {
        const std::string value = event.is_object() ? event.value(variable.member, "") : "";
        environment.push_back(
            std::string(variable.name) + '=' +
            CutText(MakeVisible(value, {.utf8 = true}), CEventProgram::MAX_VALUE));
    }
    return environment;
}

// A file with the event, to be read from its beginning.
util::CUniqueFd MakeInput(const std::string& line) {
    util::CUniqueFd input(memfd_create("event", MFD_CLOEXEC));
    if (!input.IsOpen() || !util::WriteAll(input.Get(), line) ||
        lseek(input.Get(), 0, SEEK_SET) != 0) {
        return util::CUniqueFd();
    }
    return input;
}

void CloseFrom(int first) {
    if (syscall(SYS_close_range, first, UINT_MAX, 0) == 0) {
        return;
    }
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (int fd = first; fd < static_cast<int>(std::min(limit.rlim_cur, MOST_DESCRIPTORS)); ++fd) {
        close(fd);
    }
}

void Say(int reply, std::string_view word, int number) {
    // Who would hear of a failure is gone then.
    static_cast<void>(util::WriteAll(reply, fmt::format("{}{}\n", word, number)));
}

// A descriptor that stands in nobody's way.
int Spare(int fd) {
    return fcntl(fd, F_DUPFD_CLOEXEC, FIRST_SPARE_FD);
}

bool TakeStreams(int input, int reply) {
    const int spareInput = Spare(input);
    const int spareReply = Spare(reply);
    return spareInput >= 0 && spareReply >= 0 && dup2(spareInput, STDIN_FILENO) >= 0 &&
           dup2(STDERR_FILENO, STDOUT_FILENO) >= 0 && dup3(spareReply, REPLY_FD, O_CLOEXEC) >= 0;
}

// Becomes the program.
[[noreturn]] void BecomeProgram(const std::string& path, std::vector<std::string>& environment,
                                int input, int reply) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setpgid(0, 0);
    if (TakeStreams(input, reply)) {
        reply = REPLY_FD;
        CloseFrom(REPLY_FD + 1);
        std::vector<char*> pointers;
        pointers.reserve(environment.size() + 1);
        for (std::string& variable : environment) {
            pointers.push_back(variable.data());
        }
        pointers.push_back(nullptr);
        std::string name = path;
        const std::array<char*, 2> arguments = {name.data(), nullptr};
        execve(path.c_str(), arguments.data(), pointers.data());
    }
    Say(reply, NOT_RUN, errno);
    _exit(CANNOT_RUN);
}

// Runs the program to its end, in the worker.
void RunProgram(const std::string& path, std::vector<std::string> environment, int input,
                int reply) {
    const pid_t program = fork();
    if (program == 0) {
        BecomeProgram(path, environment, input, reply);
    }
    if (program < 0) {
        Say(reply, NOT_RUN, errno);
        return;
    }
    setpgid(program, program);
    siginfo_t end = {};
    while (waitid(P_PID, static_cast<id_t>(program), &end, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    // Its number is nobody else's while its end is not taken.
    kill(-program, SIGKILL);
    int status = 0;
    waitpid(program, &status, 0);
    Say(reply, ENDED, status);
}

// What Say() wrote.
int NumberBehind(std::string_view word, const std::string& text) {
    constexpr int DECIMAL = 10;
    return static_cast<int>(std::strtol(text.c_str() + word.size(), nullptr, DECIMAL));
}

std::string DescribeStatus(int status) {
    return WIFSIGNALED(status) ? fmt::format("was ended: {}", strsignal(WTERMSIG(status)))
                               : fmt::format("ended with status {}", WEXITSTATUS(status));
}

}  // namespace

std::optional<std::string> CEventProgram::Find(const std::string& program, std::string& problem) {
    problem.clear();
    if (program.find('/') != std::string::npos) {
        if (CanRun(program)) {
            return Absolute(program);
        }
        problem = program + ": " + std::strerror(errno);
        return std::nullopt;
    }
    const std::string path = FromEnvironment("PATH", DEFAULT_PATH);
    for (size_t start = 0; start <= path.size() && !program.empty();) {
        const size_t end = std::min(path.find(':', start), path.size());
        const std::string folder = path.substr(start, end - start);
        // Another folder than the one that is meant may be the current one later.
        if (!folder.empty() && folder.front() == '/' && CanRun(folder + '/' + program)) {
            return folder + '/' + program;
        }
        start = end + 1;
    }
    problem = program + ": there is no such program in PATH";
    return std::nullopt;
}

bool CEventProgram::Start(const std::string& line, int64_t now) {
    m_Text.clear();
    m_Problem.clear();
    std::array<int, 2> ends = {};
    const util::CUniqueFd input = MakeInput(line);
    if (!input.IsOpen() || pipe2(ends.data(), O_CLOEXEC) != 0) {
        m_Problem = fmt::format("cannot be run: {}", std::strerror(errno));
        return false;
    }
    m_Reply = util::CUniqueFd(ends[0]);
    const util::CUniqueFd reply(ends[1]);
    m_Keeper = std::make_unique<CKeeper>(CKeeperWork{
        .work = [&] { RunProgram(m_Path, Environment(line), input.Get(), reply.Get()); },
        .clear = [](pid_t /*worker*/, int /*status*/) {}});
    if (!m_Keeper->IsRunning()) {
        m_Problem = fmt::format("cannot be run: {}", std::strerror(errno));
        m_Keeper.reset();
        m_Reply.Close();
        return false;
    }
    m_Deadline = now + m_Limit;
    return true;
}

std::optional<bool> CEventProgram::Advance(int64_t now) {
    const bool isOver = ReadReply();
    if (!isOver && now < m_Deadline) {
        return std::nullopt;
    }
    m_Keeper.reset();
    m_Reply.Close();
    if (isOver) {
        return Judge();
    }
    m_Problem = fmt::format("did not end within {} s", m_Limit / MILLISECONDS_OF_SECOND);
    return false;
}

// True when nobody can say anything more: the worker and the keeper have ended, and what the
// program left behind is left alone.
bool CEventProgram::ReadReply() {
    std::array<char, 64> block = {};
    for (;;) {
        pollfd entry = {m_Reply.Get(), POLLIN, 0};
        if (poll(&entry, 1, 0) <= 0) {
            return false;
        }
        const ssize_t count = read(m_Reply.Get(), block.data(), block.size());
        if (count <= 0) {
            return count == 0 || errno != EINTR;
        }
        m_Text.append(block.data(), static_cast<size_t>(count));
    }
}

bool CEventProgram::Judge() {
    if (m_Text.starts_with(NOT_RUN)) {
        m_Problem = fmt::format("cannot be run: {}", std::strerror(NumberBehind(NOT_RUN, m_Text)));
        return false;
    }
    if (!m_Text.starts_with(ENDED)) {
        m_Problem = "was ended from outside";
        return false;
    }
    const int status = NumberBehind(ENDED, m_Text);
    m_Problem = status == 0 ? "" : DescribeStatus(status);
    return status == 0;
}

}  // namespace qorctl
