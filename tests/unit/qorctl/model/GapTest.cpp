#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/Gap.h"

namespace {

using qorctl::CInventory;
using testing::ElementsAre;
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

std::vector<std::string> Texts(const CInventory& inventory) {
    std::vector<std::string> texts;
    for (const qorctl::CGap& gap : qorctl::FindMissingDrives(inventory)) {
        texts.push_back(qorctl::GapText(gap));
    }
    return texts;
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

TEST(GapTest, DriveThatIsReportedTwiceDoesNotStandForAnother) {
    CInventory inventory = WithController(2, 2);
    for (int times = 0; times < 2; ++times) {
        AddDrive(inventory, 2);
        inventory.physicalDrives.back().number = 3;
        qorctl::CLogicalDrive& drive = inventory.logicalDrives.emplace_back();
        drive.controller = 2;
        drive.number = 1;
    }
    EXPECT_THAT(
        Texts(inventory),
        ElementsAre("controller 2 states 2 logical drives, 1 reported: LD1 stands there 2 times",
                    "controller 2 states 2 drives, 1 reported: PD3 stands there 2 times"));
}

TEST(GapTest, ControllersWithOneNumberHideEachOther) {
    CInventory inventory = WithController(0, 1);
    inventory.controllers.push_back(inventory.controllers.front());
    AddDrive(inventory, 2);
    EXPECT_THAT(Texts(inventory), ElementsAre("controller 2 is reported 2 times; what the others "
                                              "with that number have is not known"));
}

// A controller need not state how many it has.
TEST(GapTest, WhatIsNamedElsewhereAndNotReportedIsMissing) {
    CInventory inventory;
    inventory.controllers.emplace_back().number = 2;
    qorctl::CRaidGroup& group = inventory.raidGroups.emplace_back();
    group.controller = 2;
    group.name = "RG0";
    group.members = {{.drive = 4, .place = {}},
                     {.drive = 5, .place = {}},
                     {.drive = 6, .place = {}},
                     {.drive = {}, .place = {}}};
    AddDrive(inventory, 2);
    inventory.physicalDrives.back().number = 4;
    inventory.physicalDrives.back().logicalDrive = 7;
    EXPECT_THAT(Texts(inventory),
                ElementsAre("controller 2 names logical drives that are not reported: LD7",
                            "controller 2 names drives that are not reported: PD5, PD6"));
}

TEST(GapTest, GroupThatStatesMoreLogicalDrivesThanItHasIsIncomplete) {
    CInventory inventory;
    inventory.controllers.emplace_back().number = 2;
    qorctl::CRaidGroup& group = inventory.raidGroups.emplace_back();
    group.controller = 2;
    group.name = "RG1";
    group.logicalDrives = {3};
    group.logicalDriveCount = {{"2", 2}};
    inventory.logicalDrives.emplace_back().controller = 2;
    inventory.logicalDrives.back().number = 3;
    EXPECT_THAT(Texts(inventory),
                ElementsAre("controller 2 states 2 logical drives in RG1, 1 reported"));
}

}  // namespace
