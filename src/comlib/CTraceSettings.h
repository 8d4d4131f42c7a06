// Where trace lines go and which of them: read from the configuration and QOR_TRACE.
#ifndef QOR_COMLIB_CTRACESETTINGS_H
#define QOR_COMLIB_CTRACESETTINGS_H

#include <optional>
#include <string>
#include <string_view>

#include "comlib/Configuration.h"

namespace comlib {

enum class ETraceSink { SYSLOG, FILE, STDERR, NONE };

// A plain value; a thread uses its own.
//
// Nothing here fails: what cannot be understood falls back to the default of its key, and a
// QOR_TRACE that cannot be understood is ignored as a whole.
struct CTraceSettings {
    static constexpr unsigned DEFAULT_LEVELS = 3;  // results and failures

    ETraceSink m_Sink = ETraceSink::SYSLOG;
    unsigned m_Levels = DEFAULT_LEVELS;  // below 2^31
    std::string m_File = DEFAULT_TRACE_FILE;

    bool operator==(const CTraceSettings&) const = default;

    // Takes over the values of the [Trace] section; a missing one changes nothing.
    void ApplyIni(const std::optional<std::string>& sink, const std::optional<std::string>& levels,
                  const std::optional<std::string>& file);

    // Takes over the text of QOR_TRACE:
    //
    //   text   = sink [ ":" levels ]  |  "file:" path [ ":" levels ]
    //   sink   = "syslog" | "file" | "stderr" | "none"      without regard to case
    //   levels = a decimal bit mask below 2^31
    //   path   = an absolute path; it may hold colons, what follows the last one is no part of it
    //            if that is a number
    //
    // A part that is left out keeps its value.
    void ApplyEnvironment(std::string_view text);

    // The settings of this process: defaults, overridden by the configuration file, overridden by
    // QOR_TRACE unless the program runs with more rights than its caller's (set-user-id).
    static CTraceSettings Read();
};

}  // namespace comlib

#endif  // QOR_COMLIB_CTRACESETTINGS_H
