// What the headers of newer C++ libraries leave to the libraries beside them, which may be as old
// as glibc 2.28 and GCC 8's: compiled into the shared library that this file is linked into, and
// not exported. tests/abi/check-floor finds what is missing here.
#include <string>

#if defined(_GLIBCXX_ASSERTIONS) && _GLIBCXX_RELEASE >= 12

// What a check of the C++ library's that fails calls, since GCC 12. The process ends where it
// stands, without a handler of its host; a core dump shows the check. The name is that library's,
// so it is reserved and in its name space.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl58-cpp)
void std::__glibcxx_assert_fail(const char*, int, const char*, const char*) noexcept {
    __builtin_trap();
}

#endif

#if _GLIBCXX_USE_CXX11_ABI

#if _GLIBCXX_RELEASE >= 13
template void std::basic_string<char>::_M_replace_cold(char*, size_type, const char*, size_type,
                                                       size_type);
#endif

#elif __has_include(<sys/single_threaded.h>)

#include <sys/single_threaded.h>

// Tells the reference counts of strings to do without locks where it is not 0. glibc 2.32 gave it
// the reserved name, and sets its own.
char __libc_single_threaded = 0;  // NOLINT(bugprone-reserved-identifier)

#endif
