// A server as plain HTML: what a page shows without scripts, on paper, and to whoever reads it as
// text.
#ifndef QORCTL_PAGE_PLAINSERVER_H
#define QORCTL_PAGE_PLAINSERVER_H

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "page/ServerReport.h"

namespace qorctl {

// "is-critical" for CRITICAL, and so on: the class of elements that show how well something is.
std::string HealthClass(const std::string& status);

// The sign of a health, without words; see data/page/page.html.
std::string HealthSign(const std::string& status);

// A time of a server, "2026-11-20T10:00:00Z", to the minute; or nothing.
std::string TimeHtml(const std::string& time);

// "1 controller, 3 logical drives, 9 drives, 0 PCIe SSDs"
std::string CountsText(const nlohmann::json& report);

// The messages and findings of a report as entries of a list, the worst first.
std::string ProblemEntries(const nlohmann::json& report);

// Verdict, problems and tables.
std::string PlainServer(const CServerReport& report);

}  // namespace qorctl

#endif  // QORCTL_PAGE_PLAINSERVER_H
