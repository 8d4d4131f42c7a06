#include "format/Json.h"

#include <fmt/format.h>

#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "format/HealthJson.h"
#include "format/JsonDocument.h"
#include "model/ObjectNames.h"

namespace qorctl {
namespace {

using CObject = CJson::object_t;

// The library copies the names of an object that grows.
CObject ObjectFor(size_t values) {
    CObject object;
    object.reserve(values);
    return object;
}

// More than the values of a device.
constexpr size_t DEVICE_VALUES = 48;

// Names are written once and in order, so that nothing has to be looked up.
void Put(CObject& object, std::string name, CJson value) {
    object.emplace_back(std::move(name), std::move(value));
}

void Put(CObject& object, std::string name, const CText& text) {
    if (text) {
        Put(object, std::move(name), CJson(*text));
    }
}

void Put(CObject& object, std::string name, const CNumber& number) {
    if (number) {
        Put(object, std::move(name), CJson(*number));
    }
}

// The text as it is under `name`, the number under `name` and its unit.
void Put(CObject& object, const char* name, std::string_view unit, const CMeasure& measure) {
    if (measure) {
        Put(object, name, CJson(measure->text));
        Put(object, fmt::format("{}_{}", name, unit), measure->number);
    }
}

// A number without a unit says as much as its text.
void PutCount(CObject& object, const char* name, const CMeasure& measure) {
    if (measure) {
        Put(object, name, measure->number);
    }
}

template <class TRecord, class TMake>
CJson Array(const std::vector<TRecord>& records, TMake make) {
    CJson::array_t array;
    array.reserve(records.size());
    for (const TRecord& record : records) {
        array.push_back(make(record));
    }
    return array;
}

// Names within one object: the second "Port" becomes "Port (2)".
//
// Each number is tried once for each name, and one that is taken belongs to a name that was used:
// linear, whatever the names. Ordered: names with the same hash are easily made.
class CUniqueNames {
public:
    std::string Make(const std::string& name);

private:
    std::map<std::string, size_t> m_Used;  // each with the last number that was tried for it
};

std::string CUniqueNames::Make(const std::string& name) {
    const auto [used, isNew] = m_Used.emplace(ValidUtf8(name), 1);
    if (isNew) {
        return used->first;
    }
    std::string unique;
    do {
        unique = fmt::format("{} ({})", used->first, ++used->second);
    } while (!m_Used.emplace(unique, 1).second);
    return unique;
}

CJson RawValue(const std::optional<std::string>& value) {
    return value ? CJson(*value) : CJson(nullptr);
}

CJson KeysObject(const CEntry& group) {
    CObject object = ObjectFor(group.keys.size());
    CUniqueNames names;
    for (const CKeyValue& key : group.keys) {
        Put(object, names.Make(key.key), RawValue(key.value));
    }
    return object;
}

// A key is a text or null; groups of one name are an array of objects.
CJson SectionObject(const CSection& section) {
    CObject object = ObjectFor(section.entries.size());
    CUniqueNames names;
    std::map<std::string_view, CObject::difference_type> arrays;
    for (const CEntry& entry : section.entries) {
        if (!entry.isGroup) {
            Put(object, names.Make(entry.name), RawValue(entry.value));
            continue;
        }
        const auto [array, isNew] = arrays.emplace(entry.name, std::ssize(object));
        if (isNew) {
            Put(object, names.Make(entry.name), CJson::array());
        }
        std::next(object.begin(), array->second)->second.push_back(KeysObject(entry));
    }
    return object;
}

void PutSections(CObject& object, const CSections& sections) {
    CObject all = ObjectFor(sections.size());
    CUniqueNames names;
    for (const CSection& section : sections) {
        Put(all, names.Make(section.name), SectionObject(section));
    }
    Put(object, "sections", CJson(std::move(all)));
}

CJson MessageObject(const CMessage& message) {
    CObject object;
    Put(object, "severity", CJson(SeverityName(message.severity)));
    Put(object, "code", CJson(message.code));
    Put(object, "text", CJson(message.text));
    if (!message.remedy.empty()) {
        Put(object, "remedy", CJson(message.remedy));
    }
    return object;
}

void PutPci(CObject& object, const CController& controller) {
    if (!controller.pciText) {
        return;
    }
    CObject pci;
    Put(pci, "text", controller.pciText);
    if (controller.pci) {
        Put(pci, "bus", CJson(controller.pci->bus));
        Put(pci, "device", CJson(controller.pci->device));
        Put(pci, "function", CJson(controller.pci->function));
    }
    Put(object, "pci", CJson(std::move(pci)));
}

void PutBattery(CObject& object, const CController& controller) {
    CObject battery;
    Put(battery, "presence", controller.batteryPresence);
    Put(battery, "status", controller.batteryStatus);
    Put(battery, "charge", "percent", controller.batteryCharge);
    Put(battery, "temperature", "celsius", controller.batteryTemperature);
    if (!battery.empty()) {
        Put(object, "battery", CJson(std::move(battery)));
    }
}

CJson ControllerObject(const CController& controller, const CProblemMarks& marks) {
    CObject object = ObjectFor(DEVICE_VALUES);
    Put(object, "health",
        ObjectHealthJson(marks, {ObjectName(controller), BatteryName(controller)}));
    Put(object, "number", controller.number);
    Put(object, "product", controller.product);
    Put(object, "serial", controller.serial);
    PutPci(object, controller);
    Put(object, "vendor_id", controller.vendorId);
    Put(object, "device_id", controller.deviceId);
    Put(object, "subsystem_vendor_id", controller.subsystemVendorId);
    Put(object, "subsystem_id", controller.subsystemId);
    Put(object, "firmware_package", controller.firmwarePackage);
    Put(object, "firmware_version", controller.firmwareVersion);
    Put(object, "bios_version", controller.biosVersion);
    Put(object, "driver_version", controller.driverVersion);
    Put(object, "memory", "bytes", controller.memory);
    PutCount(object, "logical_drive_count", controller.logicalDriveCount);
    PutCount(object, "physical_drive_count", controller.physicalDriveCount);
    PutBattery(object, controller);
    PutSections(object, controller.sections);
    return object;
}

CJson MemberObject(const CGroupMember& member) {
    CObject object;
    Put(object, "drive", member.drive);
    Put(object, "enclosure", member.place.enclosure);
    Put(object, "slot", member.place.slot);
    return object;
}

CJson RaidGroupObject(const CRaidGroup& group) {
    CObject object;
    Put(object, "controller", group.controller);
    Put(object, "name", group.name);
    Put(object, "raid_level", group.raidLevel);
    Put(object, "size", "bytes", group.size);
    Put(object, "logical_drives", CJson(group.logicalDrives));
    Put(object, "members", Array(group.members, MemberObject));
    PutSections(object, group.sections);
    return object;
}

CJson LinkObject(const CLinkedDrive& drive) {
    CObject object;
    Put(object, "number", drive.number);
    Put(object, "name", drive.name);
    Put(object, "state", drive.state);
    Put(object, "capacity", "bytes", drive.capacity);
    return object;
}

CJson LogicalDriveObject(const CLogicalDrive& drive, const CProblemMarks& marks) {
    CObject object = ObjectFor(DEVICE_VALUES);
    Put(object, "health", ObjectHealthJson(marks, {ObjectName(drive)}));
    Put(object, "controller", drive.controller);
    Put(object, "number", drive.number);
    Put(object, "name", drive.name);
    Put(object, "state", drive.state);
    Put(object, "capacity", "bytes", drive.capacity);
    Put(object, "raid_group", drive.group);
    Put(object, "raid_level", drive.raidLevel);
    Put(object, "type", drive.type);
    Put(object, "stripe_size", "bytes", drive.stripeSize);
    Put(object, "caches", Array(drive.caches, LinkObject));
    PutSections(object, drive.sections);
    return object;
}

CJson AttributeObject(const CSmartAttribute& attribute) {
    CObject object;
    Put(object, "id", attribute.id);
    Put(object, "name", attribute.name);
    PutCount(object, "current", attribute.current);
    PutCount(object, "worst", attribute.worst);
    PutCount(object, "value", attribute.value);
    PutCount(object, "threshold", attribute.threshold);
    return object;
}

void PutSmart(CObject& object, const std::optional<CSmart>& smart) {
    if (!smart) {
        return;
    }
    CObject told;
    Put(told, "temperature", "celsius", smart->temperature);
    Put(told, "power_on_time", "hours", smart->powerOnTime);
    Put(told, "predictive_failure", smart->predictiveFailure);
    Put(told, "attributes", Array(smart->attributes, AttributeObject));
    Put(object, "smart", CJson(std::move(told)));
}

void PutIdentity(CObject& object, const CPhysicalDrive& drive) {
    Put(object, "vendor", drive.vendor);
    Put(object, "product", drive.product);
    Put(object, "serial", drive.serial);
    Put(object, "wwn", drive.wwn);
    Put(object, "revision", drive.revision);
    Put(object, "interface_type", drive.interfaceType);
    Put(object, "media_type", drive.mediaType);
    Put(object, "speed", "bits_per_second", drive.speed);
    Put(object, "capacity", "bytes", drive.capacity);
}

CJson PhysicalDriveObject(const CPhysicalDrive& drive, const CProblemMarks& marks) {
    CObject object = ObjectFor(DEVICE_VALUES);
    Put(object, "health", ObjectHealthJson(marks, {ObjectName(drive)}));
    Put(object, "controller", drive.controller);
    Put(object, "number", drive.number);
    Put(object, "enclosure", drive.place.enclosure);
    Put(object, "slot", drive.place.slot);
    Put(object, "raid_group", drive.group);
    if (drive.role != EDriveRole::UNKNOWN) {
        Put(object, "role", CJson(RoleName(drive.role)));
    }
    Put(object, "logical_drive", drive.logicalDrive);
    Put(object, "status", drive.status);
    Put(object, "status_detail", drive.statusDetail);
    Put(object, "progress", "percent", drive.progress);
    Put(object, "temperature", "celsius", drive.temperature);
    PutCount(object, "media_error_count", drive.mediaErrors);
    PutCount(object, "other_error_count", drive.otherErrors);
    PutCount(object, "predictive_failure_count", drive.predictiveFailures);
    PutIdentity(object, drive);
    Put(object, "power", drive.power);
    PutSmart(object, drive.smart);
    PutSections(object, drive.sections);
    return object;
}

CJson SsdObject(const CPcieSsd& ssd, const CProblemMarks& marks) {
    CObject object = ObjectFor(DEVICE_VALUES);
    Put(object, "health", ObjectHealthJson(marks, {ObjectName(ssd)}));
    Put(object, "bus", ssd.bus);
    Put(object, "product", ssd.product);
    Put(object, "serial", ssd.serial);
    Put(object, "vendor_id", ssd.vendorId);
    Put(object, "device_id", ssd.deviceId);
    Put(object, "firmware_version", ssd.firmware);
    Put(object, "status", ssd.status);
    Put(object, "capacity", "bytes", ssd.capacity);
    Put(object, "temperature", "celsius", ssd.temperature);
    Put(object, "used", "percent", ssd.used);
    Put(object, "written", "bytes", ssd.written);
    PutSections(object, ssd.sections);
    return object;
}

CJson OtherObject(const COtherBranch& branch) {
    CObject object;
    Put(object, "name", CJson(branch.name));
    Put(object, "value", branch.value);
    PutSections(object, branch.sections);
    return object;
}

CJson HealthObject(const CVerdict& verdict) {
    CObject object;
    Put(object, "status", CJson(HealthName(verdict.status)));
    Put(object, "findings", FindingsJson(verdict.health.findings));
    return object;
}

void PutResult(CObject& object, const CAnswer& answer) {
    const CResultTexts& texts = answer.texts;
    Put(object, "result", CJson(answer.IsWhole() ? "success" : "failure"));
    for (const auto& [name, text] :
         {std::pair("error_code", &texts.errorCode), std::pair("notice_code", &texts.noticeCode),
          std::pair("error_detail", &texts.detail)}) {
        if (!text->empty() && *text != "none") {
            Put(object, name, CJson(*text));
        }
    }
    Put(object, "tool_version", answer.toolVersion);
    Put(object, "messages", Array(answer.messages, MessageObject));
}

}  // namespace

std::string FormatJson(const CAnswer& answer, const CVerdict& verdict, const std::string& command) {
    const CInventory& inventory = answer.inventory;
    const CProblemMarks marks(verdict.health.findings);
    const auto judged = [&marks](auto make) {
        return [&marks, make](const auto& device) { return make(device, marks); };
    };
    CJson json = NewDocument(command);
    auto& document = json.get_ref<CObject&>();
    PutResult(document, answer);
    Put(document, "health", HealthObject(verdict));
    Put(document, "controllers", Array(inventory.controllers, judged(ControllerObject)));
    Put(document, "raid_groups", Array(inventory.raidGroups, RaidGroupObject));
    Put(document, "logical_drives", Array(inventory.logicalDrives, judged(LogicalDriveObject)));
    Put(document, "physical_drives", Array(inventory.physicalDrives, judged(PhysicalDriveObject)));
    Put(document, "pcie_ssds", Array(inventory.pcieSsds, judged(SsdObject)));
    Put(document, "others", Array(inventory.others, OtherObject));
    return JsonText(json, INDENTATION);
}

}  // namespace qorctl
