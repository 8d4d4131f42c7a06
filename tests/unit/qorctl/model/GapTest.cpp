#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/Gap.h"

namespace {

using qorctl::CInventory;
using testing::IsEmpty;
using testing::SizeIs;

CInventory WithController(long long logicalDrives, long long drives) {
    CInventory inventory;
    qorctl::CController& controller = inventory.controllers.emplace_back();
    controller.number = 2;
    controller.logicalDriveCount = {{std::to_string(logicalDrives), logicalDrives}};
    controller.physicalDriveCount = {{std::to_string(drives), drives}};
    return inventory;
}

void AddDrive(CInventory& inventory, long long controller) {
    inventory.physicalDrives.emplace_back().controller = controller;
}

TEST(GapTest, WhatAControllerStatesAndTheReportLeavesOutIsMissing) {
    CInventory inventory = WithController(1, 2);
    AddDrive(inventory, 2);
    AddDrive(inventory, 0);  // another controller's
    const std::vector<qorctl::CGap> gaps = qorctl::FindMissingDrives(inventory);
    ASSERT_THAT(gaps, SizeIs(2));
    EXPECT_EQ(qorctl::GapText(gaps[0]), "controller 2 states 1 logical drives, 0 reported");
    EXPECT_EQ(qorctl::GapText(gaps[1]), "controller 2 states 2 drives, 1 reported");
    EXPECT_EQ(gaps[1].rule, "report-incomplete");
    EXPECT_EQ(gaps[1].object, "controller 2");
}

TEST(GapTest, ReportWithAllThatTheControllerStatesHasNoGap) {
    CInventory inventory = WithController(0, 1);
    AddDrive(inventory, 2);
    EXPECT_THAT(qorctl::FindMissingDrives(inventory), IsEmpty());
}

TEST(GapTest, CountThatIsNoNumberStatesNothing) {
    CInventory inventory = WithController(0, 0);
    inventory.controllers[0].physicalDriveCount = {{"many", std::nullopt}};
    EXPECT_THAT(qorctl::FindMissingDrives(inventory), IsEmpty());
}

}  // namespace
