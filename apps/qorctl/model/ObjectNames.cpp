#include "model/ObjectNames.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>

namespace qorctl {
namespace {

std::string Counted(size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string PlaceText(const CDrivePlace& place) {
    return NumberText(place.enclosure) + ':' + NumberText(place.slot);
}

void AddPart(std::string& parts, std::string_view separator, const std::string& part) {
    parts += (parts.empty() || part.empty() ? "" : std::string(separator)) + part;
}

// "PD7, serial S123, ST600 558.912GB"
std::string DriveParts(const CDriveIdentity& drive, bool hasPlace, ENameForm form) {
    std::string parts = hasPlace && drive.number ? "PD" + NumberText(drive.number) : "";
    AddPart(parts, ", ", drive.serial ? "serial " + *drive.serial : "");
    std::string kind = form == ENameForm::WHOLE ? drive.product.value_or("") : "";
    if (drive.capacity && form != ENameForm::SHORT) {
        AddPart(kind, " ", drive.capacity->text);
    }
    AddPart(parts, ", ", kind);
    return parts;
}

}  // namespace

std::string NumberText(const CNumber& number) {
    return number ? std::to_string(*number) : "?";
}

CDriveIdentity IdentityOf(const CPhysicalDrive& drive) {
    return {.controller = drive.controller,
            .place = drive.place,
            .number = drive.number,
            .serial = drive.serial,
            .product = drive.product,
            .capacity = drive.capacity};
}

std::string DriveName(const CDriveIdentity& drive, ENameForm form) {
    const bool hasPlace = drive.place.enclosure || drive.place.slot;
    const std::string parts = DriveParts(drive, hasPlace, form);
    return fmt::format("controller {} drive {}{}{}", NumberText(drive.controller),
                       hasPlace ? PlaceText(drive.place) : "PD" + NumberText(drive.number),
                       parts.empty() ? "" : " (" + parts + ')',
                       drive.twin > 1 ? fmt::format(" ({})", drive.twin) : "");
}

std::string ShortDriveName(const CDriveIdentity& drive) {
    const bool hasPlace = drive.place.enclosure || drive.place.slot;
    return (hasPlace ? PlaceText(drive.place) + ' ' : "") + "PD" + NumberText(drive.number);
}

ENameForm LongestForm(const std::function<bool(ENameForm)>& fits) {
    for (const ENameForm form : {ENameForm::WHOLE, ENameForm::WITHOUT_PRODUCT}) {
        if (fits(form)) {
            return form;
        }
    }
    return ENameForm::SHORT;
}

std::string ObjectName(const CController& controller) {
    return "controller " + NumberText(controller.number);
}

std::string ObjectName(const CLogicalDrive& drive) {
    return fmt::format("controller {} logical drive LD{}", NumberText(drive.controller),
                       NumberText(drive.number));
}

std::string ObjectName(const CPhysicalDrive& drive) {
    return DriveName(IdentityOf(drive));
}

std::string ObjectName(const CPcieSsd& ssd) {
    return "PCIe SSD " + NumberText(ssd.bus);
}

std::string BatteryName(const CController& controller) {
    return ObjectName(controller) + " battery";
}

std::string DriveKey(const CPhysicalDrive& drive) {
    return fmt::format("controller {} drive PD{}", NumberText(drive.controller),
                       NumberText(drive.number));
}

CSubject SubjectOf(const CPhysicalDrive& drive) {
    return {.name = ObjectName(drive), .drive = IdentityOf(drive)};
}

std::string ProgressText(const CMeasure& progress) {
    return progress ? ' ' + progress->text : "";
}

std::string DescribeCounts(const CInventory& inventory) {
    return Counted(inventory.controllers.size(), "controller") + ", " +
           Counted(inventory.logicalDrives.size(), "logical drive") + ", " +
           Counted(inventory.physicalDrives.size(), "drive") + ", " +
           Counted(inventory.pcieSsds.size(), "PCIe SSD");
}

}  // namespace qorctl
