#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "format/Table.h"

namespace {

using qorctl::CInventory;
using testing::HasSubstr;
using testing::Not;

CInventory OneDrive() {
    CInventory inventory;
    qorctl::CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
    drive.controller = 0;
    drive.number = 3;
    drive.place = {.enclosure = 252, .slot = 3};
    drive.statusDetail = "ONLINE";
    drive.group = "RG1";
    drive.use = "LD1";
    drive.temperature = {{"31C", 31}};
    drive.mediaErrors = {{"0", 0}};
    drive.otherErrors = {{"7", 7}};
    drive.capacity = {{"558.912GB", std::nullopt}};
    drive.serial = "S0M2KX41";
    return inventory;
}

std::string Tables(const CInventory& inventory, std::string_view rule, size_t width) {
    const std::vector<qorctl::CHealthFinding> findings = {
        {qorctl::EHealth::WARNING, rule, ObjectName(inventory.physicalDrives[0]), "x"}};
    return FormatTables(inventory, qorctl::CProblemMarks(findings), {.width = width});
}

TEST(TableTest, ColumnThatAFindingSpeaksOfNeverDropsOut) {
    const CInventory inventory = OneDrive();
    EXPECT_THAT(Tables(inventory, "drive-foreign", 60), Not(HasSubstr("OTHER  ")));
    EXPECT_EQ(Tables(inventory, "drive-other-errors", 50),
              "   CTRL  PD  ENC:SLOT  STATUS  OTHER  SERIAL\n"
              "!     0   3     252:3  ONLINE      7  S0M2KX41\n"
              "Not shown: GROUP, ROLE, TEMP, MEDIA, CAPACITY\n");
}

TEST(TableTest, WhatDroppedIsNamedBelow) {
    EXPECT_EQ(Tables(OneDrive(), "drive-temperature", 42),
              "   CTRL  PD  ENC:SLOT  STATUS  TEMP\n"
              "!     0   3     252:3  ONLINE   31C\n"
              "Not shown: GROUP, ROLE, MEDIA, OTHER,\n"
              "  CAPACITY, SERIAL\n");
}

TEST(TableTest, NothingIsNamedWhereAllIsShown) {
    EXPECT_THAT(Tables(OneDrive(), "drive-temperature", qorctl::ANY_WIDTH),
                Not(HasSubstr("Not shown")));
}

}  // namespace
