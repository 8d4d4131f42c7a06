#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../terminal/Columns.h"
#include "watch/WatchScreen.h"

namespace {

using qorctl::CTick;
using testing::ElementsAre;

constexpr int64_t SHOWN_AT = 1795168800;  // 2026-11-20T10:00:00Z
constexpr qorctl::CTextStyle SCREEN_STYLE = {.utf8 = true, .colour = false};
constexpr qorctl::CScreenSize LARGE = {.rows = 50, .columns = 200};
constexpr int64_t MINUTE_ON_SCREEN = 60000;
constexpr qorctl::CMoment AT_ONCE = {};

// What a screen shows, without the lines that stay empty and the last one, which says how to go on.
std::vector<std::string> Lines(qorctl::CWatchScreen& screen, const qorctl::CScreenSize& size,
                               const qorctl::CTextStyle& style) {
    std::vector<std::string> lines = screen.Lines(size, style, AT_ONCE);
    EXPECT_EQ(lines.size(), size.rows);
    lines.pop_back();
    std::erase(lines, "");
    return lines;
}

CTick Answer() {
    CTick tick;
    tick.wallTime = SHOWN_AT;
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
        screen.Lines({.rows = 16, .columns = 200}, SCREEN_STYLE, AT_ONCE),
        ElementsAre("CRITICAL  qorctl watch, every 10 s: 2026-11-20T10:00:00Z",
                    "the data is 0 s old", "CRITICAL: controller 0 logical drive LD1: Degraded", "",
                    "Latest changes",
                    "10:00:00Z controller 0 logical drive LD1: Optimal -> Degraded", "",
                    "0 controllers, 1 logical drive, 1 drive, 0 PCIe SSDs", "",
                    "    CTRL  LD  NAME  STATE     CAPACITY  LEVEL",
                    "!!     0   1  Däta  Degraded   4.000TB  RAID 5", "",
                    "CTRL  PD  STATUS   PROGRESS  GROUP  ROLE  TEMP",
                    "   0   3  REBUILD       42%  RG0    LD1    31C",
                    "controller 0 drive PD3: REBUILD 42%", "q ends"));
}

TEST(WatchScreenTest, FailedRequestStandsAboveTheLastAnswer) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    CTick failed;
    failed.wallTime = SHOWN_AT + 10;
    failed.answer.sentence = "the RAID tool did not answer in time";
    screen.Take(failed);
    const std::vector<std::string> lines = Lines(screen, LARGE, SCREEN_STYLE);
    EXPECT_EQ(lines[0], "UNKNOWN  qorctl watch, every 10 s: 2026-11-20T10:00:10Z");
    EXPECT_EQ(lines[2], "no answer: the RAID tool did not answer in time");
    EXPECT_EQ(lines[3], "the last answer, of 2026-11-20T10:00:00Z:");
    EXPECT_EQ(lines[4], "CRITICAL: controller 0 logical drive LD1: Degraded");
    EXPECT_EQ(lines.back(), "controller 0 drive PD3: REBUILD 42%");
}

TEST(WatchScreenTest, FailureWithoutAnAnswerBeforeStandsAlone) {
    qorctl::CWatchScreen screen(10);
    CTick failed;
    failed.answer.sentence = "the RAID tool is not installed";
    screen.Take(failed);
    EXPECT_THAT(Lines(screen, LARGE, SCREEN_STYLE),
                ElementsAre("UNKNOWN  qorctl watch, every 10 s: 1970-01-01T00:00:00Z",
                            "no data yet", "no answer: the RAID tool is not installed"));
}

TEST(WatchScreenTest, AgeOfTheDataAndTheWaitAreShown) {
    qorctl::CWatchScreen screen(10);
    EXPECT_THAT(
        screen.Lines({.rows = 3, .columns = 80}, SCREEN_STYLE, {.now = 7000, .askedAt = 5000}),
        ElementsAre("UNKNOWN  qorctl watch, every 10 s", "no data yet; asking for 2 s", ""));
    CTick tick = Answer();
    tick.time = 10000;
    screen.Take(tick);
    const auto age = [&](const qorctl::CMoment& moment) {
        return screen.Lines(LARGE, SCREEN_STYLE, moment)[1];
    };
    EXPECT_EQ(age({.now = 12500}), "the data is 2 s old");
    EXPECT_EQ(age({.now = 13500, .askedAt = 13000}), "the data is 3 s old");
    EXPECT_EQ(age({.now = 143000, .askedAt = 13000}),
              "the data is 2 min 13 s old; asking for 130 s");
}

TEST(WatchScreenTest, ProblemsComeFirst) {
    CTick tick = Answer();
    tick.health.findings = {{qorctl::EHealth::CRITICAL, "", "c", "3"},
                            {qorctl::EHealth::CRITICAL, "", "e", "5"},
                            {qorctl::EHealth::UNKNOWN, "", "b", "2"},
                            {qorctl::EHealth::WARNING, "", "a", "1"},
                            {qorctl::EHealth::WARNING, "", "d", "4"}};
    qorctl::CWatchScreen screen(10);
    screen.Take(tick);
    std::vector<std::string> lines = Lines(screen, LARGE, SCREEN_STYLE);
    lines.resize(7);
    EXPECT_THAT(lines, ElementsAre(testing::_, testing::_, "CRITICAL: c: 3", "CRITICAL: e: 5",
                                   "UNKNOWN: b: 2", "WARNING: a: 1", "WARNING: d: 4"));
}

// The last line but one, with the per cents of `progress` seen a minute after the other.
std::string ProgressLine(const std::vector<CTick>& ticks) {
    qorctl::CWatchScreen screen(10);
    int64_t now = 0;
    for (CTick tick : ticks) {
        now += MINUTE_ON_SCREEN;
        tick.time = now;
        screen.Take(tick);
    }
    const std::vector<std::string> lines = screen.Lines(LARGE, SCREEN_STYLE, {.now = now});
    return lines[lines.size() - 2];
}

CTick Progress(long long percent, const std::string& state = "REBUILD",
               const std::string& serial = "A") {
    CTick tick = Answer();
    qorctl::CPhysicalDrive& drive = tick.answer.inventory.physicalDrives.front();
    drive.progress = qorctl::CQuantity{std::to_string(percent) + "%", percent};
    drive.statusDetail = state;
    drive.serial = serial;
    return tick;
}

TEST(WatchScreenTest, RebuildTellsTheTimeThatIsLeft) {
    const std::string name = "controller 0 drive PD3 (serial A): ";
    EXPECT_EQ(ProgressLine({Progress(10)}), name + "REBUILD 10%");
    EXPECT_EQ(ProgressLine({Progress(10), Progress(20)}), name + "REBUILD 20%, about 8 min left");
    EXPECT_EQ(ProgressLine({Progress(10), Progress(20, "COPYBACK")}), name + "COPYBACK 20%");
    EXPECT_EQ(ProgressLine({Progress(10, "REBUILD", "B"), Progress(20)}), name + "REBUILD 20%");
    EXPECT_EQ(ProgressLine({Progress(10), CTick(Progress(20)), Answer(), Progress(30)}),
              name + "REBUILD 30%");
    EXPECT_EQ(ProgressLine({Progress(10), Progress(400)}), name + "REBUILD 400%");
}

TEST(WatchScreenTest, BodyScrollsBetweenHeadAndProgress) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    const auto lines = [&] {
        return screen.Lines({.rows = 7, .columns = 80}, SCREEN_STYLE, AT_ONCE);
    };
    using qorctl::EScroll;
    const std::string head = "CRITICAL  qorctl watch, every 10 s: 2026-11-20T10:00:00Z";
    const std::string age = "the data is 0 s old";
    const std::string progress = "controller 0 drive PD3: REBUILD 42%";
    const std::string keys = "; q ends; Up, Down, PgUp, PgDn, Home, End";
    EXPECT_THAT(lines(),
                ElementsAre(head, age, "CRITICAL: controller 0 logical drive LD1: Degraded", "",
                            "Latest changes", progress, "lines 1-3 of 12" + keys));
    const struct {
        EScroll way;
        size_t first;
    } rows[] = {{EScroll::LINE_UP, 1}, {EScroll::LINE_DOWN, 2},  {EScroll::PAGE_DOWN, 4},
                {EScroll::LINE_UP, 3}, {EScroll::PAGE_UP, 1},    {EScroll::PAGE_UP, 1},
                {EScroll::TO_END, 10}, {EScroll::LINE_DOWN, 10}, {EScroll::PAGE_DOWN, 10},
                {EScroll::TO_BEGIN, 1}};
    for (const auto& row : rows) {
        screen.Scroll(row.way);
        EXPECT_EQ(lines().back(), "lines " + std::to_string(row.first) + '-' +
                                      std::to_string(row.first + 2) + " of 12" + keys);
        EXPECT_EQ(lines()[5], progress);
    }
    screen.Scroll(EScroll::TO_END);
    EXPECT_EQ(lines()[4], "   0   3  REBUILD       42%  RG0    LD1    31C");
    EXPECT_EQ(Lines(screen, LARGE, SCREEN_STYLE)[2],
              "CRITICAL: controller 0 logical drive LD1: Degraded");
}

TEST(WatchScreenTest, ManyRebuildsTakeHalfOfTheScreen) {
    CTick tick = Answer();
    tick.answer.inventory.physicalDrives.resize(20, tick.answer.inventory.physicalDrives[0]);
    qorctl::CWatchScreen screen(10);
    screen.Take(tick);
    const std::vector<std::string> lines =
        screen.Lines({.rows = 13, .columns = 80}, SCREEN_STYLE, AT_ONCE);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "controller 0 drive PD3: REBUILD 42%"), 5);
}

TEST(WatchScreenTest, LastWordsHaveProblemsAndAllChanges) {
    qorctl::CWatchScreen screen(10);
    EXPECT_EQ(screen.LastWords(SCREEN_STYLE, AT_ONCE), "");
    screen.Take(Answer());
    CTick failed;
    failed.wallTime = SHOWN_AT + 10;
    failed.answer.sentence = "the RAID tool did not answer in time";
    screen.Take(failed);
    EXPECT_EQ(screen.LastWords({.utf8 = true, .colour = true, .width = 10}, AT_ONCE),
              "2026-11-20T10:00:10Z UNKNOWN\n"
              "no answer: the RAID tool did not answer in time\n"
              "the last answer, of 2026-11-20T10:00:00Z:\n"
              "CRITICAL: controller 0 logical drive LD1: Degraded\n"
              "0 controllers, 1 logical drive, 1 drive, 0 PCIe SSDs\n"
              "controller 0 drive PD3: REBUILD 42%\n"
              "Changes\n"
              "2026-11-20T10:00:00Z controller 0 logical drive LD1: Optimal -> Degraded\n");
}

TEST(WatchScreenTest, LastWordsSayHowManyChangesWereForgotten) {
    qorctl::CWatchScreen screen(10);
    for (size_t i = 0; i < qorctl::CWatchScreen::KEPT_CHANGES + 2; ++i) {
        screen.Take(Answer());
    }
    const std::string words = screen.LastWords(SCREEN_STYLE, AT_ONCE);
    EXPECT_THAT(words, testing::HasSubstr("Changes\n... and 2 earlier ones\n2026-"));
    EXPECT_EQ(std::count(words.begin(), words.end(), '\n'), 1000 + 6);
}

TEST(WatchScreenTest, LinesFitTheScreen) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    EXPECT_THAT(screen.Lines({.rows = 3, .columns = 12}, SCREEN_STYLE, AT_ONCE),
                ElementsAre("CRITICAL  qo", "the data is ", "controller 0"));
    EXPECT_THAT(screen.Lines({.rows = 1, .columns = 1}, SCREEN_STYLE, AT_ONCE), ElementsAre("C"));
    for (size_t rows = 1; rows < 30; ++rows) {
        for (size_t columns = 1; columns < 30; ++columns) {
            const auto lines =
                screen.Lines({.rows = rows, .columns = columns}, SCREEN_STYLE, AT_ONCE);
            EXPECT_EQ(lines.size(), rows);
            for (const std::string& line : lines) {
                EXPECT_LE(qorctl::CountColumns(line), columns) << line;
            }
        }
    }
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
    std::vector<std::string> lines = Lines(screen, {.rows = 50, .columns = 67}, SCREEN_STYLE);
    EXPECT_EQ(lines[2], "CRITICAL: controller 0 drive 252:3 (PD3, serial S1, ST600): FAILED");
    EXPECT_EQ(lines[4], "10:00:00Z controller 0 drive 252:3 (PD3, serial S1): gone, FAILED");
    lines = Lines(screen, {.rows = 50, .columns = 60}, SCREEN_STYLE);
    EXPECT_EQ(lines[2], "CRITICAL: controller 0 drive 252:3 (PD3, serial S1): FAILED");
    EXPECT_EQ(lines[4], "10:00:00Z controller 0 drive 252:3 (PD3, serial S1): gone,");
    EXPECT_EQ(lines[5], "  FAILED");
}

TEST(WatchScreenTest, CharactersOfSeveralBytesAreCutWhole) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    CTick failed;
    failed.answer.sentence = "Däta";
    screen.Take(failed);
    EXPECT_EQ(Lines(screen, {.rows = 50, .columns = 13}, SCREEN_STYLE)[3], "  Däta");
    EXPECT_EQ(Lines(screen, {.rows = 50, .columns = 4}, SCREEN_STYLE)[4], "  Dä");
    EXPECT_EQ(Lines(screen, LARGE, {})[2], "no answer: D\\xc3\\xa4ta");
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
    const std::vector<std::string> lines = Lines(screen, LARGE, SCREEN_STYLE);
    EXPECT_EQ(lines[6].find("STATE"), 22U);
    for (size_t i = 0; i < drives.size(); ++i) {
        EXPECT_EQ(qortest::Flat(lines[7 + i]).find("Degraded"), 22U) << lines[7 + i];
    }
}

TEST(WatchScreenTest, WideCharactersAreCutAtTheEdgeOfTheScreen) {
    qorctl::CWatchScreen screen(10);
    CTick failed;
    failed.answer.sentence = "\u6570\u636E";
    screen.Take(failed);
    EXPECT_EQ(Lines(screen, {.rows = 50, .columns = 5}, SCREEN_STYLE)[4], "  \u6570");
    EXPECT_EQ(Lines(screen, {.rows = 50, .columns = 6}, SCREEN_STYLE)[4], "  \u6570\u636E");
    EXPECT_EQ(Lines(screen, {.rows = 50, .columns = 15}, SCREEN_STYLE)[2],
              "no answer: \u6570\u636E");
}

TEST(WatchScreenTest, ProblemsHaveColoursWhereTheStyleHasThem) {
    qorctl::CWatchScreen screen(10);
    screen.Take(Answer());
    const std::vector<std::string> lines = Lines(screen, LARGE, {.utf8 = true, .colour = true});
    EXPECT_EQ(lines[2], "\x1b[31mCRITICAL: controller 0 logical drive LD1: Degraded\x1b[0m");
    EXPECT_EQ(lines[7], "\x1b[31m!!     0   1  Däta  Degraded   4.000TB  RAID 5\x1b[0m");
}

TEST(WatchScreenTest, OnlyTheLatestChangesAreShown) {
    qorctl::CWatchScreen screen(10);
    for (int i = 0; i < 12; ++i) {
        CTick tick = Answer();
        tick.wallTime = SHOWN_AT + i;
        screen.Take(tick);
    }
    const std::vector<std::string> lines = Lines(screen, LARGE, SCREEN_STYLE);
    EXPECT_THAT(lines[4], testing::StartsWith("10:00:11Z "));
    EXPECT_THAT(lines[13], testing::StartsWith("10:00:02Z "));
    EXPECT_EQ(lines[14], "0 controllers, 1 logical drive, 1 drive, 0 PCIe SSDs");
}

}  // namespace
