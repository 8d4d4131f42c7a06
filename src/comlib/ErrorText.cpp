#include "comlib/ErrorText.h"

#include <cerrno>
#include <cstring>

#include "plugin/ComLib.h"

namespace comlib {

const char* ErrorText(int error) {
    // strerror() would follow the host's locale.
    const char* text = strerrordesc_np(error);
    return text != nullptr ? text : "unknown error";
}

void TraceFailure(const char* action, const char* path) {
    CTraceUtility::WriteDebug(MODULE_NAME, CTraceUtility::TRACE_DBG_FAILURE, "cannot %s \"%s\": %s",
                              action, path, ErrorText(errno));
}

}  // namespace comlib
