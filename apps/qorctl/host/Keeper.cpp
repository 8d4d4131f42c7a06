#include "host/Keeper.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "model/Quantity.h"

namespace qorctl {
namespace {

// The names that a list of processes shows; to end them is to end qorctl.
constexpr const char* KEEPER_NAME = "qorctl-keeper";
constexpr const char* WORKER_NAME = "qorctl-worker";
constexpr pid_t LARGEST_PROCESS_ID = 4194304;
constexpr int PAUSE = 10;  // milliseconds
// What the kernel cannot end, it hangs in a driver, is given up.
constexpr std::chrono::seconds END_LIMIT(5);

struct CPipe {
    util::CUniqueFd out;
    util::CUniqueFd in;
};

std::optional<CPipe> MakePipe() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return CPipe{util::CUniqueFd(ends[0]), util::CUniqueFd(ends[1])};
}

// As the program was started: what it does with signals is for itself.
void TakeDefaultSignals() {
    for (int signal = 1; signal < NSIG; ++signal) {
        ::signal(signal, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The processes that the kernel lists in the file, or nothing.
std::vector<pid_t> ChildrenOfThisProcess() {
    std::ifstream file("/proc/thread-self/children");
    return {std::istream_iterator<pid_t>(file), {}};
}

// A server may be without /proc: then every number is tried.
std::vector<pid_t> AllProcesses() {
    std::vector<pid_t> processes;
    const std::unique_ptr<DIR, int (*)(DIR*)> list(opendir("/proc"), closedir);
    while (const dirent* entry = list ? readdir(list.get()) : nullptr) {
        if (const auto process = ReadCount(entry->d_name); process && *process > 0) {
            processes.push_back(static_cast<pid_t>(*process));
        }
    }
    if (processes.empty()) {
        processes.resize(LARGEST_PROCESS_ID);
        std::iota(processes.begin(), processes.end(), 1);
    }
    return processes;
}

// The session that this process leads, without itself.
std::vector<pid_t> OthersOfSession() {
    std::vector<pid_t> processes = AllProcesses();
    std::erase_if(processes,
                  [](pid_t process) { return process == getpid() || getsid(process) != getpid(); });
    return processes;
}

class CKeeping {
public:
    CKeeping(const CKeeperWork& work, util::CUniqueFd leash)
        : m_Work(work), m_Leash(std::move(leash)) {}

    [[noreturn]] void Run();

private:
    bool Start();
    bool WaitForWorker() const;
    void EndAll();
    void Reap();

    const CKeeperWork& m_Work;
    util::CUniqueFd m_Leash;
    util::CUniqueFd m_Life;  // at its end when the worker is
    pid_t m_Worker = -1;
    int m_Status = 0;
};

// Holds nothing that somebody waits for the end of.
void CloseStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        close(stream);
    }
}

void CKeeping::Run() {
    setsid();
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    prctl(PR_SET_NAME, KEEPER_NAME);
    const bool started = Start();
    CloseStreams();
    if (!started || !WaitForWorker()) {
        EndAll();
        m_Work.clear(m_Worker, m_Status);
    }
    _exit(EXIT_SUCCESS);
}

bool CKeeping::Start() {
    std::optional<CPipe> life = MakePipe();
    m_Worker = life ? fork() : -1;
    if (m_Worker == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        prctl(PR_SET_NAME, WORKER_NAME);
        life->out.Close();
        m_Leash.Close();
        TakeDefaultSignals();
        m_Work.work();
        _exit(EXIT_SUCCESS);
    }
    if (m_Worker < 0) {
        m_Status = errno;
    }
    if (life) {
        m_Life = std::move(life->out);
    }
    return m_Worker > 0;
}

// True when it came to its end, false when it is to be ended, or died.
bool CKeeping::WaitForWorker() const {
    std::array<pollfd, 2> ends = {pollfd{m_Leash.Get(), 0, 0}, pollfd{m_Life.Get(), 0, 0}};
    while (poll(ends.data(), ends.size(), -1) < 0 && errno == EINTR) {
    }
    if (ends[1].revents == 0) {
        return false;
    }
    siginfo_t end = {};
    return waitid(P_PID, static_cast<id_t>(m_Worker), &end, WEXITED | WNOWAIT) == 0 &&
           end.si_code == CLD_EXITED && end.si_status == EXIT_SUCCESS;
}

// What is killed leaves children that may have a session of their own: they become the keeper's,
// which kills them in their turn.
void CKeeping::EndAll() {
    const auto deadline = std::chrono::steady_clock::now() + END_LIMIT;
    while (std::chrono::steady_clock::now() < deadline) {
        std::vector<pid_t> left = OthersOfSession();
        const std::vector<pid_t> children = ChildrenOfThisProcess();
        left.insert(left.end(), children.begin(), children.end());
        if (left.empty()) {
            return;
        }
        for (const pid_t process : left) {
            kill(process, SIGKILL);
        }
        poll(nullptr, 0, PAUSE);
        Reap();
    }
}

void CKeeping::Reap() {
    int status = 0;
    for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (child == m_Worker) {
            m_Status = status;
        }
    }
}

// The program's ends of all leashes: a keeper that held that of another one would keep it from
// ending.
std::vector<int> g_Leashes;

}  // namespace

CKeeper::CKeeper(const CKeeperWork& work) {
    std::optional<CPipe> leash = MakePipe();
    if (!leash) {
        return;
    }
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before);
    m_Keeper = fork();
    if (m_Keeper == 0) {
        leash->in.Close();
        for (const int other : g_Leashes) {
            close(other);
        }
        CKeeping(work, std::move(leash->out)).Run();
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    m_Leash = std::move(leash->in);
    g_Leashes.push_back(m_Leash.Get());
}

void CKeeper::End() {
    std::erase(g_Leashes, m_Leash.Get());
    m_Leash.Close();
    if (m_Keeper > 0) {
        while (waitpid(m_Keeper, nullptr, 0) < 0 && errno == EINTR) {
        }
        m_Keeper = -1;
    }
}

}  // namespace qorctl
