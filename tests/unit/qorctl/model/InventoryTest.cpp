#include <gtest/gtest.h>

#include <memory>

#include "model/Inventory.h"
#include "terminal/TerminalText.h"

namespace {

using qorctl::BuildInventory;
using qorctl::CInventory;
using qorctl::EDriveRole;

constexpr const char* GENERAL = "### General Information ###";

struct CRow {
    const char* parent;
    const char* name;
    const char* value = "";
    const char* enable = "TRUE";
};

CInventory Build(const std::vector<CRow>& rows, qorctl::CNumber controller = {}) {
    std::list<CItemDisp*> items;
    for (const CRow& row : rows) {
        items.push_back(CreateItemDisp(row.parent, row.name, row.value, row.enable));
    }
    CInventory inventory = BuildInventory(qorctl::CItemTree(items), controller);
    for (CItemDisp* item : items) {
        DeleteItemDisp(item);
    }
    return inventory;
}

const std::vector<CRow> CONTROLLER = {
    {"", "Controller Information"},
    {"Controller Information", GENERAL},
    {GENERAL, "Controller No.", "2"},
    {GENERAL, "Product Name", "X 1"},
    {GENERAL, "PCI Bus/Dev/Func", "59/0/1"},
    {GENERAL, "Memory Size", "4096MB"},
    {GENERAL, "# of PD", "many"},
    {"Controller Information", "### Firmware/BIOS/Driver Information ###"},
    {"### Firmware/BIOS/Driver Information ###", "Firmware Package Version", "", "FALSE"},
    {"### Firmware/BIOS/Driver Information ###", "Firmware Version", "N/A"},
    {"Controller Information", "### BBU Information ###"},
    {"### BBU Information ###", "BBU Status", "Normal"},
    {"### BBU Information ###", "Relative State of Charge", "98%"},
    {"### BBU Information ###", "Temperature", "29C"},
};

std::vector<CRow> Drive(const char* number, const char* use, const char* group) {
    return {{"", "Physical Drive Information"},
            {"Physical Drive Information", GENERAL},
            {GENERAL, "PD No.", number},
            {GENERAL, "RG No.", group},
            {GENERAL, "LD No.", use}};
}

// Names and values stand in tables, sentences and lists; the whole value stands in the section.
TEST(InventoryTest, LongNamesAndValuesAreCut) {
    const std::string text(1000, 'x');
    const std::string cut = qorctl::CutText(text, qorctl::MAX_NAME);
    const std::string title = "### " + text;
    const CInventory inventory = Build({{"", "Physical Drive Information"},
                                        {"Physical Drive Information", GENERAL},
                                        {GENERAL, "PD Status(Detail)", text.c_str()},
                                        {GENERAL, text.c_str(), "value"},
                                        {"Physical Drive Information", title.c_str()},
                                        {"", text.c_str(), text.c_str()}});
    const qorctl::CPhysicalDrive& drive = inventory.physicalDrives.at(0);
    EXPECT_EQ(drive.statusDetail, cut);
    EXPECT_EQ(drive.sections.at(0).entries.at(0).value, text);
    EXPECT_EQ(drive.sections.at(0).entries.at(1).name, cut);
    EXPECT_EQ(drive.sections.at(1).name, cut);
    EXPECT_EQ(inventory.others.at(0).name, cut);
    EXPECT_EQ(inventory.others.at(0).value, cut);
}

TEST(InventoryTest, ControllerIsRead) {
    const CInventory inventory = Build(CONTROLLER);
    ASSERT_EQ(inventory.controllers.size(), 1U);
    const qorctl::CController& controller = inventory.controllers[0];
    EXPECT_EQ(controller.number, 2);
    EXPECT_EQ(controller.product, "X 1");
    EXPECT_EQ(controller.pciText, "59/0/1");
    ASSERT_TRUE(controller.pci);
    EXPECT_EQ(controller.pci->bus, 59);
    EXPECT_EQ(controller.pci->device, 0);
    EXPECT_EQ(controller.pci->function, 1);
    EXPECT_EQ(controller.memory, (qorctl::CQuantity{"4096MB", 4LL << 30U}));
    EXPECT_EQ(controller.batteryStatus, "Normal");
    EXPECT_EQ(controller.batteryCharge->number, 98);
    EXPECT_EQ(controller.batteryTemperature->number, 29);
}

TEST(InventoryTest, WhatTheToolDidNotSayIsNotThere) {
    const qorctl::CController controller = Build(CONTROLLER).controllers.at(0);
    EXPECT_FALSE(controller.serial);           // no such item
    EXPECT_FALSE(controller.firmwarePackage);  // placeholder
    EXPECT_FALSE(controller.firmwareVersion);  // "N/A"
    EXPECT_FALSE(controller.batteryPresence);
}

TEST(InventoryTest, ValueThatIsNoNumberKeepsItsText) {
    const qorctl::CController controller = Build(CONTROLLER).controllers.at(0);
    EXPECT_EQ(controller.physicalDriveCount, (qorctl::CQuantity{"many", std::nullopt}));
}

TEST(InventoryTest, AddressThatIsNotOfThreeNumbersStaysAText) {
    for (const char* text : {"59", "59/0", "59/0/x", "/0/1", "59/0/1/2"}) {
        std::vector<CRow> rows = CONTROLLER;
        rows[4].value = text;
        const qorctl::CController controller = Build(rows).controllers.at(0);
        EXPECT_EQ(controller.pciText, text);
        EXPECT_FALSE(controller.pci) << text;
    }
}

TEST(InventoryTest, SectionsHoldEveryItemAsItStands) {
    const qorctl::CSections sections = Build(CONTROLLER).controllers.at(0).sections;
    ASSERT_EQ(sections.size(), 3U);
    EXPECT_EQ(sections[1].name, "Firmware/BIOS/Driver Information");
    ASSERT_EQ(sections[1].entries.size(), 2U);
    EXPECT_EQ(sections[1].entries[0].name, "Firmware Package Version");
    EXPECT_EQ(sections[1].entries[0].value, std::nullopt);
    EXPECT_EQ(sections[1].entries[1].value, "N/A");
    EXPECT_EQ(qorctl::FindEntry(sections, "BBU Information", "Temperature")->value, "29C");
    EXPECT_EQ(qorctl::FindEntry(sections, "BBU Information", "Voltage"), nullptr);
    EXPECT_EQ(qorctl::FindEntry(sections, "Voltage", "Temperature"), nullptr);
}

TEST(InventoryTest, KeysOutsideSectionsStandInOneWithoutAName) {
    const CInventory inventory = Build({{"", "Controller Information"},
                                        {"Controller Information", "Early", "1"},
                                        {"Controller Information", GENERAL},
                                        {GENERAL, "Controller No.", "0"}});
    const qorctl::CSections& sections = inventory.controllers.at(0).sections;
    ASSERT_EQ(sections.size(), 2U);
    EXPECT_EQ(sections[0].name, "");
    EXPECT_EQ(sections[0].entries.at(0).value, "1");
}

TEST(InventoryTest, DrivesBelongToTheControllerBeforeThem) {
    std::vector<CRow> rows = Drive("PD0", "None", "-");
    rows.insert(rows.end(), CONTROLLER.begin(), CONTROLLER.end());
    const std::vector<CRow> other = Drive("PD1", "None", "-");
    rows.insert(rows.end(), other.begin(), other.end());
    const CInventory inventory = Build(rows, 7);
    ASSERT_EQ(inventory.physicalDrives.size(), 2U);
    EXPECT_EQ(inventory.physicalDrives[0].controller, 7);
    EXPECT_EQ(inventory.physicalDrives[1].controller, 2);
    EXPECT_EQ(Build(Drive("PD0", "None", "-")).physicalDrives.at(0).controller, std::nullopt);
}

TEST(InventoryTest, UseOfADriveIsItsRole) {
    const struct {
        const char* use;
        EDriveRole role;
        std::string_view name;
        qorctl::CNumber logicalDrive;
    } rows[] = {{"LD12", EDriveRole::MEMBER, "member", 12},
                {"GHS", EDriveRole::GLOBAL_SPARE, "global_spare", {}},
                {"DHS", EDriveRole::DEDICATED_SPARE, "dedicated_spare", {}},
                {"RLD", EDriveRole::RLD, "rld", {}},
                {"None", EDriveRole::UNASSIGNED, "unassigned", {}},
                {"LD", EDriveRole::UNKNOWN, "", {}},
                {"ghs", EDriveRole::UNKNOWN, "", {}}};
    for (const auto& row : rows) {
        const qorctl::CPhysicalDrive drive =
            Build(Drive("PD3", row.use, "RG1")).physicalDrives.at(0);
        EXPECT_EQ(drive.number, 3);
        EXPECT_EQ(drive.group, "RG1");
        EXPECT_EQ(drive.use, row.use);
        EXPECT_EQ(drive.role, row.role) << row.use;
        EXPECT_EQ(qorctl::RoleName(drive.role), row.name);
        EXPECT_EQ(drive.logicalDrive, row.logicalDrive) << row.use;
    }
}

TEST(InventoryTest, DashIsNoGroup) {
    EXPECT_EQ(Build(Drive("PD3", "None", "-")).physicalDrives.at(0).group, std::nullopt);
}

TEST(InventoryTest, EnclosureOfAnOldToolHasAnotherName) {
    const char* enclosure = "### Enclosure Properties Information ###";
    std::vector<CRow> rows = Drive("PD3", "None", "-");
    rows.push_back({"Physical Drive Information", enclosure});
    rows.push_back({enclosure, "Enclosure ID", "", "FALSE"});
    rows.push_back({enclosure, "Enclosure No.", "252"});
    rows.push_back({enclosure, "Slot No.", "4"});
    const qorctl::CPhysicalDrive drive = Build(rows).physicalDrives.at(0);
    EXPECT_EQ(drive.place.enclosure, 252);
    EXPECT_EQ(drive.place.slot, 4);
}

const std::vector<CRow> GROUP = {
    {"", "Logical Drive Information"},
    {"Logical Drive Information", GENERAL},
    {GENERAL, "RG No.", "RG1"},
    {GENERAL, "RAID Level", "RAID 5"},
    {GENERAL, "Total Size", "2TB"},
    {GENERAL, "LD List"},
    {"LD List", "LD No.", "LD1"},
    {"LD List", "State", "Optimal"},
    {"LD List", "Capacity", "1TB"},
    {"LD List", "Name", "a, b"},
    {GENERAL, "Stripe Size", "64KB"},
    {GENERAL, "Associated CacheCade LD", "", "FALSE"},
    {"Logical Drive Information", "### LD Settings Information ###"},
    {"### LD Settings Information ###", "Read Policy", "first"},
    {"Logical Drive Information", GENERAL},
    {GENERAL, "LD List"},
    {"LD List", "LD No.", "LD2"},
    {"LD List", "State", "Degraded"},
    {GENERAL, "Associated CacheCade LD"},
    {"Associated CacheCade LD", "LD No.", "LD0"},
    {"Associated CacheCade LD", "Capacity", "1GB"},
    {GENERAL, "Associated CacheCade LD"},
    {"Associated CacheCade LD", "LD No.", "LD1"},
    {"Logical Drive Information", "### LD Settings Information ###"},
    {"### LD Settings Information ###", "Read Policy", "second"},
    {"### LD Settings Information ###", "PD List"},
    {"PD List", "PD No.", "PD4"},
    {"PD List", "Enclosure No.", "252"},
    {"PD List", "Slot No.", "9"},
};

TEST(InventoryTest, GroupHasItsKeysLogicalDrivesAndMembers) {
    const CInventory inventory = Build(GROUP, 0);
    ASSERT_EQ(inventory.raidGroups.size(), 1U);
    const qorctl::CRaidGroup& group = inventory.raidGroups[0];
    EXPECT_EQ(group.controller, 0);
    EXPECT_EQ(group.name, "RG1");
    EXPECT_EQ(group.raidLevel, "RAID 5");
    EXPECT_EQ(group.size->number, 2LL << 40U);
    EXPECT_EQ(group.logicalDrives, (std::vector<long long>{1, 2}));
    ASSERT_EQ(group.members.size(), 1U);
    EXPECT_EQ(group.members[0].drive, 4);
    EXPECT_EQ(group.members[0].place.enclosure, 252);
    EXPECT_EQ(group.members[0].place.slot, 9);
    ASSERT_EQ(group.sections.size(), 1U);
    EXPECT_EQ(group.sections[0].entries.size(), 3U);
}

TEST(InventoryTest, LogicalDrivesOfOneGroupKeepTheirOwnSections) {
    const CInventory inventory = Build(GROUP, 0);
    ASSERT_EQ(inventory.logicalDrives.size(), 2U);
    const qorctl::CLogicalDrive& first = inventory.logicalDrives[0];
    EXPECT_EQ(first.number, 1);
    EXPECT_EQ(first.name, "a, b");
    EXPECT_EQ(first.state, "Optimal");
    EXPECT_EQ(first.capacity->number, 1LL << 40U);
    EXPECT_EQ(first.group, "RG1");
    EXPECT_EQ(first.raidLevel, "RAID 5");
    EXPECT_EQ(first.stripeSize->number, 65536);
    EXPECT_TRUE(first.caches.empty());
    EXPECT_EQ(qorctl::FindEntry(first.sections, "LD Settings Information", "Read Policy")->value,
              "first");
    const qorctl::CLogicalDrive& second = inventory.logicalDrives[1];
    EXPECT_EQ(second.state, "Degraded");
    EXPECT_FALSE(second.stripeSize);
    EXPECT_EQ(qorctl::FindEntry(second.sections, "LD Settings Information", "Read Policy")->value,
              "second");
}

TEST(InventoryTest, CacheNamesTheLogicalDrivesThatItSpeedsUp) {
    const std::vector<qorctl::CLinkedDrive> caches = Build(GROUP).logicalDrives.at(1).caches;
    ASSERT_EQ(caches.size(), 2U);
    EXPECT_EQ(caches[0].number, 0);
    EXPECT_EQ(caches[0].capacity->number, 1LL << 30U);
    EXPECT_FALSE(caches[0].state);
    EXPECT_EQ(caches[1].number, 1);
}

TEST(InventoryTest, SectionOfSeveralLogicalDrivesIsTheLastOnes) {
    const CInventory inventory = Build({{"", "Logical Drive Information"},
                                        {"Logical Drive Information", GENERAL},
                                        {GENERAL, "RG No.", "RG0"},
                                        {GENERAL, "LD List"},
                                        {"LD List", "LD No.", "LD3"},
                                        {GENERAL, "LD List"},
                                        {"LD List", "LD No.", "LD4"},
                                        {GENERAL, "RAID Level", "RAID 10"}});
    ASSERT_EQ(inventory.logicalDrives.size(), 2U);
    EXPECT_EQ(inventory.raidGroups.at(0).raidLevel, "RAID 10");
    EXPECT_EQ(inventory.logicalDrives[0].sections.at(0).entries.size(), 1U);
    EXPECT_EQ(inventory.logicalDrives[1].sections.at(0).entries.size(), 2U);
}

TEST(InventoryTest, SmartRowsBecomeAttributes) {
    const char* smart = "### SMART Information ###";
    std::vector<CRow> rows = Drive("PD5", "LD1", "RG1");
    const std::vector<CRow> more = {{"Physical Drive Information", smart},
                                    {smart, "Temperature", "35C"},
                                    {smart, "Power-On Time", "14630h"},
                                    {smart, "SMART Detail(SATA)"},
                                    {"SMART Detail(SATA)", "ID", "9"},
                                    {"SMART Detail(SATA)", "Attribute", "Power-On Hours"},
                                    {"SMART Detail(SATA)", "Current", "98"},
                                    {"SMART Detail(SATA)", "Raw Data", "14630"},
                                    {smart, "SMART Detail(SAS)"},
                                    {"SMART Detail(SAS)", "Attribute", "Grown Defects"},
                                    {"SMART Detail(SAS)", "Value", "3"},
                                    {"SMART Detail(SAS)", "Threshold", "-"}};
    rows.insert(rows.end(), more.begin(), more.end());
    const auto drive = Build(rows, 0).physicalDrives.at(0);
    ASSERT_TRUE(drive.smart);
    EXPECT_EQ(drive.smart->temperature->number, 35);
    EXPECT_EQ(drive.smart->powerOnTime->number, 14630);
    EXPECT_FALSE(drive.temperature);
    ASSERT_EQ(drive.smart->attributes.size(), 2U);
    EXPECT_EQ(drive.smart->attributes[0].id, 9);
    EXPECT_EQ(drive.smart->attributes[0].name, "Power-On Hours");
    EXPECT_EQ(drive.smart->attributes[0].current->number, 98);
    EXPECT_EQ(drive.smart->attributes[0].value->number, 14630);
    EXPECT_EQ(drive.smart->attributes[1].value->number, 3);
    EXPECT_FALSE(drive.smart->attributes[1].threshold);
    EXPECT_FALSE(drive.smart->attributes[1].id);
}

TEST(InventoryTest, DriveWithoutSmartSectionHasNone) {
    EXPECT_FALSE(Build(Drive("PD5", "LD1", "RG1")).physicalDrives.at(0).smart);
}

TEST(InventoryTest, PcieSsdIsRead) {
    const char* health = "### Health Information ###";
    const CInventory inventory = Build({{"", "PCIe SSD Information"},
                                        {"PCIe SSD Information", GENERAL},
                                        {GENERAL, "Bus No.", "177"},
                                        {GENERAL, "Capacity", "1205GB"},
                                        {GENERAL, "Status", "Healthy"},
                                        {"PCIe SSD Information", health},
                                        {health, "Temperature", "47C"},
                                        {health, "Percentage Used", "12%"},
                                        {health, "Data Written", "318TB"}});
    ASSERT_EQ(inventory.pcieSsds.size(), 1U);
    EXPECT_EQ(inventory.pcieSsds[0].bus, 177);
    EXPECT_EQ(inventory.pcieSsds[0].capacity->number, 1205000000000);
    EXPECT_EQ(inventory.pcieSsds[0].status, "Healthy");
    EXPECT_EQ(inventory.pcieSsds[0].temperature->number, 47);
    EXPECT_EQ(inventory.pcieSsds[0].used->number, 12);
    EXPECT_EQ(inventory.pcieSsds[0].written->number, 318000000000000);
}

TEST(InventoryTest, RootOfAnUnknownKindAndOrphansAreKept) {
    const CInventory inventory = Build({{"", "Tape Information", "x"},
                                        {"Tape Information", "### Reel ###"},
                                        {"### Reel ###", "Length", "9m"},
                                        {"nobody", "Lost", "1"}});
    ASSERT_EQ(inventory.others.size(), 2U);
    EXPECT_EQ(inventory.others[0].name, "Tape Information");
    EXPECT_EQ(inventory.others[0].value, "x");
    EXPECT_EQ(qorctl::FindEntry(inventory.others[0].sections, "Reel", "Length")->value, "9m");
    EXPECT_EQ(inventory.others[1].name, "Lost");
}

TEST(InventoryTest, ItemsDeeperThanGroupsAreKeptInTheGroup) {
    const CInventory inventory = Build({{"", "Tape Information"},
                                        {"Tape Information", "### Reel ###"},
                                        {"### Reel ###", "Group", "own"},
                                        {"Group", "Inner", "1"},
                                        {"Inner", "Innermost", "2"}});
    const qorctl::CEntry& group = inventory.others.at(0).sections.at(0).entries.at(0);
    ASSERT_TRUE(group.isGroup);
    ASSERT_EQ(group.keys.size(), 3U);
    EXPECT_EQ(group.keys[0].key, "");
    EXPECT_EQ(group.keys[0].value, "own");
    EXPECT_EQ(group.keys[1].key, "Inner");
    EXPECT_EQ(group.keys[2].key, "Innermost");
}

TEST(InventoryTest, EmptyListIsAnEmptyInventory) {
    const CInventory inventory = Build({});
    EXPECT_TRUE(inventory.controllers.empty());
    EXPECT_TRUE(inventory.others.empty());
}

}  // namespace
