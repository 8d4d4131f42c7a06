// The plug-in's own view of the trace service: its module name, and the pair of lines that every
// traced operation writes.
#ifndef QOR_BASE_TRACE_H
#define QOR_BASE_TRACE_H

#include "plugin/ComLib.h"

inline constexpr const char* TRACE_MODULE_NAME = "Lib_MngSrv";

// One trace line: QOR_TRACE(FAILURE, "format", arguments...). A macro, so that the compiler checks
// the arguments against the format.
#define QOR_TRACE(level, ...) \
    CTraceUtility::WriteDebug(TRACE_MODULE_NAME, CTraceUtility::TRACE_DBG_##level, __VA_ARGS__)

// Writes "<operation> [START]" now and "<operation> [END]" on every way out of the scope.
class CTraceScope {
public:
    // `operation` is a literal: the qualified name of the operation.
    explicit CTraceScope(const char* operation) : m_Operation(operation) {
        QOR_TRACE(FLOW, "%s [START]", m_Operation);
    }
    // For operations that show the report line they were given.
    CTraceScope(const char* operation, const char* line) : m_Operation(operation) {
        QOR_TRACE(FLOW, "%s [START], %s", m_Operation, line);
    }
    ~CTraceScope() { QOR_TRACE(FLOW, "%s [END]", m_Operation); }
    CTraceScope(const CTraceScope&) = delete;  // one scope, one pair of lines
    CTraceScope& operator=(const CTraceScope&) = delete;

private:
    const char* m_Operation;
};

#endif  // QOR_BASE_TRACE_H
