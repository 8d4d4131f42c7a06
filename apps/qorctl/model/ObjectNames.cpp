#include "model/ObjectNames.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>

namespace qorctl {
namespace {

std::string Counted(size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace

std::string NumberText(const CNumber& number) {
    return number ? std::to_string(*number) : "?";
}

std::string ObjectName(const CController& controller) {
    return "controller " + NumberText(controller.number);
}

std::string ObjectName(const CLogicalDrive& drive) {
    return fmt::format("controller {} logical drive LD{}", NumberText(drive.controller),
                       NumberText(drive.number));
}

std::string ObjectName(const CPhysicalDrive& drive) {
    return fmt::format("controller {} drive PD{}", NumberText(drive.controller),
                       NumberText(drive.number));
}

std::string ObjectName(const CPcieSsd& ssd) {
    return "PCIe SSD " + NumberText(ssd.bus);
}

std::string DescribeCounts(const CInventory& inventory) {
    return Counted(inventory.controllers.size(), "controller") + ", " +
           Counted(inventory.logicalDrives.size(), "logical drive") + ", " +
           Counted(inventory.physicalDrives.size(), "drive") + ", " +
           Counted(inventory.pcieSsds.size(), "PCIe SSD");
}

}  // namespace qorctl
