// Runs a program to its end, with what it needs and takes said in one place.
//
//     const CEnd end = RunProgram({"sh", "-c", "echo here; exit 3"});    // end.status 3
//     const CEnd end = RunCommand({.program = QORCTL_PROGRAM, .arguments = {"raid"},
//                                  .environment = CEnvironment{{"LC_ALL", "C"}}});
//
// Any thread may run one, also while others do. A program that does not end is killed, and is a
// test failure.
#ifndef QORTEST_PROCESS_H
#define QORTEST_PROCESS_H

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OtherKernel.h"

namespace qortest {

using CStrings = std::vector<std::string>;
using CEnvironment = std::map<std::string, std::string>;

// Below the time limit of a test.
inline constexpr std::chrono::seconds RUN_LIMIT(100);

struct CProgramRun {
    std::string program;  // looked for in this process's PATH
    CStrings arguments = {};
    std::optional<CEnvironment> environment = {};  // in full; none: as this process's
    std::filesystem::path folder = {};             // working folder; empty: as this process's
    std::filesystem::path input = "/dev/null";     // standard input comes from this file
    std::filesystem::path output = {};  // standard output goes to this existing file instead
    bool terminal = false;              // standard output is a terminal
    bool errorTerminal = false;         // standard error is one instead
    unsigned short terminalWidth = 0;   // columns; 0: the terminal does not say
    // Told all that came from the terminal so far, each time something came.
    std::function<void(const std::string& text)> onTerminal = {};
    EKernel kernel = EKernel::WHOLE;
    std::chrono::milliseconds limit = RUN_LIMIT;
};

// How a program ended: either `signal` is 0 and `status` its exit status, or `status` is -1 and
// `signal` the number of the signal that ended it. A program that cannot be run has the status 127.
struct CEnd {
    int status = -1;
    int signal = 0;
    std::string out = {};
    std::string err = {};       // without what went to a terminal
    std::string terminal = {};  // standard error, if it is a terminal
};

// Reads standard output to its end, that of the program's descendants included; standard error
// until the program ends. A terminal's line ends come back as "\n".
CEnd RunCommand(const CProgramRun& run);
CEnd RunProgram(const CStrings& words, EKernel kernel = EKernel::WHOLE);

// What waitpid() said of a child that ended, without outputs.
CEnd EndOf(int waitStatus);

// A bare chroot has no terminals; the test's own mounts can.
void ProvideTerminals();

}  // namespace qortest

#endif  // QORTEST_PROCESS_H
