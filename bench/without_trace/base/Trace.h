// Stands in for the plug-in's own header in a build without any trace call.
#ifndef QOR_BASE_TRACE_H
#define QOR_BASE_TRACE_H

#include "plugin/ComLib.h"

#define QOR_TRACE(level, ...) QorBenchNoTrace(__VA_ARGS__)

template <class... Arguments>
inline void QorBenchNoTrace(const Arguments&...) {}

class CTraceScope {
public:
    explicit CTraceScope(const char*) {}
    CTraceScope(const char*, const char*) {}
    ~CTraceScope() {}
    CTraceScope(const CTraceScope&) = delete;  // as the real one
    CTraceScope& operator=(const CTraceScope&) = delete;
};

#endif  // QOR_BASE_TRACE_H
