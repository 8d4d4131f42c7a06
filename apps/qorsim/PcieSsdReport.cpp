#include <cstdlib>

#include "Reports.h"

namespace qorsim {

void ReportPcieSsd(const CPcieSsd& ssd, CReport& report) {
    report.Key("Bus", std::strtol(ssd.pci.address.c_str(), nullptr, 16));
    report.Blank();

    report.Title("General Information");
    report.Key("Product Name", ssd.product);
    report.Key("Serial Number", ssd.serial);
    report.Key("Vendor ID", "0x" + ssd.pci.vendor);
    report.Key("Device ID", "0x" + ssd.pci.device);
    report.Key("Firmware Version", ssd.firmware);
    report.Key("Capacity", ssd.size);
    report.Key("Status", ssd.status);
    report.Blank();

    report.Title("Health Information");
    report.Key("Temperature", fmt::format("{}C", ssd.temperature));
    report.Key("Percentage Used", fmt::format("{}%", ssd.lifeUsed));
    report.Key("Data Written", ssd.written);
    report.Blank();
}

}  // namespace qorsim
