// One command of the RAID tool, run through the plug-in's pass-through.
#ifndef QORCTL_HOST_TOOLRUN_H
#define QORCTL_HOST_TOOLRUN_H

#include <string>

#include "host/Request.h"

namespace qorctl {

// Results of the pass-through.
enum class EToolResult : unsigned int {
    DONE = 0,
    TOOL_ERROR = 1,  // the tool's status, or its first line, says so
    NOT_RUN = 2,     // it could not be run, or was killed
    NOT_INSTALLED = 3,
    TIME_OUT = 4,  // it did not end within 150 seconds, or the caller's limit
};

struct CToolRun {
    std::string problem;  // not empty: the rest means nothing
    EToolResult result = EToolResult::NOT_RUN;
    unsigned long status = 0;  // the tool's exit status; 255 when no run completed
    std::string output;        // its standard output and standard error, in order
};

// Runs `command` ("krzcli -v"), which the plug-in hands to a shell. The output goes to a file that
// has no name in any directory, so that it vanishes however this program ends. More than 64 MiB are
// a problem. See Ask() for signals.
CToolRun RunTool(const CPluginChoice& plugin, const std::string& command);

// A result in words, without the command.
std::string ExplainToolRun(const CToolRun& run);

// The version in the output of "krzcli -v", as the plug-in reads it; empty also where the plug-in
// throws.
std::string ProductVersion(const std::string& output);

}  // namespace qorctl

#endif  // QORCTL_HOST_TOOLRUN_H
