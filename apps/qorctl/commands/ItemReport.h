// A request for items and its answer in the form that was asked for: what `raid`, `storage` and
// `drive` have in common.
//
// Thread rule: one thread at a time; signal dispositions are changed while a request runs.
#ifndef QORCTL_COMMANDS_ITEMREPORT_H
#define QORCTL_COMMANDS_ITEMREPORT_H

#include <optional>
#include <string>

#include "host/PluginRequest.h"

namespace qorctl {

enum class EItemFormat {
    TREE,   // every item, for people
    TABLE,  // a line a device, for people
    JSON,   // docs/formats/qorctl-json.md
    CSV,    // see CsvReport.h
    XML,    // the plug-in's own document
};

// Of "tree", "table", "json", "csv" or "xml"; nothing for another text.
std::optional<EItemFormat> ReadItemFormat(const std::string& name);

struct CItemReportOptions {
    std::string plugin;  // empty: where CPluginLibrary looks
    EItemFormat format = EItemFormat::TREE;
    std::string outputPath;  // empty or "-": standard output
};

struct CItemReportSubject {
    std::string command;  // the sub-command's name
    CItemRequest request;
    std::optional<long long> controller;  // that the request names
};

// Loads the plug-in, asks, and writes the report to the output; everything else (codes in words,
// failures, progress on a terminal) goes to standard error. JSON is written whatever happens, the
// other forms only after success; with nothing to report they are empty (CSV: its header line).
// An interrupted request ends the process; see Interrupt.h.
// Returns the exit status: 0 success, also with nothing to report; 1 the request failed, the
// plug-in could not be loaded or threw an exception, or the output could not be written.
int RunItemReport(const CItemReportOptions& options, const CItemReportSubject& subject);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_ITEMREPORT_H
