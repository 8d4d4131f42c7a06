#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../terminal/Columns.h"
#include "watch/WatchScreen.h"

namespace {

using qorctl::CTick;
using testing::ElementsAre;

constexpr int64_t NOVEMBER = 1795168800;  // 2026-11-20T10:00:00Z
constexpr qorctl::CTextStyle UTF8 = {.utf8 = true, .colour = false};
constexpr qorctl::CScreenSize LARGE = {.rows = 50, .columns = 200};

CTick Answer() {
    CTick tick;
    tick.wallTime = NOVEMBER;
    tick.status = qorctl::EHealth::CRITICAL;
    tick.answer.outcome = qorctl::EOutcome::ANSWERED;
    qorctl::CLogicalDrive logicalDrive;
    logicalDrive.controller = 0;
    logicalDrive.number = 1;
    logicalDrive.state = "Degraded";
    logicalDrive.name = "Däta";
    logicalDrive.raidLevel = "RAID 5";
    logicalDrive.capacity = qorctl::CQuantity{"4.000TB", std::nullopt};
    tick.answer.inventory.logicalDrives.push_back(logicalDrive);
    qorctl::CPhysicalDrive drive;
    drive.controller = 0;
    drive.number = 3;
    drive.statusDetail = "REBUILD";
    drive.use = "LD1";
    drive.group = "RG0";
    drive.temperature = qorctl::CQuantity{"31C", 31};
    drive.progress = qorctl::CQuantity{"42%", 42};
    tick.answer.inventory.physicalDrives.push_back(drive);
    tick.health.findings.push_back({qorctl::EHealth::CRITICAL, "logical-drive-degraded",
                                    "controller 0 logical drive LD1", "Degraded"});
    tick.changes.push_back({qorctl::EChange::CHANGED, "controller 0 logical drive LD1", "state",
                            qorctl::CQuantity{"Optimal", std::nullopt},
                            qorctl::CQuantity{"Degraded", std::nullopt}});
    return tick;
}

TEST(WatchScreenTest, StatusFindingsChangesAndObjectsAreShown) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    EXPECT_THAT(
        screen.Lines(LARGE, UTF8),
        ElementsAre("CRITICAL  qorctl watch, every 10 s: 2026-11-20T10:00:00Z",
                    "0 controllers, 1 logical drive, 1 drive, 0 PCIe SSDs",
                    "CRITICAL: controller 0 logical drive LD1: Degraded", "", "Latest changes",
                    "10:00:00Z controller 0 logical drive LD1: Optimal -> Degraded", "",
                    "    CTRL  LD  NAME  STATE     CAPACITY  LEVEL",
                    "!!     0   1  Däta  Degraded   4.000TB  RAID 5", "",
                    "CTRL  PD  STATUS   PROGRESS  GROUP  ROLE  TEMP",
                    "   0   3  REBUILD       42%  RG0    LD1    31C"));
}

TEST(WatchScreenTest, FailedRequestStandsAboveTheLastAnswer) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    CTick failed;
    failed.wallTime = NOVEMBER + 10;
    failed.answer.sentence = "the RAID tool did not answer in time";
    screen.Take(failed);
    const std::vector<std::string> lines = screen.Lines(LARGE, UTF8);
    EXPECT_EQ(lines[0], "UNKNOWN  qorctl watch, every 10 s: 2026-11-20T10:00:10Z");
    EXPECT_EQ(lines[1], "no answer: the RAID tool did not answer in time");
    EXPECT_EQ(lines[2], "the last answer, of 2026-11-20T10:00:00Z:");
    EXPECT_EQ(lines.back(), "   0   3  REBUILD       42%  RG0    LD1    31C");
}

TEST(WatchScreenTest, FailureWithoutAnAnswerBeforeStandsAlone) {
    qorctl::CWatchScreen screen(10);
    CTick failed;
    failed.answer.sentence = "the RAID tool is not installed";
    screen.Take(failed);
    EXPECT_THAT(screen.Lines(LARGE, UTF8),
                ElementsAre("UNKNOWN  qorctl watch, every 10 s: 1970-01-01T00:00:00Z",
                            "no answer: the RAID tool is not installed"));
}

TEST(WatchScreenTest, LinesFitTheScreen) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    EXPECT_THAT(screen.Lines({.rows = 3, .columns = 12}, UTF8),
                ElementsAre("CRITICAL  qo", "0 controller", "... 17 more "));
    EXPECT_THAT(screen.Lines({.rows = 1, .columns = 40}, UTF8), ElementsAre("... 14 more lines"));
}

TEST(WatchScreenTest, NarrowScreenLeavesTheProductOut) {
    CTick tick = Answer();
    const qorctl::CDriveIdentity drive = {.controller = 0,
                                          .place = {.enclosure = 252, .slot = 3},
                                          .number = 3,
                                          .serial = "S1",
                                          .product = "ST600"};
    tick.health.findings = {
        {qorctl::EHealth::CRITICAL, "drive-failed", DriveName(drive), "FAILED", drive}};
    tick.changes = {{qorctl::EChange::GONE, DriveName(drive), "state",
                     qorctl::CQuantity{"FAILED", std::nullopt}, std::nullopt, drive}};
    qorctl::CWatchScreen screen(10);
    screen.Take(tick);
    std::vector<std::string> lines = screen.Lines({.rows = 50, .columns = 67}, UTF8);
    EXPECT_EQ(lines[2], "CRITICAL: controller 0 drive 252:3 (PD3, serial S1, ST600): FAILED");
    EXPECT_EQ(lines[5], "10:00:00Z controller 0 drive 252:3 (PD3, serial S1): gone, FAILED");
    lines = screen.Lines({.rows = 50, .columns = 60}, UTF8);
    EXPECT_EQ(lines[2], "CRITICAL: controller 0 drive 252:3 (PD3, serial S1): FAILED");
    EXPECT_EQ(lines[5], "10:00:00Z controller 0 drive 252:3 (PD3, serial S1): gone, F");
}

TEST(WatchScreenTest, CharactersOfSeveralBytesAreCutWhole) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    CTick failed;
    failed.answer.sentence = "Däta";
    screen.Take(failed);
    EXPECT_EQ(screen.Lines({.rows = 50, .columns = 13}, UTF8)[1], "no answer: Dä");
    EXPECT_EQ(screen.Lines(LARGE, {})[1], "no answer: D\\xc3\\xa4ta");
}

TEST(WatchScreenTest, LogicalDrivesNamedInAllScriptsLineUp) {
    CTick tick = Answer();
    std::vector<qorctl::CLogicalDrive>& drives = tick.answer.inventory.logicalDrives;
    const qorctl::CLogicalDrive pattern = drives.front();
    drives.clear();
    for (const qortest::CWideName& name : qortest::WIDE_NAMES) {
        drives.push_back(pattern);
        drives.back().name = name.text;
    }
    qorctl::CWatchScreen screen(10);
    screen.Take(tick);
    const std::vector<std::string> lines = screen.Lines(LARGE, UTF8);
    EXPECT_EQ(lines[7].find("STATE"), 22U);
    for (size_t i = 0; i < drives.size(); ++i) {
        EXPECT_EQ(qortest::Flat(lines[8 + i]).find("Degraded"), 22U) << lines[8 + i];
    }
}

TEST(WatchScreenTest, WideCharactersAreCutAtTheEdgeOfTheScreen) {
    qorctl::CWatchScreen screen(10);
    CTick failed;
    failed.answer.sentence = "\u6570\u636E";
    screen.Take(failed);
    EXPECT_EQ(screen.Lines({.rows = 50, .columns = 14}, UTF8)[1], "no answer: \u6570");
    EXPECT_EQ(screen.Lines({.rows = 50, .columns = 15}, UTF8)[1], "no answer: \u6570\u636E");
}

TEST(WatchScreenTest, ProblemsHaveColoursWhereTheStyleHasThem) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    const std::vector<std::string> lines = screen.Lines(LARGE, {.utf8 = true, .colour = true});
    EXPECT_EQ(lines[2], "\x1b[31mCRITICAL: controller 0 logical drive LD1: Degraded\x1b[0m");
    EXPECT_EQ(lines[8], "\x1b[31m!!     0   1  Däta  Degraded   4.000TB  RAID 5\x1b[0m");
}

TEST(WatchScreenTest, OnlyTheLatestChangesAreKept) {
    qorctl::CWatchScreen screen(10);
    for (int i = 0; i < 12; ++i) {
        CTick tick = Answer();
        tick.wallTime = NOVEMBER + i;
        screen.Take(tick);
    }
    const std::vector<std::string> lines = screen.Lines(LARGE, UTF8);
    EXPECT_THAT(lines[5], testing::StartsWith("10:00:11Z "));
    EXPECT_THAT(lines[14], testing::StartsWith("10:00:02Z "));
    EXPECT_EQ(lines[15], "");
}

}  // namespace
