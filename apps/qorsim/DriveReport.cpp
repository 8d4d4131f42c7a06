#include "Reports.h"

namespace qorsim {
namespace {

void ReportGeneral(const CDrive& drive, const CToolGeneration& generation, CReport& report) {
    report.Title("General Information");
    report.Key("Raw Capacity", drive.model.size);
    report.Key("Interface Type", drive.model.interfaceType);
    report.Key("Media Type", drive.model.mediaType);
    report.Key("Product ID", drive.model.product);
    report.Key("Serial Number", drive.serial);
    report.Key("Vendor ID", drive.model.vendor);
    report.Key("WWN", drive.wwn);
    report.Key("PD Status", drive.status);
    if (drive.progress) {
        report.Key("Progress", fmt::format("{}%", *drive.progress));
    }
    report.Key("Media Error Count", drive.mediaErrors);
    report.Key("Other Error Count", drive.otherErrors);
    report.Key("Predictive Failure Count", drive.predictiveFailures);
    report.Key("Drive Speed", drive.model.linkSpeed);
    report.Key("Revision Level", drive.model.firmware);
    if (generation.hasCurrentNames && drive.temperature) {
        report.Key("Temperature", fmt::format("{}C", *drive.temperature));
    }
    report.Key("Power Status", drive.power);
    report.Blank();
}

void ReportPlace(const CDrive& drive, const CToolGeneration& generation, CReport& report) {
    if (generation.hasCurrentNames) {
        report.Title("Enclosure Properties Information");
        report.Key("Enclosure ID", drive.enclosure);
    } else {
        report.Title("Slot Information");
        report.Key("Enclosure No.", drive.enclosure);
    }
    report.Key("Slot No.", drive.slot);
    report.Blank();
}

}  // namespace

void ReportDrive(const CDrive& drive, const CToolGeneration& generation, ESmart smart,
                 CReport& report) {
    report.Line(fmt::format("PD{}({})", drive.number, drive.use));
    ReportGeneral(drive, generation, report);
    ReportPlace(drive, generation, report);
    if (smart == ESmart::WITH) {
        ReportSmart(drive, report);
    }
}

}  // namespace qorsim
