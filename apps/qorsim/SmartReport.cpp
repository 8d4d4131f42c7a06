#include "Reports.h"

namespace qorsim {
namespace {

std::string Rule(size_t width) {
    return std::string(width, '-');
}

// The name column is 40 characters wide, whatever the names are: names hold blanks, so that its
// width is what separates it from the next column.
void ReportSataTable(const CDrive& drive, CReport& report) {
    report.Line(fmt::format("{:<3} {:<40} {:<7}  {:<5}  {:<15} {}", "ID", "Attribute", "Current",
                            "Worst", "Raw Data", "Threshold"));
    report.Line(
        fmt::format("{} {} {}  {}  {} {}", Rule(3), Rule(40), Rule(7), Rule(5), Rule(15), Rule(9)));
    for (const CSmartRow& row : drive.model.smart) {
        report.Line(fmt::format("{:<3} {:<40} {:<7}  {:<5}  {:<15} {}", row.id, row.name,
                                row.current, row.worst, row.value, row.threshold));
    }
    report.Blank();
}

// Cells stand under their column's name. A "[Head" line labels the rows below it.
void ReportSasTable(const CDrive& drive, CReport& report) {
    report.Line(fmt::format("{:<40} {:<15} {}", "Attribute", "Value", "Threshold"));
    report.Line(fmt::format("{} {} {}", Rule(40), Rule(15), Rule(9)));
    std::string head;
    for (const CSmartRow& row : drive.model.smart) {
        if (row.head != head) {
            head = row.head;
            report.Line(head);
        }
        report.Line(fmt::format("{:<40} {:<15} {}", row.name, row.value, row.threshold));
    }
    report.Blank();
}

}  // namespace

void ReportSmart(const CDrive& drive, CReport& report) {
    report.Title("SMART Information");
    if (drive.temperature) {
        report.Key("Temperature", fmt::format("{}C", *drive.temperature));
    }
    if (drive.powerOnHours) {
        report.Key("Power-On Time", fmt::format("{}h", *drive.powerOnHours));
    }
    report.Key("Predictive Failure", drive.predictiveFailures == 0 ? "No" : "Yes");
    report.Blank();
    if (drive.model.smart.empty()) {
        return;
    }
    if (drive.model.interfaceType == "SATA") {
        ReportSataTable(drive, report);
    } else {
        ReportSasTable(drive, report);
    }
}

}  // namespace qorsim
