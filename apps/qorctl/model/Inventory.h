// What a request told about the storage of a server, as a model with names and numbers.
//
// The plug-in hands out texts under the tool's own key names. Here every device is a record with
// the values that matter, the numbers among them read (see Quantity.h), and `sections` with every
// item of the device as the tool printed it, so that keys and sections that this program does not
// know are not lost.
//
// What the tool did not say is not there: a std::optional is empty when the item is missing, is a
// placeholder (enable flag "FALSE") or says nothing ("", "-", "N/A"). A value that is there but
// could not be read as a number keeps its text and has no number.
//
// Names and values are cut at MAX_NAME bytes (see CutText()), but for the values in `sections`.
//
//     const CInventory inventory = BuildInventory(CItemTree(items), {});
//     for (const CPhysicalDrive& drive : inventory.physicalDrives) {
//         if (drive.temperature && drive.temperature->number.value_or(0) > 60) { ... }
//     }
//
// Owner: the model holds copies and outlives the items and the plug-in.
#ifndef QORCTL_MODEL_INVENTORY_H
#define QORCTL_MODEL_INVENTORY_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/ItemTree.h"
#include "model/Quantity.h"

namespace qorctl {

// One key of the report. Without a value: the tool printed none, the plug-in put a placeholder.
struct CKeyValue {
    std::string key;
    std::optional<std::string> value;
};

// One line of a section: a key with its value, or a group ("LD List", "PD List", "SMART
// Detail(SATA)") that stands above keys of its own. What stands deeper than that, which no tool
// prints, is listed in the same group. A group with a value of its own has it under an empty key.
struct CEntry {
    std::string name;
    std::optional<std::string> value;
    bool isGroup = false;
    std::vector<CKeyValue> keys;  // of a group
};

// Name without the hash marks, "General Information"; empty for keys outside any section.
struct CSection {
    std::string name;
    std::vector<CEntry> entries;
};

// In the order of the report. Names of sections and keys may repeat.
using CSections = std::vector<CSection>;

// The first entry `key` of the first section `section` that has one; null when there is none.
const CEntry* FindEntry(const CSections& sections, std::string_view section, std::string_view key);

// Values that most devices have: absent as said above.
using CText = std::optional<std::string>;
using CNumber = std::optional<long long>;
using CMeasure = std::optional<CQuantity>;

struct CPciAddress {
    long long bus = 0;
    long long device = 0;
    long long function = 0;
};

struct CController {
    size_t root = 0;  // its node in the tree of items
    CNumber number;
    CText product;
    CText serial;
    CText pciText;                   // "3/0/0", decimal
    std::optional<CPciAddress> pci;  // the same, read
    CText vendorId;                  // "0x1000"
    CText deviceId;
    CText subsystemVendorId;
    CText subsystemId;
    CText firmwarePackage;
    CText firmwareVersion;
    CText biosVersion;
    CText driverVersion;
    CMeasure memory;              // bytes
    CMeasure logicalDriveCount;   // as the controller states it
    CMeasure physicalDriveCount;  // as the controller states it
    CText batteryPresence;        // "Present", "Absent"
    CText batteryStatus;
    CMeasure batteryCharge;       // per cent
    CMeasure batteryTemperature;  // Celsius
    CSections sections;
};

// Where a drive sits. `drive` requests and the tool's "[enclosure:slot]" take these numbers.
struct CDrivePlace {
    CNumber enclosure;
    CNumber slot;
};

struct CGroupMember {
    CNumber drive;  // number of the physical drive
    CDrivePlace place;
};

struct CRaidGroup {
    size_t root = 0;  // its node in the tree of items
    CNumber controller;
    CText name;                  // "RG0"; "sRG0" of a spanned, "scRG0" of a cache group
    CText raidLevel;             // "RAID 5"
    CMeasure size;               // bytes
    CMeasure logicalDriveCount;  // as the tool states it
    std::vector<long long> logicalDrives;
    std::vector<CGroupMember> members;
    CSections sections;  // what stands before the group's first logical drive
};

// The other end of a cache link.
struct CLinkedDrive {
    CNumber number;
    CText name;
    CText state;
    CMeasure capacity;  // bytes
};

struct CLogicalDrive {
    CNumber controller;
    CNumber number;
    CText name;
    CText state;        // "Optimal", "Degraded" ...
    CMeasure capacity;  // bytes
    CText group;        // "RG0"
    CText raidLevel;
    CText type;                        // "RAID", "CacheCade"
    CMeasure stripeSize;               // bytes
    std::vector<CLinkedDrive> caches;  // of a cache: the logical drives that it speeds up
    // Where several logical drives share a section, the last of them has it.
    CSections sections;
};

enum class EDriveRole { MEMBER, GLOBAL_SPARE, DEDICATED_SPARE, RLD, UNASSIGNED, UNKNOWN };

// "member", "global_spare", "dedicated_spare", "rld", "unassigned"; empty for UNKNOWN.
std::string_view RoleName(EDriveRole role);

// A line of the drive's SMART table.
struct CSmartAttribute {
    CNumber id;          // of SATA drives
    CText name;          // with the head's name in front where SAS counters have one
    CMeasure current;    // of SATA drives
    CMeasure worst;      // of SATA drives
    CMeasure value;      // the raw counter
    CMeasure threshold;  // of the current value (SATA), of the counter (SAS)
};

struct CSmart {
    CMeasure temperature;  // Celsius
    CMeasure powerOnTime;  // hours
    CText predictiveFailure;
    std::vector<CSmartAttribute> attributes;
};

struct CPhysicalDrive {
    size_t root = 0;  // its node in the tree of items
    CNumber controller;
    CNumber number;
    CText group;  // "RG0"; of a dedicated spare too
    CText use;    // "LD0", "GHS", "DHS", "RLD", "None"
    EDriveRole role = EDriveRole::UNKNOWN;
    CNumber logicalDrive;  // of a member: the logical drive that its header names
    CText status;          // "NO ERROR", "ERROR", "REBUILD", "UNKNOWN"
    CText statusDetail;    // the tool's own: "ONLINE", "FAILED" ...
    CMeasure progress;     // per cent: of a rebuild or a copy that goes on
    CMeasure temperature;  // Celsius
    CMeasure mediaErrors;
    CMeasure otherErrors;
    CMeasure predictiveFailures;
    CText product;
    CText serial;
    CText vendor;
    CText wwn;
    CText revision;
    CText interfaceType;  // "SAS", "SATA"
    CText mediaType;      // "HDD", "SSD"
    CMeasure speed;       // bits a second
    CText power;
    CMeasure capacity;  // bytes
    CDrivePlace place;
    std::optional<CSmart> smart;  // of a `drive` request
    CSections sections;
};

// An error counter of drives.
struct CCounter {
    std::string_view noun;
    CMeasure CPhysicalDrive::*value;
};

inline constexpr CCounter COUNTERS[] = {
    {"media errors", &CPhysicalDrive::mediaErrors},
    {"other errors", &CPhysicalDrive::otherErrors},
    {"predictive failures", &CPhysicalDrive::predictiveFailures},
};

struct CPcieSsd {
    size_t root = 0;  // its node in the tree of items
    CNumber bus;
    CText product;
    CText serial;
    CText vendorId;
    CText deviceId;
    CText firmware;
    CText status;
    CMeasure capacity;     // bytes
    CMeasure temperature;  // Celsius
    CMeasure used;         // per cent of the rated endurance
    CMeasure written;      // bytes
    CSections sections;
};

// A root that is none of the kinds above.
struct COtherBranch {
    size_t root = 0;  // its node in the tree of items
    std::string name;
    CText value;
    CSections sections;
};

struct CInventory {
    std::vector<CController> controllers;
    std::vector<CRaidGroup> raidGroups;
    std::vector<CLogicalDrive> logicalDrives;
    std::vector<CPhysicalDrive> physicalDrives;
    std::vector<CPcieSsd> pcieSsds;
    std::vector<COtherBranch> others;
};

// The model of the items. Groups and drives belong to the controller that stands before them in the
// list, and to `controller` before the first one: the list of a `drive` request names none. Cost:
// linear in the items.
CInventory BuildInventory(const CItemTree& tree, CNumber controller);

}  // namespace qorctl

#endif  // QORCTL_MODEL_INVENTORY_H
