#include <gtest/gtest.h>

#include "watch/Pace.h"

namespace {

using qorctl::CPace;

constexpr int64_t MINUTE = 60000;

TEST(PaceTest, NothingIsSaidBeforeTwoPerCentsWereSeen) {
    CPace pace;
    EXPECT_EQ(pace.Left(0), "");
    pace.See(0, 34);
    EXPECT_EQ(pace.Left(MINUTE), "");
    pace.See(10 * MINUTE, 34);
    EXPECT_EQ(pace.Left(20 * MINUTE), "");
}

TEST(PaceTest, TimeThatIsLeftCountsDown) {
    CPace pace;
    pace.See(0, 10);
    pace.See(10 * MINUTE, 20);
    EXPECT_EQ(pace.Left(10 * MINUTE), "about 1 h 20 min left");
    EXPECT_EQ(pace.Left(15 * MINUTE), "about 1 h 15 min left");
    pace.See(90 * MINUTE, 99);
    EXPECT_EQ(pace.Left(91 * MINUTE), "less than 1 min left");
}

TEST(PaceTest, FirstPerCentMayHaveBeenNearlyOver) {
    CPace pace;
    pace.See(0, 34);
    pace.See(MINUTE, 35);
    EXPECT_EQ(pace.Left(MINUTE), "at least 1 h 5 min left");
    pace.See(11 * MINUTE, 36);  // the first one that was seen whole
    EXPECT_EQ(pace.Left(11 * MINUTE), "about 10 h 40 min left");
}

TEST(PaceTest, ShortTimeAfterASinglePerCentSaysNothing) {
    CPace pace;
    pace.See(0, 34);
    pace.See(100, 35);
    EXPECT_EQ(pace.Left(100), "");
}

TEST(PaceTest, PaceThatTurnsBeginsAnew) {
    CPace pace;
    pace.See(0, 10);
    pace.See(MINUTE, 90);
    pace.See(2 * MINUTE, 5);
    EXPECT_EQ(pace.Left(2 * MINUTE), "");
    pace.See(3 * MINUTE, 15);
    EXPECT_EQ(pace.Left(3 * MINUTE), "about 9 min left");
}

TEST(PaceTest, PaceThatStopsSaysNothing) {
    CPace pace;
    pace.See(0, 10);
    pace.See(MINUTE, 20);
    EXPECT_EQ(pace.Left(4 * MINUTE), "about 5 min left");
    EXPECT_EQ(pace.Left(4 * MINUTE + 1), "");
    pace.See(10 * MINUTE, 30);
    EXPECT_EQ(pace.Left(10 * MINUTE), "about 1 h 3 min left");
}

TEST(PaceTest, NothingIsLeftOfAllAndNothingIsOfNoTime) {
    CPace pace;
    pace.See(0, 10);
    pace.See(MINUTE, 100);
    EXPECT_EQ(pace.Left(MINUTE), "");
    CPace sudden;
    sudden.See(0, 10);
    sudden.See(0, 50);
    EXPECT_EQ(sudden.Left(1), "");
}

TEST(PaceTest, DurationsHaveTwoUnits) {
    EXPECT_EQ(qorctl::DurationText(0), "0 s");
    EXPECT_EQ(qorctl::DurationText(59999), "59 s");
    EXPECT_EQ(qorctl::DurationText(133000), "2 min 13 s");
    EXPECT_EQ(qorctl::DurationText(80 * MINUTE), "1 h 20 min");
    EXPECT_EQ(qorctl::DurationText(100 * 60 * MINUTE), "4 d 4 h");
}

}  // namespace
