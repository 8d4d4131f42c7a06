// Failures in words.
#ifndef QOR_COMLIB_ERRORTEXT_H
#define QOR_COMLIB_ERRORTEXT_H

namespace comlib {

// The module name of the library's own trace lines.
inline constexpr const char* MODULE_NAME = "ComLib";

// What the error number means, in English whatever the host's locale; never null. The text is a
// constant. Any thread.
const char* ErrorText(int error);

// Traces `cannot <action> "<path>": <reason of errno>` as a failure of ComLib. errno stays.
void TraceFailure(const char* action, const char* path);

}  // namespace comlib

#endif  // QOR_COMLIB_ERRORTEXT_H
