// Runs the built qorctl as a process, in an environment that the test says in full.
#ifndef QORTEST_QORCTLPROCESS_H
#define QORTEST_QORCTLPROCESS_H

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qortest {

struct CQorctlRun {
    std::filesystem::path program;            // the built program when empty
    std::vector<std::string> arguments = {};  // without the program's name
    std::map<std::string, std::string> environment = {};
    std::string inputPath = "/dev/null";  // standard input comes from this file
    std::string outputPath = {};          // standard output goes to this existing file instead
    bool terminal = false;                // standard output is a terminal
    bool errorTerminal = false;           // standard error is one instead
    unsigned short terminalWidth = 0;     // columns; 0: the terminal does not say
    // Told all that came from the terminal so far, each time something came.
    std::function<void(const std::string& text)> onTerminal = {};
};

struct CQorctlOutcome {
    int status = -1;  // exit status; 128 + n when signal n ended it
    std::string out = {};
    std::string err = {};       // without what went to a terminal
    std::string terminal = {};  // standard error, if it is a terminal
};

// A bare chroot has no terminals; the test's own mounts can.
void ProvideTerminals();

// `folder` takes the files that hold the outputs. A terminal's line ends come back as "\n".
CQorctlOutcome RunQorctl(const std::filesystem::path& folder, const CQorctlRun& run);

}  // namespace qortest

#endif  // QORTEST_QORCTLPROCESS_H
