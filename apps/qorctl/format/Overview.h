// The state of a server on a screen: the verdict, what is wrong and what to do about it, then a
// line for each controller, RAID group, PCIe SSD and for whatever has a problem.
//
//     CRITICAL: 1 controller, 2 logical drives, 5 drives, 0 PCIe SSDs
//
//     Controller 0 drive 252:3 (PD3, serial S123, ST600 558.912GB) is FAILED: it is out of service;
//       replace it.
//
//         NAME           STATE     DETAILS
//     !!  controller 0   CRITICAL  TRC 3108-8i, 5 drives, battery Normal
//           RG0 RAID 1   Optimal   LD0 System 278.875GB, 2 drives
//     !!    RG1 RAID 5   Degraded  LD1 Data 1.088TB, 3 drives
//     !!      252:3 PD3  FAILED    serial S123, ST600 558.912GB
//
// What is healthy takes a screen of 24 lines at most, whatever the server's size: where there is
// more of it, groups and then controllers are counted in a line.
#ifndef QORCTL_FORMAT_OVERVIEW_H
#define QORCTL_FORMAT_OVERVIEW_H

#include <string>

#include "health/Verdict.h"
#include "host/Answer.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// The whole text, every line ended.
std::string FormatOverview(const CAnswer& answer, const CVerdict& verdict, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_OVERVIEW_H
