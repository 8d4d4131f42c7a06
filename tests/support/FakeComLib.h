// A stand-in for libqor_ComLib for unit tests: it records traces and sleeps, and the test decides
// what it answers. File, ini and string operations are real, small ones.
#ifndef QORTEST_FAKECOMLIB_H
#define QORTEST_FAKECOMLIB_H

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace qortest {

struct CTraceLine {
    int level;
    std::string text;
    bool operator==(const CTraceLine& other) const = default;
};

std::ostream& operator<<(std::ostream& out, const CTraceLine& line);

struct CFakeComLib {
    std::string installPath = "/opt/tarmica/qor/provider";
    std::vector<CTraceLine> traces;     // every line, in order; the module name is checked
    std::vector<unsigned long> sleeps;  // milliseconds of every Sleep, which returns at once
    std::function<void()> onSleep;      // called by every Sleep, if set
    std::string deviceListToMake;       // what COsInfo::makeDeviceInfo writes; "" writes no file
    int deviceListsMade = 0;            // calls of COsInfo::makeDeviceInfo

    // The lines of one level, or of all levels but "[START]"/"[END]" (4).
    std::vector<std::string> Traces(int level) const;
    std::vector<CTraceLine> TracesWithoutFlow() const;
};

// The one instance; a test starts with a fresh one by calling ResetFakeComLib().
CFakeComLib& FakeComLib();
void ResetFakeComLib();

}  // namespace qortest

#endif  // QORTEST_FAKECOMLIB_H
