#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/InventoryDiff.h"

namespace {

using qorctl::CInventory;
using qorctl::CPhysicalDrive;
using qorctl::CQuantity;
using testing::ElementsAre;
using testing::IsEmpty;

CInventory OneController() {
    CInventory inventory;
    qorctl::CController controller;
    controller.number = 0;
    controller.batteryStatus = "Normal";
    inventory.controllers.push_back(controller);
    qorctl::CLogicalDrive logicalDrive;
    logicalDrive.controller = 0;
    logicalDrive.number = 1;
    logicalDrive.state = "Optimal";
    inventory.logicalDrives.push_back(logicalDrive);
    CPhysicalDrive drive;
    drive.controller = 0;
    drive.number = 3;
    drive.statusDetail = "ONLINE";
    drive.use = "LD1";
    drive.group = "RG0";
    drive.serial = "A";
    drive.temperature = CQuantity{"31C", 31};
    drive.mediaErrors = CQuantity{"2", 2};
    inventory.physicalDrives.push_back(drive);
    qorctl::CPcieSsd ssd;
    ssd.bus = 177;
    ssd.status = "Healthy";
    inventory.pcieSsds.push_back(ssd);
    return inventory;
}

std::vector<std::string> Changes(const CInventory& before, const CInventory& after) {
    std::vector<std::string> texts;
    for (const qorctl::CChange& change : CompareInventories(before, after)) {
        texts.push_back(DescribeChange(change));
    }
    return texts;
}

TEST(InventoryDiffTest, SameServerHasNoChanges) {
    EXPECT_THAT(Changes(OneController(), OneController()), IsEmpty());
    EXPECT_THAT(Changes({}, {}), IsEmpty());
}

TEST(InventoryDiffTest, ChangesOfEachKindOfObjectAreTold) {
    CInventory after = OneController();
    after.controllers[0].batteryStatus = "Failed";
    after.logicalDrives[0].state = "Degraded";
    after.physicalDrives[0].statusDetail = "FAILED";
    after.physicalDrives[0].use = "None";
    after.physicalDrives[0].group.reset();
    after.physicalDrives[0].serial = "B";
    after.physicalDrives[0].mediaErrors = CQuantity{"3", 3};
    after.pcieSsds[0].status = "Warning";
    EXPECT_THAT(Changes(OneController(), after),
                ElementsAre("controller 0: battery Normal -> Failed",
                            "controller 0 logical drive LD1: Optimal -> Degraded",
                            "controller 0 drive PD3 (serial B): ONLINE -> FAILED",
                            "controller 0 drive PD3 (serial B): use LD1 of RG0 -> None",
                            "controller 0 drive PD3 (serial B): serial number A -> B",
                            "controller 0 drive PD3 (serial B): media errors 2 -> 3",
                            "PCIe SSD 177: Healthy -> Warning"));
}

TEST(InventoryDiffTest, ProgressIsAChangeWhileItLasts) {
    CInventory online = OneController();
    CInventory rebuilt = OneController();
    rebuilt.physicalDrives[0].statusDetail = "REBUILD";
    rebuilt.physicalDrives[0].progress = CQuantity{"10%", 10};
    CInventory later = rebuilt;
    later.physicalDrives[0].progress = CQuantity{"50%", 50};
    EXPECT_THAT(Changes(online, rebuilt),
                ElementsAre("controller 0 drive PD3 (serial A): ONLINE -> REBUILD 10%"));
    EXPECT_THAT(Changes(rebuilt, later),
                ElementsAre("controller 0 drive PD3 (serial A): progress 10% -> 50%"));
    EXPECT_THAT(Changes(later, online),
                ElementsAre("controller 0 drive PD3 (serial A): REBUILD -> ONLINE"));
}

TEST(InventoryDiffTest, ChangeOfADriveKnowsTheDriveAndNumbers) {
    CInventory after = OneController();
    after.physicalDrives[0].mediaErrors = CQuantity{"3", 3};
    const std::vector<qorctl::CChange> changes = CompareInventories(OneController(), after);
    ASSERT_EQ(changes.size(), 1U);
    ASSERT_TRUE(changes[0].drive);
    EXPECT_EQ(changes[0].drive->serial, "A");
    EXPECT_EQ(changes[0].before, (CQuantity{"2", 2}));
    EXPECT_EQ(changes[0].after, (CQuantity{"3", 3}));
}

TEST(InventoryDiffTest, TemperatureIsNoChange) {
    CInventory after = OneController();
    after.physicalDrives[0].temperature = CQuantity{"45C", 45};
    EXPECT_THAT(Changes(OneController(), after), IsEmpty());
}

TEST(InventoryDiffTest, ValueThatIsNoLongerReportedIsAChange) {
    CInventory after = OneController();
    after.physicalDrives[0].statusDetail.reset();
    EXPECT_THAT(Changes(OneController(), after),
                ElementsAre("controller 0 drive PD3 (serial A): ONLINE -> (not reported)"));
}

TEST(InventoryDiffTest, ObjectsThatAppearAndGoAreToldWithTheirState) {
    CInventory after = OneController();
    after.physicalDrives[0].number = 4;
    EXPECT_THAT(Changes(OneController(), after),
                ElementsAre("controller 0 drive PD4 (serial A): appeared, ONLINE",
                            "controller 0 drive PD3 (serial A): gone, ONLINE"));
    EXPECT_THAT(Changes(OneController(), {}),
                ElementsAre("controller 0: gone", "controller 0 logical drive LD1: gone, Optimal",
                            "controller 0 drive PD3 (serial A): gone, ONLINE",
                            "PCIe SSD 177: gone, Healthy"));
}

TEST(InventoryDiffTest, ObjectsOfTheSameNameAreToldApart) {
    CInventory before = OneController();
    before.physicalDrives.push_back(before.physicalDrives[0]);
    CInventory after = before;
    after.physicalDrives[1].statusDetail = "FAILED";
    EXPECT_THAT(Changes(before, after),
                ElementsAre("controller 0 drive PD3 (serial A) (2): ONLINE -> FAILED"));
}

}  // namespace
