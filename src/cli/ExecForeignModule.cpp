#include "cli/ExecForeignModule.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "base/Trace.h"
#include "cli/ChildStart.h"
#include "cli/ChildWait.h"
#include "util/UniqueFd.h"

using std::chrono::milliseconds;

namespace {

constexpr unsigned long EXIT_CODE_NOT_STARTED = 1;
constexpr const char* TOOL_LIBRARY_DIR = "/opt/tarmica/krz/lib";
constexpr const char* LIBRARY_PATH_NAME = "LD_LIBRARY_PATH";

// The host's environment with the tool's library directory at the end of LD_LIBRARY_PATH. Points
// into the host's own environment, so it lives for one start only.
class CToolEnvironment {
public:
    CToolEnvironment() : m_LibraryPath(std::string(LIBRARY_PATH_NAME) + "=") {
        const std::string prefix = m_LibraryPath;
        if (const char* libraryPath = getenv(LIBRARY_PATH_NAME)) {
            m_LibraryPath.append(libraryPath).append(":");
        }
        m_LibraryPath.append(TOOL_LIBRARY_DIR);
        for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
            if (!std::string_view(*entry).starts_with(prefix)) {
                m_Entries.push_back(*entry);
            }
        }
        m_Entries.push_back(m_LibraryPath.data());
        m_Entries.push_back(nullptr);
    }
    CToolEnvironment(const CToolEnvironment&) = delete;  // points into itself
    CToolEnvironment& operator=(const CToolEnvironment&) = delete;

    char* const* Entries() const { return m_Entries.data(); }

private:
    std::string m_LibraryPath;
    std::vector<char*> m_Entries;
};

// A child that is stopped would stay for ever; nobody else knows of it.
void EndChildThatDidNotEnd(pid_t child, int status) {
    if (!WIFEXITED(status) && !WIFSIGNALED(status)) {
        KillChild(child);
    }
}

// What a child that could not become the command has to say before it ends with status 1.
void TraceFailedStep(const CChildStart& start) {
    errno = start.error;
    const auto code = static_cast<unsigned int>(GetLastError());
    switch (start.failed) {
        case EChildStep::OUTPUT:
            QOR_TRACE(FAILURE, "ExecForeignModule open Error %08x.", code);
            break;
        case EChildStep::STREAMS:
            QOR_TRACE(FAILURE, "ExecForeignModule dup2 Error %08x.", code);
            break;
        default:
            QOR_TRACE(FAILURE, "ExecForeignModule execlp Error %08x.", code);
            break;
    }
}

// Nothing is started where the file could become another's before the child opens it, or later.
CChildStart StartIfSafe(const std::string& command, const COutputFile& file,
                        const CChildSetup& setup) {
    if (file.IsOwn() && !IsOutOfOthersReach(file.Path())) {
        return {-1, EChildStep::OUTPUT, EACCES};
    }
    return StartChild(command, setup);
}

EFileOpening OpeningOf(const COutputFile& file) {
    return file.IsOwn() ? EFileOpening::ANEW : EFileOpening::AS_IT_STANDS;
}

CChildStart StartTool(const std::string& command, const COutputFile& outFile) {
    const CToolEnvironment environment;
    return StartIfSafe(command, outFile,
                       {.output = outFile.Path().c_str(),
                        .opening = OpeningOf(outFile),
                        .errors = EErrorOutput::WITH_OUTPUT,
                        .environment = environment.Entries()});
}

int WaitForTool(pid_t child, unsigned long* exitCode, milliseconds limit) {
    int status = 0;
    const EChildWait wait = WaitForChild(child, limit, status);
    if (wait == EChildWait::TIMED_OUT) {
        KillChild(child);
        return EXEC_TIMEOUT;
    }
    if (wait == EChildWait::FAILED) {
        QOR_TRACE(FAILURE, "ExecForeignModule waitpid Error.");
        return EXEC_FAILED;
    }
    if (!WIFEXITED(status)) {
        QOR_TRACE(FAILURE, "ExecForeignModule WEXITSTATUS Error %08x.",
                  static_cast<unsigned int>(status));
        EndChildThatDidNotEnd(child, status);
        return EXEC_FAILED;
    }
    *exitCode = static_cast<unsigned long>(WEXITSTATUS(status));
    return EXEC_OK;
}

// Never waits, as an open of a named pipe may.
bool CanBeOpened(const std::string& directory) {
    return util::CUniqueFd(open(directory.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)).IsOpen();
}

CChildStart StartUtility(const std::string& command, const COutputFile& outFile,
                         const std::string& workDir) {
    const std::string& path = outFile.Path();
    return StartIfSafe(command, outFile,
                       {.directory = workDir.empty() ? nullptr : workDir.c_str(),
                        .output = path.empty() ? nullptr : path.c_str(),
                        .opening = OpeningOf(outFile),
                        .errors = EErrorOutput::DROPPED,
                        .environment = environ});
}

// One look a second, then the rest of the time-out, then the child is left alone.
EChildWait WaitBySeconds(pid_t child, unsigned long timeoutMs, int& status) {
    for (unsigned long seconds = timeoutMs / 1000;; --seconds) {
        const pid_t changed = LookAtChild(child, status);
        if (changed != 0) {
            return changed == child ? EChildWait::CHANGED : EChildWait::FAILED;
        }
        if (seconds == 0) {
            Sleep(timeoutMs % 1000);
            return EChildWait::TIMED_OUT;
        }
        Sleep(1000);
    }
}

unsigned int WaitForUtility(pid_t child, unsigned long* exitCode, unsigned long timeoutMs) {
    int status = 0;
    const EChildWait wait = timeoutMs == EXEC_NO_TIMEOUT
                                ? WaitForChild(child, NO_TIME_LIMIT, status)
                                : WaitBySeconds(child, timeoutMs, status);
    if (wait == EChildWait::TIMED_OUT) {
        return EXEC_LSI_TIMEOUT;
    }
    if (wait == EChildWait::FAILED) {
        return EXEC_FAILED;
    }
    if (!WIFEXITED(status)) {
        EndChildThatDidNotEnd(child, status);
        return EXEC_FAILED;
    }
    *exitCode = static_cast<unsigned long>(WEXITSTATUS(status));
    return EXEC_OK;
}

}  // namespace

int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                      unsigned long* exitCode) {
    return ExecForeignModuleWithLimit(command, outFile, exitCode, TOOL_TIME_LIMIT);
}

int ExecForeignModuleWithLimit(const std::string& command, const COutputFile& outFile,
                               unsigned long* exitCode, milliseconds limit) {
    if (command.empty() || outFile.Path().empty()) {
        return EXEC_FAILED;
    }
    *exitCode = EXIT_CODE_UNKNOWN;
    const CChildStart start = StartTool(command, outFile);
    if (start.failed == EChildStep::PROCESS) {
        return EXEC_FAILED;
    }
    if (start.failed != EChildStep::NONE) {
        TraceFailedStep(start);
        *exitCode = EXIT_CODE_NOT_STARTED;
        return EXEC_OK;
    }
    return WaitForTool(start.child, exitCode, limit);
}

unsigned int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                               const std::string& workDir, unsigned long* exitCode,
                               unsigned long timeoutMs) {
    *exitCode = EXIT_CODE_UNKNOWN;
    if (command.empty()) {
        return EXEC_FAILED;
    }
    if (!workDir.empty() && !CanBeOpened(workDir)) {
        return EXEC_FAILED;
    }
    const CChildStart start = StartUtility(command, outFile, workDir);
    if (start.failed == EChildStep::PROCESS) {
        return EXEC_FAILED;
    }
    if (start.failed != EChildStep::NONE) {
        *exitCode = EXIT_CODE_NOT_STARTED;
        return EXEC_OK;
    }
    return WaitForUtility(start.child, exitCode, timeoutMs);
}
