// A monitoring program that a test starts: in the foreground, with a configuration of the test's
// own.
//
//     CEngine nagios({"/usr/sbin/nagios4", Folder() / "nagios.cfg"}, Folder() / "nagios.out");
//     ...
//     nagios.End();
#ifndef QORTEST_ENGINE_H
#define QORTEST_ENGINE_H

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>

#include "Process.h"

namespace qortest {

// Far more than is needed, and below the time limit of a test together with the end of an engine.
inline constexpr std::chrono::seconds ENGINE_LIMIT(60);

// Looks until `holds` does; false if that does not come in time.
bool Eventually(const std::function<bool()>& holds, std::chrono::seconds limit = ENGINE_LIMIT);

// A failure with the way out when a program that a test needs is not installed.
void DemandInstalled(const CStrings& programs);

// A number of a port of 127.0.0.1 that nobody listens on.
int FreePort();

// Ends with the test, whichever way that ends, SIGKILL included, and all processes that it started
// with it.
class CEngine {
public:
    CEngine(const CStrings& words, const std::filesystem::path& output);
    ~CEngine();
    CEngine(const CEngine&) = delete;  // owns a process
    CEngine& operator=(const CEngine&) = delete;

    // SIGTERM, and demands that it ends well. Before it, a test runs no program that leaves
    // processes to the system: they would become the test's.
    void End();
    bool IsRunning();
    // What it wrote, for the message of a failure.
    std::string Output() const;

private:
    std::filesystem::path m_Output;
    pid_t m_Keeper = -1;
    int m_Status = 0;
};

}  // namespace qortest

#endif  // QORTEST_ENGINE_H
