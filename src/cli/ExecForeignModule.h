// Running an external command line through the shell with its output in a file.
//
// Null: `exitCode` may not be null. Threads: one run at a time in a process. The host's signal
// dispositions, mask, environment and timers are not touched.
#ifndef QOR_CLI_EXECFOREIGNMODULE_H
#define QOR_CLI_EXECFOREIGNMODULE_H

#include <chrono>
#include <string>

#include "cli/ResultFile.h"

// Results of both variants; the child's own exit status is told apart, behind `exitCode`.
inline constexpr int EXEC_OK = 0;
inline constexpr int EXEC_FAILED = 1;
inline constexpr int EXEC_TIMEOUT = -1;                 // three arguments
inline constexpr unsigned int EXEC_LSI_TIMEOUT = 0xFF;  // five arguments

// Behind `exitCode` until a run completed.
inline constexpr unsigned long EXIT_CODE_UNKNOWN = 255;

// How long the RAID tool may run.
inline constexpr std::chrono::seconds TOOL_TIME_LIMIT(150);

// A time-out of the five-argument variant that never expires.
inline constexpr unsigned long EXEC_NO_TIMEOUT = ~0UL;

// A file that the host named is created or emptied as it stands. One of the plug-in's own is made
// anew, after what stood in its way was removed, and counts as one that cannot be opened in a
// directory where others could replace it.

// For the RAID tool. Runs `command` with standard output and then standard error in `outFile` and
// "/opt/tarmica/krz/lib" added to LD_LIBRARY_PATH, for at most TOOL_TIME_LIMIT.
//   EXEC_OK       the command ended; its exit status is behind `exitCode`. A command that could not
//                 get its output file or be run at all counts as one that ended with status 1.
//   EXEC_FAILED   empty command or file name (`*exitCode` untouched); no process could be made, it
//                 was stopped or killed by a signal, or its end was taken by somebody else
//                 (`*exitCode` 255)
//   EXEC_TIMEOUT  the limit passed; the command and what it started were killed (`*exitCode` 255)
// Writes a trace line for a command that could not get its output file, be run or be waited for,
// and for one that a signal ended or stopped; none for an empty argument, for a process that could
// not be made, or for the time-out.
int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                      unsigned long* exitCode);

// The same with another limit.
int ExecForeignModuleWithLimit(const std::string& command, const COutputFile& outFile,
                               unsigned long* exitCode, std::chrono::milliseconds limit);

// For the LSI utilities. Runs `command` in `workDir` (empty: where the host is) with standard
// output in `outFile` (empty: dropped; relative: below `workDir`) and standard error dropped. The
// environment is passed on as it is. `timeoutMs` milliseconds; EXEC_NO_TIMEOUT waits without limit.
//   EXEC_OK           as above
//   EXEC_FAILED       as above, or `workDir` cannot be opened; `*exitCode` is 255 in every case
//   EXEC_LSI_TIMEOUT  the limit passed; the command runs on, and its end is never taken
// Writes no trace.
unsigned int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                               const std::string& workDir, unsigned long* exitCode,
                               unsigned long timeoutMs);

#endif  // QOR_CLI_EXECFOREIGNMODULE_H
