#include "TraceProperties.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <string>

#include "Fuzz.h"
#include "MemoryFiles.h"
#include "comlib/CTraceLine.h"
#include "comlib/TraceSink.h"

namespace qorfuzz {
namespace {

constexpr unsigned ALL_LEVELS = 0x7FFFFFFF;

bool IsControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == 0x7F;
}

__attribute__((format(printf, 3, 4))) void WriteLine(const char* module,
                                                     CTraceUtility::TRACE_DBG_LEVEL level,
                                                     const char* format, ...) {
    comlib::CTraceLine line(module, level);
    va_list arguments;
    va_start(arguments, format);
    line.Format(format, arguments);
    va_end(arguments);
    line.WriteToDescriptor(MemoryDescriptor());
}

void OnLine(void*, const char* module, CTraceUtility::TRACE_DBG_LEVEL level, const char* message,
            unsigned long length) {
    Demand(std::strlen(message) == length, "a trace message ends at its zero", message);
    WriteLine(module, level, "%s", message);
    const std::string line = TakeWritten();
    const auto control = std::find_if(line.begin(), line.end(), IsControl);
    Demand(control != line.end() && *control == '\n' && control + 1 == line.end(),
           "a trace line is one line of visible characters", line);
}

}  // namespace

void LookAtTrace(bool look) {
    QorSetTraceSink(look ? OnLine : nullptr, nullptr, ALL_LEVELS);
}

}  // namespace qorfuzz
