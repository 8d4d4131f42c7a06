// A RAID tool that answers by its arguments, as often as it is asked.
#ifndef QORTEST_REPEATINGTOOL_H
#define QORTEST_REPEATINGTOOL_H

namespace qortest {

// Prints the file of its arguments' name in "/opt/tarmica/reports", which holds the reports of a
// small controller, of its SATA drive 252:5 and of two PCIe SSDs.
void WriteRepeatingTool();

}  // namespace qortest

#endif  // QORTEST_REPEATINGTOOL_H
