// Stands in for the RAID tool's process runner: hands out what the test queued.
#ifndef QORTEST_RUNNERDOUBLE_H
#define QORTEST_RUNNERDOUBLE_H

#include <deque>
#include <string>
#include <vector>

namespace qortest {

struct CRun {
    int result = 0;                // as ExecForeignModule returns it
    unsigned long exitCode = 255;  // as it is behind `exitCode`
    std::string out = {};          // what is in the file afterwards
};

struct CRunnerDouble {
    std::deque<CRun> runs;              // the answers that are due, in order
    std::vector<std::string> commands;  // the commands that were run
};

// The one instance; a test starts with a fresh one.
CRunnerDouble& RunnerDouble();

}  // namespace qortest

#endif  // QORTEST_RUNNERDOUBLE_H
