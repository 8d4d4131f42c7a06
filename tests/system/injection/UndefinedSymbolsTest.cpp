// What the two libraries ask of the C library: every function either fails in these tests or is
// named here with the reason why it does not. A new one fails this test until that is decided.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "Injection.h"
#include "Process.h"
#include "Request.h"

namespace {

using Names = std::set<std::string>;

constexpr const char* MEMORY_ONLY = "reads and writes the caller's memory";
constexpr const char* OWN_PROCESS = "asks for what every process has";
constexpr const char* VALID_ARGUMENTS = "fails for invalid arguments only, and gets constants";
constexpr const char* RELEASES = "gives back; nobody could act on its failure";

const std::map<std::string, const char*>& NeverFailing() {
    static const std::map<std::string, const char*> functions = {
        {"bcmp", MEMORY_ONLY},
        {"memchr", MEMORY_ONLY},
        {"memcmp", MEMORY_ONLY},
        {"memcpy", MEMORY_ONLY},
        {"memmove", MEMORY_ONLY},
        {"memset", MEMORY_ONLY},
        {"strlen", MEMORY_ONLY},
        {"strspn", MEMORY_ONLY},
        {"strerror_l", "gives constants: it is not asked for numbers without a text"},
        {"newlocale", "gives the constant locale \"C\""},
        {"snprintf", "formats numbers and short texts of bytes into room for them"},
        {"vsnprintf", "fails for wide characters and beyond 2 GiB, and gets neither"},
        {"__errno_location", OWN_PROCESS},
        {"__environ", OWN_PROCESS},
        {"environ", OWN_PROCESS},
        {"getenv", OWN_PROCESS},
        {"secure_getenv", OWN_PROCESS},
        {"geteuid", OWN_PROCESS},
        {"getpid", OWN_PROCESS},
        {"clock_gettime", VALID_ARGUMENTS},
        {"pthread_mutex_lock", VALID_ARGUMENTS},
        {"pthread_mutex_unlock", VALID_ARGUMENTS},
        {"sigaddset", VALID_ARGUMENTS},
        {"sigemptyset", VALID_ARGUMENTS},
        {"sigfillset", VALID_ARGUMENTS},
        {"sigismember", VALID_ARGUMENTS},
        {"sigpending", VALID_ARGUMENTS},
        {"__sigaction", VALID_ARGUMENTS},
        {"sigprocmask", VALID_ARGUMENTS},
        {"pthread_setcancelstate", VALID_ARGUMENTS},
        {"setpgid", "fails for a session leader and after an exec, and the new child is neither"},
        {"pipe", "called where there is no null device; two descriptors are free then"},
        {"__cxa_atexit", "asks for memory while the library is loaded"},
        {"__register_atfork", "asks for memory while the library is loaded"},
        {"free", RELEASES},
        {"closedir", RELEASES},
        {"munmap", RELEASES},
        {"syslog", "has no result; it is replaced, see Injection.h"},
        {"__stack_chk_fail", "ends a process whose stack is damaged"},
#if !QORTEST_MALLOC_FAILS
        {"malloc", "belongs to the address sanitizer"},
#endif
    };
    return functions;
}

// Called by the C++ library for the libraries' file streams, some under the name for files beyond
// 2 GiB, if it was built so; `read` and `close` they call as well.
const Names& FunctionsOfFileStreams() {
    static const Names functions = {"fopen", "fclose", "lseek"};
    return functions;
}

// Our libraries make the system calls of these themselves, with `syscall`.
const Names& FunctionsMadeAsSystemCalls() {
    static const Names functions = {"stat", "lstat", "fstat"};
    return functions;
}

// What a name with run-time checks stands for: "__snprintf_chk".
std::string WithoutChecks(const std::string& name) {
    const bool isChecked = name.starts_with("__") && name.ends_with("_chk");
    return isChecked ? name.substr(2, name.size() - 6) : name;
}

// The names that the shared library leaves to others and cannot do without. `version` is how the
// name's version begins.
Names Undefined(const std::string& library, const std::string& version) {
    const qortest::CEnd end =
        qortest::RunProgram({"nm", "-D", "--undefined-only", "--with-symbol-versions", library});
    EXPECT_EQ(end.status, 0) << end.err;
    Names names;
    std::istringstream lines(end.out);
    for (std::string type, name; lines >> type >> name;) {
        const size_t at = name.find('@');
        if (type == "U" && at != std::string::npos && name.substr(at + 1).starts_with(version)) {
            names.insert(WithoutChecks(name.substr(0, at)));
        }
    }
    EXPECT_FALSE(names.empty()) << library;
    return names;
}

std::string PathOfCxxLibrary() {
    void* const library = dlopen("libstdc++.so.6", RTLD_LAZY | RTLD_NOLOAD);
    const link_map* entry = nullptr;
    EXPECT_EQ(dlinfo(library, RTLD_DI_LINKMAP, &entry), 0) << dlerror();
    const std::string path = entry->l_name;
    dlclose(library);
    return path;
}

Names UndefinedInOurs(const std::string& version) {
    Names names = Undefined(QOR_PLUGIN_PATH, version);
    names.merge(Undefined(QOR_COMLIB_PATH, version));
    return names;
}

Names Failing() {
    Names names;
    for (const qortest::CFailingFunction& function : qortest::FailingFunctions()) {
        names.insert(function.name);
    }
    return names;
}

TEST(UndefinedSymbols, AreMadeToFailOrCannot) {
    const Names failing = Failing();
    for (const std::string& name : UndefinedInOurs("GLIBC_")) {
        EXPECT_NE(failing.contains(name), NeverFailing().contains(name))
            << name << ": make it fail in Injection.cpp, or say here why it does not";
    }
}

TEST(UndefinedSymbols, HoldEveryFunctionThatIsMadeToFail) {
    const Names ours = UndefinedInOurs("GLIBC_");
    const Names ofStreams = Undefined(PathOfCxxLibrary(), "GLIBC_");
    for (const std::string& name : Failing()) {
        if (FunctionsMadeAsSystemCalls().contains(name)) {
            EXPECT_TRUE(ours.contains("syscall") && !ours.contains(name)) << name;
            continue;
        }
        const bool isCalled = FunctionsOfFileStreams().contains(name)
                                  ? ofStreams.contains(name) || ofStreams.contains(name + "64")
                                  : ours.contains(name);
        EXPECT_TRUE(isCalled) << name;
    }
}

// The others end in this one: the C++ library sees to that.
TEST(UndefinedSymbols, AskForMemoryInTheWayThatIsMadeToFail) {
    const Names ways = {"_Znwm", "_Znam", "_ZnwmRKSt9nothrow_t", "_ZnamRKSt9nothrow_t"};
    for (const std::string& name : UndefinedInOurs("")) {
        EXPECT_TRUE(!name.starts_with("_Zn") || ways.contains(name)) << name;
    }
}

TEST(FailingFunctions, NameARequestThatIsTriedWithThem) {
    for (const qortest::CFailingFunction& function : qortest::FailingFunctions()) {
        const auto begin = qortest::Requests().begin();
        const auto end = begin + static_cast<long>(qortest::RequestsWithSystemCalls());
        EXPECT_TRUE(std::any_of(begin, end, [&](const qortest::CRequest& request) {
            return std::string(request.name) == function.request;
        })) << function.name;
        EXPECT_FALSE(function.errors.empty()) << function.name;
    }
}

}  // namespace
