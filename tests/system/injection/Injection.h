// Makes one function of the C library or operator new fail, for everything that is loaded into this
// program: it defines them all itself and passes calls on to the real ones. Only for test programs
// of their own, linked so that loaded libraries find the program's symbols first.
//
// Two functions are never the real ones: clock_nanosleep() returns at once, so that a pause between
// attempts costs nothing, and syslog() says nothing, because the C library keeps its descriptor of
// the log open from the first line to the end of the process.
//
// Threads: one.
#ifndef QORTEST_INJECTION_H
#define QORTEST_INJECTION_H

#include <vector>

namespace qortest {

inline constexpr const char* ALLOCATION = "operator new";
// Instead of an errno: no failure, but one byte only is transferred.
inline constexpr int ONE_BYTE = -1;

enum class EDuration { Once, Lasting };

struct CInjection {
    const char* function;
    int error;
    long successes = 0;  // calls that still succeed
    EDuration duration = EDuration::Once;
};

struct CFailingFunction {
    const char* name;
    std::vector<int> errors;  // what it can fail with
};

// Every system call, and every function of the C library with one behind it, that the plug-in,
// libqor_ComLib and the C++ library's files make and that can fail.
const std::vector<CFailingFunction>& FailingFunctions();

void Arm(const CInjection& injection);
// Returns how often the injection struck.
long Disarm();

// Blocks of operator new that are not freed yet.
long LiveBlocks();

}  // namespace qortest

#endif  // QORTEST_INJECTION_H
