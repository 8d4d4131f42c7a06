// comlib_caller LEVEL MESSAGE [COUNT [LENGTH [ROTATED]]]
//
// Traces MESSAGE, COUNT times; if LENGTH is not 0, followed by the number of the line and as many
// "x" as make LENGTH bytes. The file ROTATED is renamed to "ROTATED.<number>" after every line.
//
// comlib_caller fork
//
// Forks while another thread traces its first line; the child traces, too, within ten seconds.
//
// comlib_caller fork-often
//
// Forks 200 times while two threads trace line after line; all children trace, too.
//
// Exit status: 0; 1 if a call changed errno; 2 if one left a descriptor open.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "plugin/ComLib.h"

namespace {

int NextFreeDescriptor() {
    const int fd = dup(STDOUT_FILENO);
    close(fd);
    return fd;
}

std::string Text(const char* message, long number, size_t length) {
    if (length == 0) {
        return message;
    }
    std::string text = message + std::to_string(number) + " ";
    text.resize(length, 'x');
    return text;
}

// 0 if the child came back.
int ForkAChildThatTraces() {
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        CTraceUtility::WriteDebug("Caller", CTraceUtility::TRACE_DBG_FLOW, "the child's");
        CFileUtility::GetInstallPath(0);
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// 0 if the child came back.
int ForkWhileAThreadTraces() {
    std::atomic<bool> begun{false};
    std::thread thread([&begun] {
        begun = true;
        CTraceUtility::WriteDebug("Caller", CTraceUtility::TRACE_DBG_FLOW, "the first line");
    });
    while (!begun) {
    }
    usleep(2000);  // inside the reading of the settings, which takes tens of milliseconds
    const int status = ForkAChildThatTraces();
    thread.join();
    return status;
}

// 0 if all children came back.
int ForkWhileThreadsTrace() {
    std::atomic<bool> stop{false};
    const auto trace = [&stop] {
        while (!stop) {
            CTraceUtility::WriteDebug("Caller", CTraceUtility::TRACE_DBG_FLOW, "a line");
        }
    };
    std::thread one(trace);
    std::thread other(trace);
    int status = 0;
    for (int i = 0; i < 200 && status == 0; ++i) {
        status = ForkAChildThatTraces();
    }
    stop = true;
    one.join();
    other.join();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (std::string_view(argv[1]) == "fork") {
        return ForkWhileAThreadTraces() == 0 ? 0 : 1;
    }
    if (std::string_view(argv[1]) == "fork-often") {
        return ForkWhileThreadsTrace() == 0 ? 0 : 1;
    }
    const auto level = static_cast<CTraceUtility::TRACE_DBG_LEVEL>(std::atoi(argv[1]));
    const long count = argc > 3 ? std::atol(argv[3]) : 1;
    const size_t length = argc > 4 ? std::strtoul(argv[4], nullptr, 10) : 0;
    const std::string rotated = argc > 5 ? argv[5] : "";
    const int freeDescriptor = NextFreeDescriptor();
    for (long i = 0; i < count; ++i) {
        errno = EDOM;
        CTraceUtility::WriteDebug("Caller", level, "%s", Text(argv[2], i, length).c_str());
        if (errno != EDOM) {
            return 1;
        }
        if (!rotated.empty()) {
            std::rename(rotated.c_str(), (rotated + "." + std::to_string(i)).c_str());
        }
    }
    return NextFreeDescriptor() == freeDescriptor ? 0 : 2;
}
