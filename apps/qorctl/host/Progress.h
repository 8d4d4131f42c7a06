// What the plug-in is doing, learned from its trace lines while a request runs, and shown on
// standard error if that is a terminal:
//
//     qorctl: 12 s, krzcli -pdinfo -nosmart -a1 (controller 2 of 4)
//
// The plug-in has no way to tell its host; our libqor_ComLib lets a program watch the trace. A
// host's own common library does not: then there is no progress and no version, nothing else
// changes.
//
// Thread rule: one object at a time, made and ended by the thread that asks the plug-in. The line
// is drawn by a thread of its own, which blocks all signals.
#ifndef QORCTL_HOST_PROGRESS_H
#define QORCTL_HOST_PROGRESS_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/PluginLibrary.h"

namespace qorctl {

// What trace lines tell.
class CTraceReader {
public:
    void Take(std::string_view message);

    // The command that runs; empty before the first one.
    const std::string& Command() const { return m_Command; }
    // "krzcli -pdinfo -nosmart -a1 (controller 2 of 4)". The number of controllers is that of the
    // supported cards in the server, and is left out once it turns out to be too low.
    std::string Text() const;
    const std::optional<std::string>& ToolVersion() const { return m_ToolVersion; }

private:
    std::string m_Command;
    std::optional<std::string> m_ToolVersion;
    long long m_Cards = 0;
};

class CProgress {
public:
    // Watches the trace of the plug-in `library`, which must outlive the object.
    explicit CProgress(const CPluginLibrary& library);
    // Clears the line.
    ~CProgress();
    CProgress(const CProgress&) = delete;  // the trace knows its address
    CProgress& operator=(const CProgress&) = delete;

    // The RAID tool's version, once the plug-in has told it.
    std::optional<std::string> ToolVersion() const;

    // Clears the line of the object there is; safe in a signal handler.
    static void ClearLineInSignalHandler();

private:
    class CState;

    std::unique_ptr<CState> m_State;
};

}  // namespace qorctl

#endif  // QORCTL_HOST_PROGRESS_H
