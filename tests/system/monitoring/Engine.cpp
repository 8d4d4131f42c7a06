#include "Engine.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>
#include <vector>

#include "PrivateServerFixture.h"
#include "util/UniqueFd.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using CClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds BETWEEN_LOOKS(50);
constexpr std::chrono::seconds END_LIMIT(20);

std::vector<pid_t> Children() {
    std::vector<pid_t> children;
    for (const fs::directory_entry& task : fs::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "children");
        for (pid_t child = 0; file >> child;) {
            children.push_back(child);
        }
    }
    return children;
}

// What a killed process leaves becomes this process's child.
void KillAll() {
    for (std::vector<pid_t> children = Children(); !children.empty(); children = Children()) {
        for (const pid_t child : children) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
    }
}

// True once the engine ended.
bool ReapAll(pid_t engine, int& status) {
    bool ended = false;
    int one = 0;
    for (pid_t child = 0; (child = waitpid(-1, &one, WNOHANG)) > 0;) {
        if (child == engine) {
            ended = true;
            status = one;
        }
    }
    return ended;
}

// The engine's parent, between it and the test: SIGTERM is for the engine; SIGINT, or the end of
// the test, is the end of all processes of the engine. Ends as the engine does.
[[noreturn]] void Keep(pid_t test, const sigset_t& signals, const std::function<pid_t()>& start) {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    prctl(PR_SET_PDEATHSIG, SIGINT);
    const pid_t engine = start();
    int status = 0;
    for (bool ended = getppid() != test; !ended;) {
        const int signal = sigwaitinfo(&signals, nullptr);
        if (signal == SIGTERM) {
            kill(engine, SIGTERM);
        }
        ended = signal == SIGINT || ReapAll(engine, status);
    }
    KillAll();
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
}

[[noreturn]] void Execute(char* const* words, int input, int output) {
    if (dup2(input, 0) < 0 || dup2(output, 1) < 0 || dup2(output, 2) < 0) {
        _exit(126);
    }
    execv(words[0], words);
    _exit(127);
}

}  // namespace

bool Eventually(const std::function<bool()>& holds, std::chrono::seconds limit) {
    const auto deadline = CClock::now() + limit;
    while (!holds()) {
        if (CClock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(BETWEEN_LOOKS);
    }
    return true;
}

void DemandInstalled(const CStrings& programs) {
    for (const std::string& program : programs) {
        ASSERT_EQ(access(program.c_str(), X_OK), 0)
            << program << " is missing; \"scripts/bootstrap test\" installs it";
    }
}

int FreePort() {
    const util::CUniqueFd any(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(any.Get(), general, size), 0);
    EXPECT_EQ(getsockname(any.Get(), general, &size), 0);
    return ntohs(address.sin_port);
}

CEngine::CEngine(const CStrings& words, const fs::path& output) : m_Output(output) {
    const util::CUniqueFd input(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const util::CUniqueFd log(
        open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    CStrings texts = words;
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    sigset_t signals = {};
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGCHLD}) {
        sigaddset(&signals, signal);
    }
    sigset_t before = {};
    sigprocmask(SIG_BLOCK, &signals, &before);
    const pid_t test = getpid();
    m_Keeper = fork();
    if (m_Keeper == 0) {
        Keep(test, signals, [&] {
            const pid_t engine = fork();
            if (engine == 0) {
                sigprocmask(SIG_SETMASK, &before, nullptr);
                Execute(pointers.data(), input.Get(), log.Get());
            }
            return engine;
        });
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    EXPECT_GT(m_Keeper, 0);
}

CEngine::~CEngine() {
    if (IsRunning()) {
        End();
    }
}

bool CEngine::IsRunning() {
    if (m_Keeper > 0 && waitpid(m_Keeper, &m_Status, WNOHANG) != 0) {
        m_Keeper = -1;
    }
    return m_Keeper > 0;
}

void CEngine::End() {
    ASSERT_TRUE(IsRunning()) << "the engine ended by itself: " << Output();
    kill(m_Keeper, SIGTERM);
    if (!Eventually([this] { return !IsRunning(); }, END_LIMIT)) {
        ADD_FAILURE() << "the engine does not end: " << Output();
        kill(m_Keeper, SIGINT);
        EXPECT_TRUE(Eventually([this] { return !IsRunning(); }, END_LIMIT));
        return;
    }
    EXPECT_TRUE(WIFEXITED(m_Status)) << Output();
    EXPECT_THAT(WEXITSTATUS(m_Status), testing::AnyOf(0, 128 + SIGTERM)) << Output();
}

std::string CEngine::Output() const {
    return ReadFile(m_Output);
}

}  // namespace qortest
