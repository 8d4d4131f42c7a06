// The RAID tool's command-line program, "/opt/tarmica/krz/cli/krzcli": is it there, run a command,
// which version is it. No state; all operations are static.
#ifndef QOR_CLI_CMSRAID_KRZ_H
#define QOR_CLI_CMSRAID_KRZ_H

#include <string>

#include "cli/ResultFile.h"

// Results of a tool command.
inline constexpr unsigned int KRZ_OK = 0x0;
inline constexpr unsigned int KRZ_TOOL_ERROR = 0x1;  // the tool ran and reported an error
inline constexpr unsigned int KRZ_RUN_FAILED = 0x2;  // the tool could not be run
inline constexpr unsigned int KRZ_NOT_INSTALLED = 0x3;
inline constexpr unsigned int KRZ_TIMEOUT = 0x4;

class CMSRAID_KRZ {
public:
    static bool IsKRZInstalled();

    // Runs `command` ("krzcli ..." without its directory) with standard output and error in
    // `rsltFile`, up to three times with a second between. `*cliRtn` receives the tool's exit
    // status, 255 until a run completed. The tool has two ways to report an error in the first line
    // of its output: "Error - Invalid input at or near token" with a failing exit status (not tried
    // again: the command itself is wrong), and "Error - " with exit status 0.
    static unsigned int ExecCli(const std::string& command, unsigned long* cliRtn,
                                const COutputFile& rsltFile);
    // The same with one attempt.
    static unsigned int ExecCliNoRetry(const std::string& command, unsigned long* cliRtn,
                                       const COutputFile& rsltFile);
    // The same with `retry` attempts after the first.
    static unsigned int _ExecCli(const std::string& command, unsigned long* cliRtn,
                                 const COutputFile& rsltFile, int retry);

    // The tool's version, for example "4.5"; empty if it cannot be told. Uses `rsltFile` and
    // removes it. Throws std::out_of_range if the version line ends at its colon.
    static std::string GetKRZVersion(const std::string& rsltFile);
};

#endif  // QOR_CLI_CMSRAID_KRZ_H
