#include <map>

#include "Reports.h"

namespace qorsim {
namespace {

std::string LdLine(const CLogicalDrive& ld) {
    return fmt::format("LD{} ({}, {}, {})", ld.number, ld.name, ld.capacity, ld.state);
}

// A controller's devices by their numbers: groups name each as often as they like.
struct CNumbered {
    explicit CNumbered(const CController& controller);

    std::map<long, const CDrive*> drives;
    std::map<long, const CLogicalDrive*> lds;
};

CNumbered::CNumbered(const CController& controller) {
    for (const CDrive& drive : controller.drives) {
        drives.emplace(drive.number, &drive);
    }
    for (const CRaidGroup& group : controller.groups) {
        for (const CLogicalDrive& ld : group.lds) {
            lds.emplace(ld.number, &ld);
        }
    }
}

// A cache LD has neither a stripe size nor an access policy; the LDs that it speeds up close its
// section.
void ReportCacheLdGeneral(const CNumbered& numbered, const CRaidGroup& group,
                          const CLogicalDrive& ld, CReport& report) {
    report.Title("General Information");
    report.Key("LD Type", "CacheCade");
    report.Key("# of PD", group.drives.size());
    report.Line("Associated CacheCade LD");
    for (const long number : ld.cachedLds) {
        report.Line(LdLine(*numbered.lds.at(number)));
    }
    report.Blank();
}

void ReportLdGeneral(const CRaidGroup& group, const CLogicalDrive& ld,
                     const CToolGeneration& generation, CReport& report) {
    report.Title("General Information");
    report.Key("LD Type", "RAID");
    report.Key("Stripe Size", ld.stripeSize);
    report.Key("# of PD", group.drives.size());
    if (!generation.hasCurrentNames) {
        report.Key("Access Policy", ld.accessPolicy);
    }
    report.Blank();
}

void ReportLdSettings(const CLogicalDrive& ld, const CToolGeneration& generation, CReport& report) {
    report.Title("LD Settings Information");
    if (generation.hasCurrentNames && ld.cachedLds.empty()) {
        report.Key("Default Access Policy", ld.accessPolicy);
    }
    report.Key("Default Read Policy", ld.readPolicy);
    report.Key("Default Write Policy", ld.writePolicy);
    report.Key("Disk Cache Policy", "Disabled");
    report.Blank();
}

void ReportLd(const CNumbered& numbered, const CRaidGroup& group, const CLogicalDrive& ld,
              const CToolGeneration& generation, CReport& report) {
    report.Line(">" + LdLine(ld));
    if (ld.cachedLds.empty()) {
        ReportLdGeneral(group, ld, generation, report);
    } else {
        ReportCacheLdGeneral(numbered, group, ld, report);
    }
    ReportLdSettings(ld, generation, report);
}

void ReportMember(const CDrive& drive, CReport& report) {
    report.Line(fmt::format(">>PD{} ({}, {}, {})", drive.number, drive.model.product,
                            drive.model.size, drive.status));
    report.Key("Enclosure No.", drive.enclosure);
    report.Key("Slot No.", drive.slot);
    report.Blank();
}

void ReportGroup(const CNumbered& numbered, const CRaidGroup& group,
                 const CToolGeneration& generation, CReport& report) {
    report.Line(group.name);
    report.Key("RG No.", group.name);
    report.Key("RAID Level", group.level);
    report.Key("Total Size", group.size);
    report.Key("# of LD", group.lds.size());
    report.Blank();
    for (const CLogicalDrive& ld : group.lds) {
        ReportLd(numbered, group, ld, generation, report);
    }
    for (const long number : group.drives) {
        ReportMember(*numbered.drives.at(number), report);
    }
}

}  // namespace

void ReportGroups(size_t number, const CController& controller, const CToolGeneration& generation,
                  CReport& report) {
    ReportControllerHeader(number, report);
    const CNumbered numbered(controller);
    for (const CRaidGroup& group : controller.groups) {
        ReportGroup(numbered, group, generation, report);
    }
}

}  // namespace qorsim
