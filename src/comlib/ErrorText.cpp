#include "comlib/ErrorText.h"

#include <locale.h>
#include <string.h>

#include <cerrno>

#include "plugin/ComLib.h"

namespace comlib {

namespace {

// For other numbers the C library makes up a text, in memory that it keeps.
bool HasText(int error) {
    constexpr int UNUSED = ELOOP + 1;
    constexpr int UNUSED_TOO = EBADSLT + 1;
    return error >= 0 && error <= EHWPOISON && error != UNUSED && error != UNUSED_TOO;
}

}  // namespace

const char* ErrorText(int error) {
    // strerror() would follow the host's locale. This one is a constant of the C library: asking
    // for it needs no memory, and nothing is to be freed. (strerrordesc_np() came with glibc 2.32.)
    const locale_t english = newlocale(LC_ALL_MASK, "C", nullptr);
    return HasText(error) ? strerror_l(error, english) : "unknown error";
}

void TraceFailure(const char* action, const char* path) {
    CTraceUtility::WriteDebug(MODULE_NAME, CTraceUtility::TRACE_DBG_FAILURE, "cannot %s \"%s\": %s",
                              action, path, ErrorText(errno));
}

}  // namespace comlib
