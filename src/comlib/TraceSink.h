// An extension of our libqor_ComLib: a program that loads the plug-in can watch its trace lines,
// whatever the configuration says about them. The plug-in does not know of it.
//
// A host's own libqor_ComLib does not have it, so a program looks the operation up at run time:
//
//     auto set = reinterpret_cast<decltype(&QorSetTraceSink)>(dlsym(plugin, "QorSetTraceSink"));
//     if (set != nullptr) {
//         set(&OnLine, &watcher, CTraceUtility::TRACE_DBG_RESULT);
//     }
//
// Compiles alone as C++11 and later.
#ifndef QOR_COMLIB_TRACESINK_H
#define QOR_COMLIB_TRACESINK_H

#include "plugin/ComLib.h"

extern "C" {

// Is called for each line in the thread that traces, before the operation that traced goes on.
// `context` is what was set. `message` is the formatted text of `length` bytes, which ends with a
// zero and is valid during the call only; `module` and `message` may hold any bytes but zeros. Must
// neither trace nor throw.
using QorTraceSink = void (*)(void* context, const char* module,
                              CTraceUtility::TRACE_DBG_LEVEL level, const char* message,
                              unsigned long length);

// From now on the lines of `levels` (a mask of TRACE_DBG_LEVEL) also go to `sink`; a null `sink`
// ends that, and must be set before the sink's code or context goes away. There is one sink; the
// configured one stays as it is. To be called while no thread traces.
QOR_COMLIB_API void QorSetTraceSink(QorTraceSink sink, void* context, unsigned levels);

}  // extern "C"

#endif  // QOR_COMLIB_TRACESINK_H
