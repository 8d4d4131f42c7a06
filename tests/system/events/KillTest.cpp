// A watch that is killed at any moment loses nothing.
#include <gtest/gtest.h>

#include "EventsFixture.h"

namespace {

class KillTest : public qortest::CEventsFixture {};

TEST_F(KillTest, HundredKillsAtRandomMomentsLoseNoChange) {
    const qortest::CEnd end = RunOn("lifecycle", {PYTHON, KILL_AT_RANDOM, QORCTL_PROGRAM, Folder(),
                                                  "100", std::to_string(time(nullptr))});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "killed 100 times\n") << end.err;
    RecordProperty("seen", end.err);
}

}  // namespace
