#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <mutex>
#include <new>

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
// a destructor: threads of the host may trace while the process exits.
constinit std::mutex s_ReadMutex;
constinit std::atomic<unsigned> s_Levels = NOT_READ;  // the rest is valid once this is
constinit ETraceSink s_Sink = ETraceSink::NONE;
constinit std::array<char, PATH_MAX> s_File = {};

// The program's own sink. Its levels are 0 while there is none.
constinit std::atomic<unsigned> s_OwnLevels = 0;
constinit QorTraceSink s_OwnSink = nullptr;
constinit void* s_OwnContext = nullptr;

void KeepSettings() {
    const CTraceSettings settings = CTraceSettings::Read();
    s_Sink = settings.m_Sink;
    std::memcpy(s_File.data(), settings.m_File.c_str(), settings.m_File.size() + 1);
    const unsigned levels = settings.m_Sink == ETraceSink::NONE ? 0 : settings.m_Levels;
    s_Levels.store(levels, std::memory_order_release);
}

// Without memory the line is dropped, and the next one reads the settings. An exception would end
// the host where a line is traced while another exception passes.
unsigned ReadSettings() {
    const std::lock_guard<std::mutex> lock(s_ReadMutex);
    if (s_Levels.load(std::memory_order_relaxed) == NOT_READ) {
        try {
            KeepSettings();
        } catch (const std::bad_alloc&) {
            return 0;
        }
    }
    return s_Levels.load(std::memory_order_relaxed);
}

bool IsOn(CTraceUtility::TRACE_DBG_LEVEL level) {
    unsigned levels = s_Levels.load(std::memory_order_acquire);
    if (levels == NOT_READ) {
        levels = ReadSettings();
    }
    return (levels & static_cast<unsigned>(level)) != 0;
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

void Write(const CTraceLine& line) {
    switch (s_Sink) {
        case ETraceSink::SYSLOG:
            line.WriteToSyslog();
            return;
        case ETraceSink::FILE:
            line.WriteToFile(s_File.data());
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
    const bool isOn = IsOn(level);
    const bool isForOwnSink = IsForOwnSink(level);
    if (!isOn && !isForOwnSink) {
        return;
    }
    CTraceLine line(module, level);
    errno = callerErrno;
    line.Format(format, arguments);
    if (isOn) {
        Write(line);
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
