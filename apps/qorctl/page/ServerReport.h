// What a page tells of one server: the JSON document of `qorctl storage`, or why there is none.
#ifndef QORCTL_PAGE_SERVERREPORT_H
#define QORCTL_PAGE_SERVERREPORT_H

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

namespace qorctl {

// The end of a nested value needs memory. NOLINTNEXTLINE(bugprone-exception-escape)
struct CServerReport {
    std::string name;        // of the server
    std::string file;        // that it was read from; empty: asked here
    std::string time;        // "2026-11-20T10:00:00Z"; empty: not known
    std::string problem;     // why there is no report; empty: there is one
    std::string json;        // the document as it was read
    nlohmann::json content;  // the same, read; without a problem: a report as qorctl writes it
};

// Larger files are not read: some 8,000 drives have room.
inline constexpr size_t MAX_REPORT_SIZE = 16UL * 1024 * 1024;

// Deeper documents are not read: readers go down by calling themselves. Ours have six levels.
inline constexpr size_t MAX_REPORT_DEPTH = 32;

// The report that `json` is; one with a problem where it is none.
CServerReport ParseServerReport(const std::string& json);

// The same of a file; the name of the server is the file's without ".json", the time is when it was
// written last. Nothing is waited for: a pipe or a device is a problem.
CServerReport ReadServerReport(const std::string& path);

// The text of a member of a JSON object, a whole number's digits; empty where there is none, or it
// is of another kind.
std::string FieldText(const nlohmann::json& object, const char* name);

}  // namespace qorctl

#endif  // QORCTL_PAGE_SERVERREPORT_H
