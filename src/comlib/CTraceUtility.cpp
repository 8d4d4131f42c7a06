#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <new>
#include <optional>

#include "comlib/CTraceLine.h"
#include "comlib/CTraceSettings.h"
#include "comlib/TraceSink.h"
#include "plugin/ComLib.h"

namespace {

using comlib::CTraceLine;
using comlib::CTraceSettings;
using comlib::ETraceSink;

constexpr unsigned NOT_READ = 0x80000000;

// The settings, read at the first line and kept until the library is unloaded. Plain memory without
// a destructor: threads of the host may trace while the process exits. No lock: the child of a host
// that forks while a thread reads them would wait for ever.
constinit std::atomic_flag s_IsBeingKept;
constinit std::atomic<unsigned> s_Levels = NOT_READ;  // the rest is valid once this is
constinit ETraceSink s_Sink = ETraceSink::NONE;
constinit std::array<char, PATH_MAX> s_File = {};

// The program's own sink. Its levels are 0 while there is none.
constinit std::atomic<unsigned> s_OwnLevels = 0;
constinit QorTraceSink s_OwnSink = nullptr;
constinit void* s_OwnContext = nullptr;

// Where lines go.
struct CTarget {
    unsigned levels = 0;
    ETraceSink sink = ETraceSink::NONE;
    const char* file = nullptr;

    bool Takes(CTraceUtility::TRACE_DBG_LEVEL level) const {
        return (levels & static_cast<unsigned>(level)) != 0;
    }
};

CTarget TargetOf(const CTraceSettings& settings) {
    const unsigned levels = settings.m_Sink == ETraceSink::NONE ? 0 : settings.m_Levels;
    return {levels, settings.m_Sink, settings.m_File.c_str()};
}

// By the first thread that has read them. A child that was forked in this moment keeps nothing and
// reads them for every line.
void Keep(const CTarget& target) {
    if (s_IsBeingKept.test_and_set()) {
        return;
    }
    s_Sink = target.sink;
    std::memcpy(s_File.data(), target.file, std::strlen(target.file) + 1);
    s_Levels.store(target.levels, std::memory_order_release);
}

// What is kept, or else what `settings` has read and holds. Without memory the line is dropped, and
// the next one reads them: an exception would end the host where a line is traced while another
// exception passes.
CTarget CurrentTarget(std::optional<CTraceSettings>& settings) {
    const unsigned levels = s_Levels.load(std::memory_order_acquire);
    if (levels != NOT_READ) {
        return {levels, s_Sink, s_File.data()};
    }
    try {
        settings = CTraceSettings::Read();
    } catch (const std::bad_alloc&) {
        return {};
    }
    const CTarget target = TargetOf(*settings);
    Keep(target);
    return target;
}

bool IsForOwnSink(CTraceUtility::TRACE_DBG_LEVEL level) {
    return (s_OwnLevels.load(std::memory_order_acquire) & static_cast<unsigned>(level)) != 0;
}

// The quick answer to the question that every traced operation asks.
bool IsOffForAll(CTraceUtility::TRACE_DBG_LEVEL level) {
    const unsigned levels =
        s_Levels.load(std::memory_order_relaxed) | s_OwnLevels.load(std::memory_order_relaxed);
    return (levels & (NOT_READ | static_cast<unsigned>(level))) == 0;
}

void Write(const CTraceLine& line, const CTarget& target) {
    switch (target.sink) {
        case ETraceSink::SYSLOG:
            line.WriteToSyslog();
            return;
        case ETraceSink::FILE:
            line.WriteToFile(target.file);
            return;
        case ETraceSink::STDERR:
            line.WriteToDescriptor(STDERR_FILENO);
            return;
        case ETraceSink::NONE:
            return;
    }
}

// Not part of WriteDebug(), which is quicker without what this needs on the stack.
__attribute__((noinline, format(printf, 3, 0))) void WriteIfOn(const char* module,
                                                               CTraceUtility::TRACE_DBG_LEVEL level,
                                                               const char* format,
                                                               va_list arguments) {
    const int callerErrno = errno;
    std::optional<CTraceSettings> settings;
    const CTarget target = CurrentTarget(settings);
    const bool isForOwnSink = IsForOwnSink(level);
    if (!target.Takes(level) && !isForOwnSink) {
        return;
    }
    CTraceLine line(module, level);
    errno = callerErrno;
    line.Format(format, arguments);
    if (target.Takes(level)) {
        Write(line, target);
    }
    if (isForOwnSink) {
        s_OwnSink(s_OwnContext, module, level, line.Message().data(), line.Message().size());
    }
}

}  // namespace

void CTraceUtility::WriteDebug(const char* module, TRACE_DBG_LEVEL level, const char* format, ...) {
    if (IsOffForAll(level)) {
        return;
    }
    const int callerErrno = errno;
    va_list arguments;
    va_start(arguments, format);
    WriteIfOn(module, level, format, arguments);
    va_end(arguments);
    errno = callerErrno;
}

void QorSetTraceSink(QorTraceSink sink, void* context, unsigned levels) {
    s_OwnSink = sink;
    s_OwnContext = context;
    s_OwnLevels.store(sink == nullptr ? 0 : levels, std::memory_order_release);
}
