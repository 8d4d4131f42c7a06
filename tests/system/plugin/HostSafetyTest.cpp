// The plug-in is a guest: a host with threads, timers, handlers and much memory of its own must not
// notice it.
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "Footprint.h"
#include "LoadedPluginFixture.h"
#include "RepeatingTool.h"

namespace {

using qortest::CAnswer;
using qortest::CLoadedPlugin;
using qortest::CStandInTool;

thread_local bool t_AllocatorLooksForCancellation = false;

}  // namespace

// The host's, which may come by a cancellation point, as one that writes a log does. Not inline:
// the compiler takes memory of theirs for mismatched otherwise.
__attribute__((noinline)) void* operator new(size_t size) {
    if (t_AllocatorLooksForCancellation) {
        pthread_testcancel();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
__attribute__((noinline)) void operator delete(void* memory) noexcept {
    std::free(memory);
}
__attribute__((noinline)) void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

namespace {

std::atomic<int> g_Alarms{0};
std::atomic<int> g_ChildSignals{0};

void OnAlarm(int) {
    ++g_Alarms;
}
void OnChild(int) {
    ++g_ChildSignals;
}

// Half of what a large host is given, so that the test runs on small machines too, unless the
// environment says otherwise.
size_t TouchedMemory() {
    const char* text = std::getenv("QOR_TOUCHED_GIB");
    return std::stoul(text != nullptr ? text : "4") << 30;
}

class HostSafety : public qortest::CLoadedPluginFixture {
protected:
    static void InstallHandler(int number, void (*handler)(int)) {
        struct sigaction action = {};
        action.sa_handler = handler;
        ASSERT_EQ(sigaction(number, &action, nullptr), 0);
    }

    static void ExpectHandler(int number, void (*handler)(int)) {
        struct sigaction action = {};
        ASSERT_EQ(sigaction(number, nullptr, &action), 0);
        EXPECT_EQ(action.sa_handler, handler) << "signal " << number;
    }

    static void ExpectFullAnswer(const CLoadedPlugin& plugin, CAnswer& answer) {
        EXPECT_EQ(answer.result, 1) << answer.errorCode << " " << answer.errorDetail;
        EXPECT_EQ(answer.items.front()->ItemName(), "Controller Information");
        EXPECT_EQ(answer.items.back()->ParentName(), "### General Information ###");
        plugin->FreeItemList(&answer.items);
        EXPECT_TRUE(answer.items.empty());
    }
};

TEST_F(HostSafety, BusyHostWithTimersHandlersAndMuchMemoryIsServed) {
    const size_t touchedMemory = TouchedMemory();
    void* memory = mmap(nullptr, touchedMemory, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 64; ++i) {
        threads.emplace_back([&stop] {
            while (!stop) {
                std::free(std::malloc(1000));  // takes the lock that a fork could inherit
                std::this_thread::yield();
            }
        });
    }
    InstallHandler(SIGALRM, OnAlarm);
    InstallHandler(SIGCHLD, OnChild);
    const itimerval interval = {{0, 1000}, {0, 1000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &interval, nullptr), 0);

    {
        CStandInTool tool;
        PlayOneController(tool);
        const CLoadedPlugin plugin;
        CAnswer answer = GetRAIDInfo(plugin);
        ExpectFullAnswer(plugin, answer);
    }

    itimerval left = {};
    EXPECT_EQ(getitimer(ITIMER_REAL, &left), 0);
    EXPECT_EQ(left.it_interval.tv_usec, 1000) << "the host's own timer runs on";
    ExpectHandler(SIGALRM, OnAlarm);
    ExpectHandler(SIGCHLD, OnChild);
    EXPECT_GT(g_Alarms, 0);
    EXPECT_GT(g_ChildSignals, 0);

    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    InstallHandler(SIGALRM, SIG_DFL);
    InstallHandler(SIGCHLD, SIG_DFL);
    munmap(memory, touchedMemory);
}

TEST_F(HostSafety, EnvironmentDirectoryMaskAndLocaleStay) {
    setenv("LD_LIBRARY_PATH", "/some/where", 1);
    std::string before;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        before.append(*entry).append("\n");
    }
    const std::string directory = std::filesystem::current_path();
    const std::string locale = setlocale(LC_ALL, nullptr);
    const mode_t mask = umask(027);
    sigset_t blocked;
    sigset_t old;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, &old);
    {
        CStandInTool tool;
        PlayOneController(tool);
        const CLoadedPlugin plugin;
        CAnswer answer = GetRAIDInfo(plugin);
        ExpectFullAnswer(plugin, answer);
    }
    std::string after;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        after.append(*entry).append("\n");
    }
    EXPECT_EQ(after, before);
    EXPECT_EQ(std::filesystem::current_path(), directory);
    EXPECT_EQ(setlocale(LC_ALL, nullptr), locale);
    EXPECT_EQ(umask(mask), 027U);
    sigset_t now;
    sigprocmask(SIG_SETMASK, &old, &now);
    EXPECT_EQ(sigismember(&now, SIGUSR1), 1);
    EXPECT_EQ(sigismember(&now, SIGCHLD), 0);
    unsetenv("LD_LIBRARY_PATH");
}

TEST_F(HostSafety, RequestFromAnotherThreadIsServed) {
    CStandInTool tool;
    PlayOneController(tool);
    const CLoadedPlugin plugin;
    std::thread([&plugin] {
        CAnswer answer = GetRAIDInfo(plugin);
        ExpectFullAnswer(plugin, answer);
    }).join();
}

TEST_F(HostSafety, LoadAndUnloadLeavesNoTrace) {
    qortest::ExpectVisitsLeaveNothing([] { const CLoadedPlugin plugin; }, 1000);
}

// A host that ignores SIGCHLD has the kernel throw exit statuses away: the run cannot be judged.
TEST_F(HostSafety, HostThatIgnoresChildSignalsGetsAFailureAndNoZombie) {
    InstallHandler(SIGCHLD, SIG_IGN);
    {
        CStandInTool tool;
        const qortest::CToolStep step = {.out = "Product Version : 7.0\n"};
        for (int attempt = 0; attempt < 3; ++attempt) {
            tool.Play("-v", step);
        }
        tool.Play("-ctrlinfo -aAll", {});
        const CLoadedPlugin plugin;
        const CAnswer answer = GetRAIDInfo(plugin);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.errorCode, "01");
        EXPECT_TRUE(answer.items.empty());
        EXPECT_TRUE(Traced("ExecForeignModule waitpid Error."));
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
        EXPECT_EQ(errno, ECHILD);
    }
    InstallHandler(SIGCHLD, SIG_DFL);
}

// ---- a thread that the host cancels ----

class CCancelledRequest {
public:
    explicit CCancelledRequest(const CLoadedPlugin& plugin) : m_Plugin(plugin) {
        pthread_create(&m_Thread, nullptr, Run, this);
    }
    // True if the thread was cancelled behind the request and not in it.
    bool EndsBehindTheRequest() {
        pthread_cancel(m_Thread);
        void* result = nullptr;
        pthread_join(m_Thread, &result);
        return m_Answered && result == PTHREAD_CANCELED;
    }

private:
    static void* Run(void* argument) {
        auto& self = *static_cast<CCancelledRequest*>(argument);
        unsigned long exitCode = 0;
        self.m_Plugin->KRZExecCli("krzcli -slow", &exitCode, "/opt/tarmica/out");
        self.m_Answered = true;
        pthread_testcancel();
        return nullptr;
    }

    const CLoadedPlugin& m_Plugin;
    pthread_t m_Thread = {};
    std::atomic<bool> m_Answered{false};
};

TEST_F(HostSafety, CancelledThreadEndsItsRequestFirst) {
    CStandInTool tool;
    tool.Play("-slow", {.run = "touch /opt/tarmica/begun; sleep 0.5"});
    const CLoadedPlugin plugin;
    CCancelledRequest request(plugin);
    while (!std::filesystem::exists("/opt/tarmica/begun")) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(request.EndsBehindTheRequest());
}

// Runs an operation in a thread that is cancelled already; true if it came to its end all the same.
bool ComesToItsEndWhenCancelled(const std::function<void()>& operation) {
    struct CRun {
        const std::function<void()>& operation;
        bool ended = false;
    };
    CRun run = {operation};
    pthread_t thread = {};
    pthread_create(
        &thread, nullptr,
        [](void* argument) -> void* {
            pthread_cancel(pthread_self());
            auto& self = *static_cast<CRun*>(argument);
            self.operation();
            self.ended = true;
            pthread_testcancel();
            return nullptr;
        },
        &run);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(result, PTHREAD_CANCELED) << "afterwards";
    return run.ended;
}

TEST_F(HostSafety, NoOperationIsCancelled) {
    qortest::WriteRepeatingTool();
    const CLoadedPlugin plugin;
    CAnswer answer;
    char* document = nullptr;
    std::string digits;
    unsigned long exitCode = 0;
    EXPECT_TRUE(ComesToItsEndWhenCancelled([&] { answer = GetStorageInfo(plugin); }));
    EXPECT_EQ(answer.result, 1);
    EXPECT_TRUE(ComesToItsEndWhenCancelled([&] {
        t_AllocatorLooksForCancellation = true;  // else nothing there could be cancelled
        plugin->XmlSerialize(0, "raid", &answer.items, &document);
        t_AllocatorLooksForCancellation = false;
    }));
    EXPECT_NE(document, nullptr);
    EXPECT_TRUE(ComesToItsEndWhenCancelled([&] { plugin->FreeItemList(&answer.items); }));
    EXPECT_TRUE(answer.items.empty());
    EXPECT_TRUE(ComesToItsEndWhenCancelled([&] { answer = GetRAIDInfo(plugin); }));
    plugin->FreeItemList(&answer.items);
    EXPECT_TRUE(ComesToItsEndWhenCancelled([&] { answer = GetPDInfo(plugin); }));
    plugin->FreeItemList(&answer.items);
    EXPECT_TRUE(ComesToItsEndWhenCancelled([&] {
        plugin->GetCtrlPDInfoBinaryString(&digits, &answer.errorCode, &answer.noticeCode);
    }));
    EXPECT_NE(digits, "");
    EXPECT_TRUE(ComesToItsEndWhenCancelled(
        [&] { plugin->KRZExecCli("krzcli -v", &exitCode, "/opt/tarmica/out"); }));
}

}  // namespace
