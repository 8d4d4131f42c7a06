// The part of a request that is done where the plug-in is loaded.
#ifndef QORCTL_HOST_WORKER_H
#define QORCTL_HOST_WORKER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/Request.h"

namespace qorctl {

// What the plug-in is doing, learned from its trace lines: it has no way to tell its host, but our
// libqor_ComLib lets a program watch the trace. With a host's own common library, nothing is known.
class CTraceReader {
public:
    void Take(std::string_view message);

    // The command that runs; empty before the first one.
    const std::string& Command() const { return m_Command; }
    // How many there were.
    size_t Commands() const { return m_Commands; }
    // "krzcli -pdinfo -nosmart -a1 (controller 2 of 4)". The number of controllers is that of the
    // supported cards in the server, and is left out once it turns out to be too low.
    std::string Text() const;
    const std::optional<std::string>& ToolVersion() const { return m_ToolVersion; }

private:
    std::string m_Command;
    size_t m_Commands = 0;
    std::optional<std::string> m_ToolVersion;
    long long m_Cards = 0;
};

// Loads the plug-in, makes an object, asks it, and writes items and the reply to `fd`; if it
// `listens` to more than failures, also the commands and the tool's version. Throws nothing of the
// plug-in's.
void AnswerRequest(const std::string& pluginPath, const CRequest& request, bool listens, int fd);

}  // namespace qorctl

#endif  // QORCTL_HOST_WORKER_H
