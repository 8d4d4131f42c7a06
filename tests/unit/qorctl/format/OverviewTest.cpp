#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "format/Overview.h"

namespace {

using qorctl::CAnswer;
using qorctl::CInventory;
using qorctl::CTextStyle;
using testing::HasSubstr;
using testing::Le;
using testing::Not;

constexpr long long GROUP_DRIVES = 8;

void AddGroup(CInventory& inventory, long long controller, long long number) {
    const std::string name = "RG" + std::to_string(number);
    qorctl::CRaidGroup& group = inventory.raidGroups.emplace_back();
    group.controller = controller;
    group.name = name;
    qorctl::CLogicalDrive& logical = inventory.logicalDrives.emplace_back();
    logical.controller = controller;
    logical.number = number;
    logical.group = name;
    logical.state = "Optimal";
    for (long long i = 0; i < GROUP_DRIVES; ++i) {
        qorctl::CPhysicalDrive& drive = inventory.physicalDrives.emplace_back();
        drive.controller = controller;
        drive.number = number * GROUP_DRIVES + i;
        drive.group = name;
        drive.statusDetail = "ONLINE";
    }
}

CAnswer HealthyServer(long long controllers, long long groups, long long ssds) {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    for (long long i = 0; i < controllers; ++i) {
        answer.inventory.controllers.emplace_back().number = i;
        for (long long group = 0; group < groups; ++group) {
            AddGroup(answer.inventory, i, group);
        }
    }
    for (long long i = 0; i < ssds; ++i) {
        qorctl::CPcieSsd& ssd = answer.inventory.pcieSsds.emplace_back();
        ssd.bus = i;
        ssd.status = "Healthy";
    }
    return answer;
}

std::string Overview(const CAnswer& answer, const CTextStyle& style = {}) {
    return qorctl::FormatOverview(answer, qorctl::JudgeAnswer(answer), style);
}

size_t CountLines(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(OverviewTest, HealthyServerOfAnySizeFitsAScreen) {
    const struct {
        long long controllers, groups, ssds;
    } rows[] = {{1, 1, 0}, {1, 17, 0}, {1, 240, 0}, {4, 5, 2},  {8, 1, 1},
                {9, 1, 0}, {16, 2, 0}, {127, 9, 0}, {0, 0, 64}, {18, 1, 3}};
    for (const auto& row : rows) {
        const std::string text =
            Overview(HealthyServer(row.controllers, row.groups, row.ssds), {.width = 80});
        EXPECT_THAT(CountLines(text), Le(23U)) << text;
        EXPECT_EQ(text.substr(0, 4), "OK: ");
    }
    EXPECT_THAT(Overview(HealthyServer(127, 9, 0)), HasSubstr("127 controllers  OK"));
    EXPECT_THAT(Overview(HealthyServer(0, 0, 64)), HasSubstr("64 PCIe SSDs  OK"));
}

TEST(OverviewTest, ProblemIsShownHoweverMuchIsHealthy) {
    CAnswer answer = HealthyServer(127, 9, 64);
    qorctl::CPhysicalDrive& drive = answer.inventory.physicalDrives[GROUP_DRIVES * 9 * 5];
    drive.statusDetail = "FAILED";
    drive.serial = "S1";
    answer.inventory.pcieSsds[7].status = "Critical";
    const std::string text = Overview(answer);
    EXPECT_THAT(text, HasSubstr("CRITICAL: 127 controllers"));
    EXPECT_THAT(text, HasSubstr("Controller 5 drive PD0 (serial S1) is FAILED: it is out of "
                                "service; replace it.\n"));
    EXPECT_THAT(text, HasSubstr("!!  controller 5     CRITICAL  9 RAID groups, 72 drives\n"
                                "!!    RG0            Optimal   LD0, 8 drives\n"
                                "!!      PD0          FAILED    serial S1\n"
                                "    126 controllers  OK\n"
                                "!!  PCIe SSD 7       Critical\n"
                                "    63 PCIe SSDs     OK\n"));
}

TEST(OverviewTest, SentencesAreTheWorstTen) {
    CAnswer answer = HealthyServer(1, 4, 0);
    for (qorctl::CPhysicalDrive& drive : answer.inventory.physicalDrives) {
        drive.mediaErrors = {{"1", 1}};
    }
    answer.inventory.physicalDrives.back().statusDetail = "FAILED";
    const std::string text = Overview(answer);
    EXPECT_THAT(text, HasSubstr("\n\nController 0 drive PD31 is FAILED"));
    EXPECT_THAT(text, HasSubstr("And 22 more: \"qorctl check\" lists them.\n"));
}

TEST(OverviewTest, SpareAndUnassignedDrivesAreCounted) {
    CAnswer answer = HealthyServer(1, 1, 0);
    for (const qorctl::EDriveRole role :
         {qorctl::EDriveRole::GLOBAL_SPARE, qorctl::EDriveRole::UNASSIGNED,
          qorctl::EDriveRole::UNASSIGNED}) {
        qorctl::CPhysicalDrive& drive = answer.inventory.physicalDrives.emplace_back();
        drive.controller = 0;
        drive.role = role;
        drive.statusDetail = "HOT SPARE";
    }
    EXPECT_THAT(Overview(answer),
                HasSubstr("no RAID group           1 global spare, 2 unassigned"));
}

TEST(OverviewTest, TextsOfTheToolAreMadeVisible) {
    CAnswer answer = HealthyServer(1, 1, 0);
    answer.inventory.raidGroups[0].raidLevel = "RAID\x1b[2J";
    answer.inventory.controllers[0].product = "a\nb";
    EXPECT_THAT(Overview(answer), testing::AllOf(HasSubstr("RAID\\x1b[2J"), HasSubstr("a\\nb"),
                                                 Not(HasSubstr("\x1b"))));
}

}  // namespace
