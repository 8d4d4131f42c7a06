// What the objects of an inventory are called in texts for people and programs.
#ifndef QORCTL_MODEL_OBJECTNAMES_H
#define QORCTL_MODEL_OBJECTNAMES_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "model/Inventory.h"

namespace qorctl {

// "?" for a number that the tool did not say.
std::string NumberText(const CNumber& number);

// Which physical drive a text speaks of: where somebody finds it, and what is printed on it.
struct CDriveIdentity {
    CNumber controller = std::nullopt;
    CDrivePlace place = {};
    CNumber number = std::nullopt;
    CText serial = std::nullopt;
    CText product = std::nullopt;
    CMeasure capacity = std::nullopt;  // bytes
    size_t twin = 1;                   // 2: the second one of the same controller and number
};

CDriveIdentity IdentityOf(const CPhysicalDrive& drive);

// How much of a drive's name there is room for.
enum class ENameForm { WHOLE, WITHOUT_PRODUCT, SHORT };

// "controller 0 drive 252:3 (PD7, serial S123, ST600 558.912GB)"; without the product; SHORT:
// without the size too. What the tool did not say is left out, "controller 0 drive PD7 (ST600)".
std::string DriveName(const CDriveIdentity& drive, ENameForm form = ENameForm::WHOLE);

// "252:3 PD7", beside a text that names the controller.
std::string ShortDriveName(const CDriveIdentity& drive);

// The first of the forms, the longest one first, that `fits`; SHORT when none does.
ENameForm LongestForm(const std::function<bool(ENameForm)>& fits);

// "controller 0", "controller 0 logical drive LD1", "PCIe SSD 177"; of a physical drive DriveName()
std::string ObjectName(const CController& controller);
std::string ObjectName(const CLogicalDrive& drive);
std::string ObjectName(const CPhysicalDrive& drive);
std::string ObjectName(const CPcieSsd& ssd);

// "controller 0 battery"
std::string BatteryName(const CController& controller);

// What a drive is known by from one report to the next, "controller 0 drive PD3"; state files hold
// it.
std::string DriveKey(const CPhysicalDrive& drive);

// What a text is about: its name, and of a physical drive what tells it from others.
struct CSubject {
    std::string name;
    std::optional<CDriveIdentity> drive = std::nullopt;

    std::string Name(ENameForm form) const { return drive ? DriveName(*drive, form) : name; }
};

CSubject SubjectOf(const CPhysicalDrive& drive);
template <typename DEVICE>
CSubject SubjectOf(const DEVICE& device) {
    return {.name = ObjectName(device)};
}

// " 42%" behind the state of a drive that is being rebuilt, copied or initialised; or nothing.
std::string ProgressText(const CMeasure& progress);

// "1 controller, 3 logical drives, 9 drives, 0 PCIe SSDs"
std::string DescribeCounts(const CInventory& inventory);

}  // namespace qorctl

#endif  // QORCTL_MODEL_OBJECTNAMES_H
