#include <gtest/gtest.h>

#include "watch/Pace.h"

namespace {

using qorctl::CPace;

constexpr int64_t ONE_MINUTE = 60000;

TEST(PaceTest, NothingIsSaidBeforeTwoPerCentsWereSeen) {
    CPace pace;
    EXPECT_EQ(pace.Left(0), "");
    pace.See(0, 34);
    EXPECT_EQ(pace.Left(ONE_MINUTE), "");
    pace.See(10 * ONE_MINUTE, 34);
    EXPECT_EQ(pace.Left(20 * ONE_MINUTE), "");
}

TEST(PaceTest, TimeThatIsLeftCountsDown) {
    CPace pace;
    pace.See(0, 10);
    pace.See(10 * ONE_MINUTE, 20);
    EXPECT_EQ(pace.Left(10 * ONE_MINUTE), "about 1 h 20 min left");
    EXPECT_EQ(pace.Left(15 * ONE_MINUTE), "about 1 h 15 min left");
    pace.See(90 * ONE_MINUTE, 99);
    EXPECT_EQ(pace.Left(91 * ONE_MINUTE), "less than 1 min left");
}

TEST(PaceTest, FirstPerCentMayHaveBeenNearlyOver) {
    CPace pace;
    pace.See(0, 34);
    pace.See(ONE_MINUTE, 35);
    EXPECT_EQ(pace.Left(ONE_MINUTE), "at least 1 h 5 min left");
    pace.See(11 * ONE_MINUTE, 36);  // the first one that was seen whole
    EXPECT_EQ(pace.Left(11 * ONE_MINUTE), "about 10 h 40 min left");
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
    pace.See(ONE_MINUTE, 90);
    pace.See(2 * ONE_MINUTE, 5);
    EXPECT_EQ(pace.Left(2 * ONE_MINUTE), "");
    pace.See(3 * ONE_MINUTE, 15);
    EXPECT_EQ(pace.Left(3 * ONE_MINUTE), "about 9 min left");
}

TEST(PaceTest, PaceThatStopsSaysNothing) {
    CPace pace;
    pace.See(0, 10);
    pace.See(ONE_MINUTE, 20);
    EXPECT_EQ(pace.Left(4 * ONE_MINUTE), "about 5 min left");
    EXPECT_EQ(pace.Left(4 * ONE_MINUTE + 1), "");
    pace.See(10 * ONE_MINUTE, 30);
    EXPECT_EQ(pace.Left(10 * ONE_MINUTE), "about 1 h 3 min left");
}

TEST(PaceTest, NothingIsLeftOfAllAndNothingIsOfNoTime) {
    CPace pace;
    pace.See(0, 10);
    pace.See(ONE_MINUTE, 100);
    EXPECT_EQ(pace.Left(ONE_MINUTE), "");
    CPace sudden;
    sudden.See(0, 10);
    sudden.See(0, 50);
    EXPECT_EQ(sudden.Left(1), "");
}

TEST(PaceTest, DurationsHaveTwoUnits) {
    EXPECT_EQ(qorctl::DurationText(0), "0 s");
    EXPECT_EQ(qorctl::DurationText(59999), "59 s");
    EXPECT_EQ(qorctl::DurationText(133000), "2 min 13 s");
    EXPECT_EQ(qorctl::DurationText(80 * ONE_MINUTE), "1 h 20 min");
    EXPECT_EQ(qorctl::DurationText(100 * 60 * ONE_MINUTE), "4 d 4 h");
}

}  // namespace
