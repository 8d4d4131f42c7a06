#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/DriveSearch.h"

namespace {

using qorctl::CInventory;
using qorctl::CPhysicalDrive;

CInventory Server() {
    CInventory inventory;
    for (const long long number : {7, 8}) {
        CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
        drive.controller = 0;
        drive.number = number;
        drive.place = {.enclosure = 252, .slot = number - 7};
    }
    inventory.physicalDrives[0].serial = "8";
    inventory.physicalDrives[1].wwn = "0x5000C5";
    return inventory;
}

size_t Count(const std::string& word) {
    const CInventory inventory = Server();
    return FindDrives(inventory, word).size();
}

TEST(DriveSearchTest, EveryMeaningOfAWordCounts) {
    EXPECT_EQ(Count("7"), 1U);
    EXPECT_EQ(Count("8"), 2U);  // a number here and a serial number there
    EXPECT_EQ(Count("PD8"), 1U);
    EXPECT_EQ(Count("252:0"), 1U);
    EXPECT_EQ(Count("5000c5"), 1U);
}

TEST(DriveSearchTest, WhatNamesNoDriveFindsNone) {
    for (const char* word : {"", "PD", "PD9", "252:", ":0", "252:0:0", "252:2", "0:252:0", "0x"}) {
        EXPECT_EQ(Count(word), 0U) << word;
    }
    EXPECT_TRUE(qorctl::FindDrives({}, "").empty());
    CInventory silent;
    silent.physicalDrives.emplace_back();
    EXPECT_TRUE(qorctl::FindDrives(silent, ":").empty());
}

TEST(DriveSearchTest, AddressNeedsAllItsNumbers) {
    CInventory inventory = Server();
    CPhysicalDrive& drive = inventory.physicalDrives[1];
    ASSERT_TRUE(AddressOf(drive));
    EXPECT_EQ(AddressOf(drive)->slot, 1);
    drive.place.slot = qorctl::MAX_ADDRESS_NUMBER + 1LL;
    EXPECT_FALSE(AddressOf(drive));
    drive.place.slot = 1;
    drive.place.enclosure.reset();
    EXPECT_FALSE(AddressOf(drive));
}

}  // namespace
