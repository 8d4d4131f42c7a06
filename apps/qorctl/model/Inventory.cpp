#include "model/Inventory.h"

#include <algorithm>
#include <array>
#include <utility>

#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

using CNode = CItemTree::CNode;

constexpr std::string_view CONTROLLER_ROOT = "Controller Information";
constexpr std::string_view GROUP_ROOT = "Logical Drive Information";
constexpr std::string_view DRIVE_ROOT = "Physical Drive Information";
constexpr std::string_view SSD_ROOT = "PCIe SSD Information";

constexpr std::string_view GENERAL = "General Information";
constexpr std::string_view FIRMWARE = "Firmware/BIOS/Driver Information";
constexpr std::string_view BATTERY = "BBU Information";
constexpr std::string_view ENCLOSURE = "Enclosure Properties Information";
constexpr std::string_view SMART = "SMART Information";
constexpr std::string_view HEALTH = "Health Information";

constexpr std::string_view LD_LIST = "LD List";
constexpr std::string_view PD_LIST = "PD List";
constexpr std::string_view CACHE_LINK = "Associated CacheCade LD";
constexpr std::string_view SMART_ROW_HEAD = "SMART Detail(";

// Values that say nothing.
constexpr std::array<std::string_view, 4> NOTHING = {"", "-", "N/A", "n/a"};

using CReadNumber = CNumber (*)(std::string_view text);

template <class TRecord>
struct CTextRow {
    std::string_view section;
    std::string_view key;
    CText TRecord::*member;
};

template <class TRecord>
struct CMeasureRow {
    std::string_view section;
    std::string_view key;
    CReadNumber read;
    CMeasure TRecord::*member;
};

constexpr CTextRow<CController> CONTROLLER_TEXTS[] = {
    {GENERAL, "Product Name", &CController::product},
    {GENERAL, "Serial Number", &CController::serial},
    {GENERAL, "PCI Bus/Dev/Func", &CController::pciText},
    {GENERAL, "Vendor ID", &CController::vendorId},
    {GENERAL, "Device ID", &CController::deviceId},
    {GENERAL, "Subsystem Vendor ID", &CController::subsystemVendorId},
    {GENERAL, "Subsystem ID", &CController::subsystemId},
    {FIRMWARE, "Firmware Package Version", &CController::firmwarePackage},
    {FIRMWARE, "Firmware Version", &CController::firmwareVersion},
    {FIRMWARE, "BIOS Version", &CController::biosVersion},
    {FIRMWARE, "Driver Version", &CController::driverVersion},
    {BATTERY, "BBU", &CController::batteryPresence},
    {BATTERY, "BBU Status", &CController::batteryStatus},
};
constexpr CMeasureRow<CController> CONTROLLER_MEASURES[] = {
    {GENERAL, "Memory Size", ReadBinaryBytes, &CController::memory},
    {GENERAL, "# of LD", ReadCount, &CController::logicalDriveCount},
    {GENERAL, "# of PD", ReadCount, &CController::physicalDriveCount},
    {BATTERY, "Relative State of Charge", ReadPercent, &CController::batteryCharge},
    {BATTERY, "Temperature", ReadCelsius, &CController::batteryTemperature},
};

constexpr CTextRow<CRaidGroup> GROUP_TEXTS[] = {
    {GENERAL, "RG No.", &CRaidGroup::name},
    {GENERAL, "RAID Level", &CRaidGroup::raidLevel},
};
constexpr CMeasureRow<CRaidGroup> GROUP_MEASURES[] = {
    {GENERAL, "Total Size", ReadBinaryBytes, &CRaidGroup::size},
    {GENERAL, "# of LD", ReadCount, &CRaidGroup::logicalDriveCount},
};

// The group's keys stand behind its first LD List where the tool printed that first.
constexpr CTextRow<CLogicalDrive> LOGICAL_TEXTS[] = {
    {GENERAL, "RAID Level", &CLogicalDrive::raidLevel},
    {GENERAL, "LD Type", &CLogicalDrive::type},
};
constexpr CMeasureRow<CLogicalDrive> LOGICAL_MEASURES[] = {
    {GENERAL, "Stripe Size", ReadBinaryBytes, &CLogicalDrive::stripeSize},
};

constexpr CTextRow<CPhysicalDrive> DRIVE_TEXTS[] = {
    {GENERAL, "RG No.", &CPhysicalDrive::group},
    {GENERAL, "LD No.", &CPhysicalDrive::use},
    {GENERAL, "PD Status", &CPhysicalDrive::status},
    {GENERAL, "PD Status(Detail)", &CPhysicalDrive::statusDetail},
    {GENERAL, "Product ID", &CPhysicalDrive::product},
    {GENERAL, "Serial Number", &CPhysicalDrive::serial},
    {GENERAL, "Vendor ID", &CPhysicalDrive::vendor},
    {GENERAL, "WWN", &CPhysicalDrive::wwn},
    {GENERAL, "Revision Level", &CPhysicalDrive::revision},
    {GENERAL, "Interface Type", &CPhysicalDrive::interfaceType},
    {GENERAL, "Media Type", &CPhysicalDrive::mediaType},
    {GENERAL, "Power Status", &CPhysicalDrive::power},
};
constexpr CMeasureRow<CPhysicalDrive> DRIVE_MEASURES[] = {
    {GENERAL, "Progress", ReadPercent, &CPhysicalDrive::progress},
    {GENERAL, "Temperature", ReadCelsius, &CPhysicalDrive::temperature},
    {GENERAL, "Media Error Count", ReadCount, &CPhysicalDrive::mediaErrors},
    {GENERAL, "Other Error Count", ReadCount, &CPhysicalDrive::otherErrors},
    {GENERAL, "Predictive Failure Count", ReadCount, &CPhysicalDrive::predictiveFailures},
    {GENERAL, "Drive Speed", ReadBitRate, &CPhysicalDrive::speed},
    {GENERAL, "Raw Capacity", ReadBinaryBytes, &CPhysicalDrive::capacity},
};

constexpr CTextRow<CSmart> SMART_TEXTS[] = {
    {SMART, "Predictive Failure", &CSmart::predictiveFailure},
};
constexpr CMeasureRow<CSmart> SMART_MEASURES[] = {
    {SMART, "Temperature", ReadCelsius, &CSmart::temperature},
    {SMART, "Power-On Time", ReadHours, &CSmart::powerOnTime},
};

constexpr CTextRow<CPcieSsd> SSD_TEXTS[] = {
    {GENERAL, "Product Name", &CPcieSsd::product},
    {GENERAL, "Serial Number", &CPcieSsd::serial},
    {GENERAL, "Vendor ID", &CPcieSsd::vendorId},
    {GENERAL, "Device ID", &CPcieSsd::deviceId},
    {GENERAL, "Firmware Version", &CPcieSsd::firmware},
    {GENERAL, "Status", &CPcieSsd::status},
};
constexpr CMeasureRow<CPcieSsd> SSD_MEASURES[] = {
    {GENERAL, "Capacity", ReadDecimalBytes, &CPcieSsd::capacity},
    {HEALTH, "Temperature", ReadCelsius, &CPcieSsd::temperature},
    {HEALTH, "Percentage Used", ReadPercent, &CPcieSsd::used},
    {HEALTH, "Data Written", ReadDecimalBytes, &CPcieSsd::written},
};

struct CRoleRow {
    EDriveRole role;
    std::string_view use;
    std::string_view name;
};

constexpr CRoleRow ROLES[] = {
    {EDriveRole::MEMBER, "LD", "member"},
    {EDriveRole::GLOBAL_SPARE, "GHS", "global_spare"},
    {EDriveRole::DEDICATED_SPARE, "DHS", "dedicated_spare"},
    {EDriveRole::RLD, "RLD", "rld"},
    {EDriveRole::UNASSIGNED, "None", "unassigned"},
};

// From the tree to sections

std::optional<std::string> ValueOf(const CNode& node) {
    if (node.item->Enable() == "FALSE" && node.item->ItemValue().empty()) {
        return std::nullopt;
    }
    return node.item->ItemValue();
}

// Names are repeated: below a title for each of its logical drives, in numbered ones, in tables.
std::string NameText(std::string_view name) {
    return CutText(name, MAX_NAME);
}

// Appends everything below `top` to `entry`, whatever the depth.
void AppendKeysBelow(const CItemTree& tree, size_t top, CEntry& entry) {
    const size_t depth = tree.Node(top).depth;
    for (size_t i = tree.Next(top); i != CItemTree::NO_NODE && tree.Node(i).depth > depth;
         i = tree.Next(i)) {
        entry.keys.push_back({NameText(tree.Node(i).item->ItemName()), ValueOf(tree.Node(i))});
    }
}

CEntry MakeEntry(const CItemTree& tree, size_t index) {
    const CNode& node = tree.Node(index);
    CEntry entry;
    entry.name = NameText(node.item->ItemName());
    entry.isGroup = node.HasChildren();
    if (!entry.isGroup) {
        entry.value = ValueOf(node);
        return entry;
    }
    if (!node.item->ItemValue().empty()) {
        entry.keys.push_back({"", node.item->ItemValue()});
    }
    AppendKeysBelow(tree, index, entry);
    return entry;
}

CSection MakeSection(const CItemTree& tree, size_t title) {
    CSection section;
    section.name = NameText(tree.Node(title).Title());
    for (size_t i = tree.Node(title).firstChild; i != CItemTree::NO_NODE;
         i = tree.Node(i).nextSibling) {
        section.entries.push_back(MakeEntry(tree, i));
    }
    return section;
}

// Keys directly below the root stand in a section without a name.
CSections MakeSections(const CItemTree& tree, size_t root) {
    CSections sections;
    for (size_t i = tree.Node(root).firstChild; i != CItemTree::NO_NODE;
         i = tree.Node(i).nextSibling) {
        if (tree.Node(i).IsTitle()) {
            sections.push_back(MakeSection(tree, i));
            continue;
        }
        if (sections.empty() || !sections.back().name.empty()) {
            sections.emplace_back();
        }
        sections.back().entries.push_back(MakeEntry(tree, i));
    }
    return sections;
}

// From sections to values

CText Told(const std::optional<std::string>& value) {
    const bool isNothing =
        !value || std::find(NOTHING.begin(), NOTHING.end(), *value) != NOTHING.end();
    return isNothing ? std::nullopt : CText(CutText(*value, MAX_NAME));
}

CText FindText(const CSections& sections, std::string_view section, std::string_view key) {
    const CEntry* entry = FindEntry(sections, section, key);
    return entry == nullptr ? std::nullopt : Told(entry->value);
}

CMeasure Measured(const CText& text, CReadNumber read) {
    return text ? std::make_optional(CQuantity{*text, read(*text)}) : std::nullopt;
}

CNumber FindNumber(const CSections& sections, std::string_view section, std::string_view key,
                   std::string_view head) {
    const CText text = FindText(sections, section, key);
    return text ? ReadNumbered(*text, head) : std::nullopt;
}

CText FindKey(const CEntry& group, std::string_view key) {
    const auto found = std::find_if(group.keys.begin(), group.keys.end(),
                                    [key](const CKeyValue& each) { return each.key == key; });
    return found == group.keys.end() ? std::nullopt : Told(found->value);
}

CNumber FindKeyNumber(const CEntry& group, std::string_view key, std::string_view head) {
    const CText text = FindKey(group, key);
    return text ? ReadNumbered(*text, head) : std::nullopt;
}

template <class TRecord, size_t TEXTS, size_t MEASURES>
void Fill(TRecord& record, const CSections& sections, const CTextRow<TRecord> (&texts)[TEXTS],
          const CMeasureRow<TRecord> (&measures)[MEASURES]) {
    for (const CTextRow<TRecord>& row : texts) {
        record.*row.member = FindText(sections, row.section, row.key);
    }
    for (const CMeasureRow<TRecord>& row : measures) {
        record.*row.member = Measured(FindText(sections, row.section, row.key), row.read);
    }
}

// "3/0/0": bus, device and function in decimal
std::optional<CPciAddress> ReadPciAddress(const std::string& text) {
    const size_t first = text.find('/');
    const size_t second = first == std::string::npos ? first : text.find('/', first + 1);
    if (second == std::string::npos) {
        return std::nullopt;
    }
    const CNumber bus = ReadCount(text.substr(0, first));
    const CNumber device = ReadCount(text.substr(first + 1, second - first - 1));
    const CNumber function = ReadCount(text.substr(second + 1));
    if (!bus || !device || !function) {
        return std::nullopt;
    }
    return CPciAddress{.bus = *bus, .device = *device, .function = *function};
}

CController MakeController(CSections sections) {
    CController controller;
    Fill(controller, sections, CONTROLLER_TEXTS, CONTROLLER_MEASURES);
    controller.number = FindNumber(sections, GENERAL, "Controller No.", "");
    if (controller.pciText) {
        controller.pci = ReadPciAddress(*controller.pciText);
    }
    controller.sections = std::move(sections);
    return controller;
}

// Groups and their logical drives

CLinkedDrive MakeLinkedDrive(const CEntry& group) {
    return {.number = FindKeyNumber(group, "LD No.", "LD"),
            .name = FindKey(group, "Name"),
            .state = FindKey(group, "State"),
            .capacity = Measured(FindKey(group, "Capacity"), ReadBinaryBytes)};
}

CLogicalDrive MakeLogicalDrive(const CEntry& ldList) {
    const CLinkedDrive told = MakeLinkedDrive(ldList);
    CLogicalDrive drive;
    drive.number = told.number;
    drive.name = told.name;
    drive.state = told.state;
    drive.capacity = told.capacity;
    return drive;
}

CDrivePlace MakePlace(const CText& enclosure, const CText& slot) {
    return {.enclosure = enclosure ? ReadCount(*enclosure) : std::nullopt,
            .slot = slot ? ReadCount(*slot) : std::nullopt};
}

CGroupMember MakeMember(const CEntry& pdList) {
    const CText id = FindKey(pdList, "Enclosure ID");
    return {.drive = FindKeyNumber(pdList, "PD No.", "PD"),
            .place =
                MakePlace(id ? id : FindKey(pdList, "Enclosure No."), FindKey(pdList, "Slot No."))};
}

// Deals the entries of a group's root out: what stands before the first "LD List" is the group's,
// everything behind an "LD List" is that logical drive's.
class CGroupReader {
public:
    void Read(CSections sections);

    CRaidGroup m_Group;
    std::vector<CLogicalDrive> m_Drives;

private:
    void Notice(const CEntry& entry);
    CSections& Target() { return m_Drives.empty() ? m_Group.sections : m_Drives.back().sections; }
};

void CGroupReader::Notice(const CEntry& entry) {
    if (!entry.isGroup) {
        return;
    }
    if (entry.name == LD_LIST) {
        m_Drives.push_back(MakeLogicalDrive(entry));
    } else if (entry.name == PD_LIST) {
        m_Group.members.push_back(MakeMember(entry));
    } else if (entry.name == CACHE_LINK && !m_Drives.empty()) {
        m_Drives.back().caches.push_back(MakeLinkedDrive(entry));
    }
}

void CGroupReader::Read(CSections sections) {
    for (CSection& section : sections) {
        bool isNew = true;
        for (CEntry& entry : section.entries) {
            const size_t drives = m_Drives.size();
            Notice(entry);
            isNew = isNew || m_Drives.size() > drives;
            if (isNew) {
                Target().push_back({.name = section.name, .entries = {}});
                isNew = false;
            }
            Target().back().entries.push_back(std::move(entry));
        }
        if (section.entries.empty()) {
            Target().push_back(std::move(section));
        }
    }
}

void AddGroup(CInventory& inventory, CSections sections, CNumber controller) {
    CGroupReader reader;
    reader.Read(std::move(sections));
    CRaidGroup& group = reader.m_Group;
    group.controller = controller;
    Fill(group, group.sections, GROUP_TEXTS, GROUP_MEASURES);
    for (CLogicalDrive& drive : reader.m_Drives) {
        Fill(drive, drive.sections, LOGICAL_TEXTS, LOGICAL_MEASURES);
        drive.controller = controller;
        drive.group = group.name;
        group.raidLevel = group.raidLevel ? group.raidLevel : drive.raidLevel;
        drive.raidLevel = drive.raidLevel ? drive.raidLevel : group.raidLevel;
        if (drive.number) {
            group.logicalDrives.push_back(*drive.number);
        }
        inventory.logicalDrives.push_back(std::move(drive));
    }
    inventory.raidGroups.push_back(std::move(group));
}

// Drives

EDriveRole ReadRole(const std::string& use) {
    const auto* found = std::find_if(std::begin(ROLES), std::end(ROLES), [&](const CRoleRow& row) {
        return row.role == EDriveRole::MEMBER ? ReadNumbered(use, row.use).has_value()
                                              : row.use == use;
    });
    return found == std::end(ROLES) ? EDriveRole::UNKNOWN : found->role;
}

CSmartAttribute MakeAttribute(const CEntry& row) {
    const CText id = FindKey(row, "ID");
    const CText raw = FindKey(row, "Raw Data");
    return {.id = id ? ReadCount(*id) : std::nullopt,
            .name = FindKey(row, "Attribute"),
            .current = Measured(FindKey(row, "Current"), ReadCount),
            .worst = Measured(FindKey(row, "Worst"), ReadCount),
            .value = Measured(raw ? raw : FindKey(row, "Value"), ReadCount),
            .threshold = Measured(FindKey(row, "Threshold"), ReadCount)};
}

std::optional<CSmart> MakeSmart(const CSections& sections) {
    const auto found = std::find_if(sections.begin(), sections.end(), [](const CSection& section) {
        return section.name.starts_with(SMART);
    });
    if (found == sections.end()) {
        return std::nullopt;
    }
    CSmart smart;
    Fill(smart, sections, SMART_TEXTS, SMART_MEASURES);
    for (const CEntry& entry : found->entries) {
        if (entry.isGroup && entry.name.starts_with(SMART_ROW_HEAD)) {
            smart.attributes.push_back(MakeAttribute(entry));
        }
    }
    return smart;
}

CPhysicalDrive MakeDrive(CSections sections, CNumber controller) {
    CPhysicalDrive drive;
    Fill(drive, sections, DRIVE_TEXTS, DRIVE_MEASURES);
    drive.controller = controller;
    drive.number = FindNumber(sections, GENERAL, "PD No.", "PD");
    drive.role = drive.use ? ReadRole(*drive.use) : EDriveRole::UNKNOWN;
    drive.logicalDrive = drive.use ? ReadNumbered(*drive.use, "LD") : std::nullopt;
    const CText id = FindText(sections, ENCLOSURE, "Enclosure ID");
    drive.place = MakePlace(id ? id : FindText(sections, ENCLOSURE, "Enclosure No."),
                            FindText(sections, ENCLOSURE, "Slot No."));
    drive.smart = MakeSmart(sections);
    drive.sections = std::move(sections);
    return drive;
}

CPcieSsd MakeSsd(CSections sections) {
    CPcieSsd ssd;
    Fill(ssd, sections, SSD_TEXTS, SSD_MEASURES);
    ssd.bus = FindNumber(sections, GENERAL, "Bus No.", "");
    ssd.sections = std::move(sections);
    return ssd;
}

}  // namespace

const CEntry* FindEntry(const CSections& sections, std::string_view section, std::string_view key) {
    for (const CSection& each : sections) {
        if (each.name != section) {
            continue;
        }
        for (const CEntry& entry : each.entries) {
            if (entry.name == key) {
                return &entry;
            }
        }
    }
    return nullptr;
}

std::string_view RoleName(EDriveRole role) {
    const auto* found = std::find_if(std::begin(ROLES), std::end(ROLES),
                                     [role](const CRoleRow& row) { return row.role == role; });
    return found == std::end(ROLES) ? std::string_view() : found->name;
}

CInventory BuildInventory(const CItemTree& tree, CNumber controller) {
    CInventory inventory;
    for (size_t root = tree.Node(CItemTree::ROOT).firstChild; root != CItemTree::NO_NODE;
         root = tree.Node(root).nextSibling) {
        const CItemDisp& item = *tree.Node(root).item;
        CSections sections = MakeSections(tree, root);
        if (item.ItemName() == CONTROLLER_ROOT) {
            inventory.controllers.push_back(MakeController(std::move(sections)));
            inventory.controllers.back().root = root;
            controller = inventory.controllers.back().number;
        } else if (item.ItemName() == GROUP_ROOT) {
            AddGroup(inventory, std::move(sections), controller);
            inventory.raidGroups.back().root = root;
        } else if (item.ItemName() == DRIVE_ROOT) {
            inventory.physicalDrives.push_back(MakeDrive(std::move(sections), controller));
            inventory.physicalDrives.back().root = root;
        } else if (item.ItemName() == SSD_ROOT) {
            inventory.pcieSsds.push_back(MakeSsd(std::move(sections)));
            inventory.pcieSsds.back().root = root;
        } else {
            inventory.others.push_back({.root = root,
                                        .name = NameText(item.ItemName()),
                                        .value = NameText(item.ItemValue()),
                                        .sections = std::move(sections)});
        }
    }
    return inventory;
}

}  // namespace qorctl
