#include <array>
#include <cstdlib>

#include "Reports.h"

namespace qorsim {
namespace {

long Hexadecimal(const std::string& digits) {
    return std::strtol(digits.c_str(), nullptr, 16);
}

// "03:00.0" as "3/0/0"
std::string DecimalAddress(const std::string& address) {
    return fmt::format("{}/{}/{}", Hexadecimal(address.substr(0, 2)),
                       Hexadecimal(address.substr(3, 2)), Hexadecimal(address.substr(6, 1)));
}

void ReportGeneral(const CController& controller, const CToolGeneration& generation,
                   CReport& report) {
    const bool current = generation.hasCurrentNames;
    report.Title("General Information");
    report.Key("Product Name", controller.product);
    report.Key("Serial Number", controller.serial);
    report.Key("PCI Bus/Dev/Func", DecimalAddress(controller.pci.address));
    report.Key("Vendor ID", "0x" + controller.pci.vendor);
    report.Key("Device ID", "0x" + controller.pci.device);
    report.Key(current ? "Subsystem Vendor ID" : "SubVendor ID",
               "0x" + controller.pci.subsystemVendor);
    report.Key(current ? "Subsystem ID" : "SubDevice ID", "0x" + controller.pci.subsystem);
    report.Key("Revision ID", "0x" + controller.pci.revision);
    report.Key("SAS Address", controller.sasAddress);
    report.Key("Memory Size", fmt::format("{}MB", controller.memory));
    report.Key("# of LD", [&] {
        size_t count = 0;
        for (const CRaidGroup& group : controller.groups) {
            count += group.lds.size();
        }
        return count;
    }());
    report.Key("# of PD", controller.drives.size());
    report.Blank();
}

// The package version came with the current names; an old tool does not know it.
void ReportFirmware(const CFirmware& firmware, const CToolGeneration& generation, CReport& report) {
    report.Title("Firmware/BIOS/Driver Information");
    if (generation.hasCurrentNames) {
        report.Key("Firmware Package Version", firmware.package);
    }
    report.Key("Firmware Version", firmware.version);
    report.Key("Firmware Build Time", firmware.buildTime);
    report.Key("BIOS Version", firmware.bios);
    report.Key("Driver Version", firmware.driver);
    report.Blank();
}

void ReportSettings(const CRates& rates, const CToolGeneration& generation, CReport& report) {
    report.Title("Controller Settings Information");
    report.Key("Rebuild Rate", fmt::format("{}%", rates.rebuild));
    report.Key("BGI Rate", fmt::format("{}%", rates.backgroundInitialization));
    report.Key("Consistency Check Rate", fmt::format("{}%", rates.consistencyCheck));
    if (generation.hasCurrentNames) {
        report.Key("Reconstruction Rate", fmt::format("{}%", rates.reconstruction));
    }
    report.Key("Patrol Read Rate", fmt::format("{}%", rates.patrolRead));
    report.Key("Patrol Read Mode", "Auto");
    report.Key("Alarm Control", "Disabled");
    report.Key("Auto Rebuild", "Enabled");
    report.Key("Copyback", "Enabled");
    report.Blank();
}

void ReportPorts(const CController& controller, CReport& report) {
    report.Title("Port Information");
    report.Key("# of Port", controller.ports);
    for (long port = 0; port < controller.ports; ++port) {
        report.Key(fmt::format("Port {}", port), "Connected, 12.0Gb/s");
    }
    report.Blank();
}

void ReportBattery(const std::optional<CBattery>& battery, CReport& report) {
    report.Title("BBU Information");
    if (!battery) {
        report.Key("BBU", "Absent");
        report.Blank();
        return;
    }
    report.Key("BBU", "Present");
    report.Key("BBU Type", battery->type);
    report.Key("BBU Status", battery->status);
    report.Key("Relative State of Charge", fmt::format("{}%", battery->charge));
    report.Key("Temperature", fmt::format("{}C", battery->temperature));
    report.Blank();
}

}  // namespace

void ReportControllerHeader(size_t number, CReport& report) {
    report.Key("RAID Controller", number);
    report.Blank();
}

void ReportController(size_t number, const CController& controller,
                      const CToolGeneration& generation, CReport& report) {
    ReportControllerHeader(number, report);
    ReportGeneral(controller, generation, report);
    ReportFirmware(controller.firmware, generation, report);
    ReportSettings(controller.rates, generation, report);
    ReportPorts(controller, report);
    ReportBattery(controller.battery, report);
}

}  // namespace qorsim
