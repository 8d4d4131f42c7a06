// The RAID tool's reports. Each function appends the part of one device to the report.
//
// A report's grammar: title lines "### title ###", key/value lines "key : value", header lines of
// groups, drives and LDs. A blank line closes every section.
#ifndef QORSIM_REPORTS_H
#define QORSIM_REPORTS_H

#include "Host.h"
#include "Report.h"
#include "ToolGeneration.h"

namespace qorsim {

enum class ESmart { WITHOUT, WITH };

void ReportVersion(const CHost& host, CReport& report);
void ReportController(size_t number, const CController& controller,
                      const CToolGeneration& generation, CReport& report);
void ReportGroups(size_t number, const CController& controller, const CToolGeneration& generation,
                  CReport& report);
void ReportDrive(const CDrive& drive, const CToolGeneration& generation, ESmart smart,
                 CReport& report);
void ReportSmart(const CDrive& drive, CReport& report);
void ReportPcieSsd(const CPcieSsd& ssd, CReport& report);

// The line that opens a controller's part of any report.
void ReportControllerHeader(size_t number, CReport& report);

}  // namespace qorsim

#endif  // QORSIM_REPORTS_H
