// Something to tell beside the report: what happened, how bad it is, and what can be done.
#ifndef QORCTL_HOST_MESSAGE_H
#define QORCTL_HOST_MESSAGE_H

#include <string>
#include <string_view>
#include <vector>

namespace qorctl {

enum class ESeverity { INFO, WARNING, ERROR };

// "info", "warning", "error".
constexpr std::string_view SeverityName(ESeverity severity) {
    switch (severity) {
        case ESeverity::INFO:
            return "info";
        case ESeverity::WARNING:
            return "warning";
        case ESeverity::ERROR:
            return "error";
    }
    return "";
}

struct CMessage {
    ESeverity severity = ESeverity::INFO;
    std::string code;    // a stable word for programs, "error-01"
    std::string text;    // of one or more lines, may hold bytes of the plug-in
    std::string remedy;  // what can be done, of one or more lines; may be empty
};

using CMessages = std::vector<CMessage>;

}  // namespace qorctl

#endif  // QORCTL_HOST_MESSAGE_H
