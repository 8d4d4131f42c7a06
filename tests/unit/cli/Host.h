// What a host of the plug-in may have done to its process, for tests: each guard undoes its change.
#ifndef QORTEST_HOST_H
#define QORTEST_HOST_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>

namespace qortest {

class CSignalAction {
public:
    CSignalAction(int signal, void (*handler)(int)) : m_Signal(signal) {
        struct sigaction action = {};
        action.sa_handler = handler;
        sigaction(signal, &action, &m_Old);
    }
    // A signal that is still on its way is dropped first: the old action may end the process.
    ~CSignalAction() {
        signal(m_Signal, SIG_IGN);
        sigaction(m_Signal, &m_Old, nullptr);
    }
    CSignalAction(const CSignalAction&) = delete;
    CSignalAction& operator=(const CSignalAction&) = delete;

    auto Current() const {
        struct sigaction action = {};
        sigaction(m_Signal, nullptr, &action);
        return action.sa_handler;
    }

private:
    int m_Signal;
    struct sigaction m_Old = {};
};

class CBlockedSignal {
public:
    explicit CBlockedSignal(int signal) {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, signal);
        sigprocmask(SIG_BLOCK, &set, &m_Old);
    }
    ~CBlockedSignal() { sigprocmask(SIG_SETMASK, &m_Old, nullptr); }
    CBlockedSignal(const CBlockedSignal&) = delete;
    CBlockedSignal& operator=(const CBlockedSignal&) = delete;

private:
    sigset_t m_Old = {};
};

// An environment variable with another value, or without one.
class CVariable {
public:
    CVariable(const char* name, const char* value) : m_Name(name) {
        if (const char* old = getenv(name)) {
            m_Old = old;
        }
        Set(value);
    }
    ~CVariable() { Set(m_Old ? m_Old->c_str() : nullptr); }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    void Set(const char* value) {
        if (value != nullptr) {
            setenv(m_Name, value, 1);
        } else {
            unsetenv(m_Name);
        }
    }

    const char* m_Name;
    std::optional<std::string> m_Old;
};

// A file system in memory on `directory`.
class CTmpfs {
public:
    explicit CTmpfs(const std::string& directory, const char* options = "", unsigned long flags = 0)
        : m_Directory(directory) {
        std::filesystem::create_directories(directory);
        EXPECT_EQ(mount("test", directory.c_str(), "tmpfs", flags, options), 0) << directory;
    }
    ~CTmpfs() { EXPECT_EQ(umount2(m_Directory.c_str(), MNT_DETACH), 0); }
    CTmpfs(const CTmpfs&) = delete;
    CTmpfs& operator=(const CTmpfs&) = delete;

private:
    std::string m_Directory;
};

// The end of a named pipe that sees when the last process that holds the other end is gone.
class CWitness {
public:
    explicit CWitness(const std::string& path) {
        mkfifo(path.c_str(), 0600);
        m_Fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    ~CWitness() { close(m_Fd); }
    CWitness(const CWitness&) = delete;
    CWitness& operator=(const CWitness&) = delete;

    // What the processes wrote, once all of them are gone; "still held" if they stay.
    std::string TextWhenAllAreGone() const {
        std::string text;
        for (pollfd entry = {m_Fd, POLLIN, 0}; poll(&entry, 1, LIMIT_MS) == 1;) {
            char byte = 0;
            if (read(m_Fd, &byte, 1) != 1) {
                return text;
            }
            text += byte;
        }
        return "still held";
    }

private:
    static constexpr int LIMIT_MS = 20000;
    int m_Fd = -1;
};

// From now on the kernel answers one system call with `error`, as an older one does or one that
// filters calls. Cannot be undone. False if the kernel has no such filter.
[[nodiscard]] inline bool RefuseSystemCall(long number, int error) {
    std::array<sock_filter, 4> program = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(number), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned int>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter = {program.size(), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// Runs `host` in a child of the test, for changes that cannot be undone. Returns what it returns;
// 200 if it was killed.
inline int RunAsAnotherHost(const std::function<int()>& host) {
    constexpr int KILLED = 200;
    // An exception ends the child: it must not go on with the test's other steps.
    const auto run = [&host]() noexcept { return host(); };
    const pid_t child = fork();
    if (child == 0) {
        _exit(run());
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : KILLED;
}

// The process ids of the test's own children.
inline std::string OwnChildren() {
    std::ifstream file("/proc/thread-self/children");
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace qortest

#endif  // QORTEST_HOST_H
