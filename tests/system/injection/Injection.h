// Makes one function of the C library or operator new fail, for everything that is loaded into this
// program: it defines them all itself and passes calls on to the real ones. Only for test programs
// of their own, linked so that loaded libraries find the program's symbols first.
//
// syslog() is never the real one: it says nothing, because the C library keeps its descriptor of
// the log open from the first line to the end of the process. clock_nanosleep() does not sleep, so
// that a pause between attempts costs nothing.
//
// Threads: one.
#ifndef QORTEST_INJECTION_H
#define QORTEST_INJECTION_H

#include <string>
#include <vector>

// ASan brings a malloc() of its own, which must not be mixed with the C library's.
#if defined(__SANITIZE_ADDRESS__)
#define QORTEST_MALLOC_FAILS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QORTEST_MALLOC_FAILS 0
#endif
#endif
#ifndef QORTEST_MALLOC_FAILS
#define QORTEST_MALLOC_FAILS 1
#endif

namespace qortest {

inline constexpr const char* ALLOCATION = "operator new";
// Instead of an errno: no failure, but one byte only is transferred.
inline constexpr int ONE_BYTE = -1;
// Instead of an errno of waitpid(): the child is told to be stopped, and once more to be running,
// as a killed one is for a moment.
inline constexpr int STOPPED = -2;

enum class EDuration { ONCE, LASTING };

struct CFailure {
    const char* function = nullptr;
    int error = 0;
};

struct CInjection {
    const char* function;
    int error;
    long successes = 0;  // calls that still succeed
    EDuration duration = EDuration::ONCE;
    // Fails as well, from its first call on and as long: the function is called only then.
    CFailure cause = {};
};

struct CFailingFunction {
    const char* name;
    std::vector<int> errors;  // what it can fail with
    const char* request;      // the name of one that is sure to call it
    CFailure cause = {};
};

// Every function of the C library that the plug-in, libqor_ComLib and the C++ library's files call
// and that can fail; UndefinedSymbolsTest.cpp holds the list against the libraries.
const std::vector<CFailingFunction>& FailingFunctions();

// A failure, injected or real; or a call that tells where in a request it happened.
struct CCall {
    std::string function;
    std::string text;  // the path or the command; of an injected failure empty
    int error = 0;     // 0: it succeeded
};

struct CRecord {
    long strikes = 0;  // how often the injection struck, without its cause
    // Since Arm(): every injected failure, and every call of open(), fopen(), stat(), mkdir() and
    // execvpe(), and of fstat(), read() and pread() where they failed.
    std::vector<CCall> calls;
};

void Arm(const CInjection& injection);
// Records only.
void Arm();
CRecord Disarm();

// Blocks of operator new that are not freed yet.
long LiveBlocks();

}  // namespace qortest

#endif  // QORTEST_INJECTION_H
