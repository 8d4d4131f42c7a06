// What changes again and again is told seldom.
#include <gtest/gtest.h>

#include "watch/Flapping.h"

namespace {

using qorctl::CFlapping;
using qorctl::CJson;

constexpr int64_t NOVEMBER = 1795168800;
constexpr int64_t MINUTE = 60;

class FlappingTest : public testing::Test {
protected:
    // ONLINE and FAILED by turns.
    CFlapping::CVerdict Turn(const std::string& key = "drive") {
        const CJson event = {
            {"event", "change"}, {"object", key}, {"severity", "OK"}, {"number", ++m_Turns}};
        const bool odd = m_Turns % 2 != 0;
        return m_Flapping.Take(key, event, odd ? "ONLINE" : "FAILED", odd ? "FAILED" : "ONLINE",
                               m_Now);
    }
    void TurnUntilDamped() {
        for (size_t i = 0; i <= CFlapping::MOST_CHANGES; ++i) {
            Turn();
        }
    }

    CFlapping m_Flapping;
    int m_Turns = 0;
    int64_t m_Now = NOVEMBER;
};

TEST_F(FlappingTest, SixthChangeInTenMinutesIsToldAsFlappingAndTheNextOnesAreHeld) {
    for (size_t i = 0; i < CFlapping::MOST_CHANGES; ++i) {
        const auto verdict = Turn();
        EXPECT_TRUE(verdict.isTold);
        EXPECT_FALSE(verdict.held);
        m_Now += MINUTE;
    }
    const auto sixth = Turn();
    EXPECT_FALSE(sixth.isTold);
    ASSERT_TRUE(sixth.held);
    EXPECT_EQ(sixth.held->count, 1U);
    EXPECT_EQ(sixth.held->before, "FAILED");
    EXPECT_EQ(sixth.held->after, "ONLINE");
    const auto seventh = Turn();
    EXPECT_FALSE(seventh.isTold);
    EXPECT_FALSE(seventh.held);
    EXPECT_TRUE(m_Flapping.Due(m_Now).empty());
}

TEST_F(FlappingTest, SlowChangesAreAllTold) {
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(Turn().isTold);
        m_Now += CFlapping::WINDOW / int64_t{CFlapping::MOST_CHANGES};
    }
}

TEST_F(FlappingTest, ThingsAreCountedApart) {
    TurnUntilDamped();
    EXPECT_TRUE(Turn("another drive").isTold);
}

TEST_F(FlappingTest, WhatWasHeldIsToldWhenItSettles) {
    TurnUntilDamped();
    Turn();
    Turn();
    Turn();
    m_Now += CFlapping::WINDOW - 1;
    EXPECT_TRUE(m_Flapping.Due(m_Now).empty());
    const auto due = m_Flapping.Due(++m_Now);
    ASSERT_EQ(due.size(), 1U);
    EXPECT_EQ(due[0].count, 3U);
    EXPECT_TRUE(due[0].isSettled);
    EXPECT_EQ(due[0].before, "ONLINE");
    EXPECT_EQ(due[0].after, "FAILED");
    EXPECT_EQ(due[0].last["number"], m_Turns);
    EXPECT_TRUE(Turn().isTold);
}

TEST_F(FlappingTest, WhatIsHeldIsToldEachHour) {
    TurnUntilDamped();
    size_t told = 0;
    uint64_t count = 0;
    for (int minute = 0; minute < 181; ++minute) {
        for (const auto& held : m_Flapping.Due(m_Now)) {
            EXPECT_FALSE(held.isSettled);
            count += held.count;
            ++told;
        }
        EXPECT_FALSE(Turn().isTold);
        m_Now += MINUTE;
    }
    EXPECT_EQ(told, 3U);
    EXPECT_EQ(count, 180U);
}

TEST_F(FlappingTest, SettledWithoutAHeldChangeNothingIsTold) {
    TurnUntilDamped();
    m_Now += CFlapping::WINDOW;
    EXPECT_TRUE(m_Flapping.Due(m_Now).empty());
    EXPECT_TRUE(Turn().isTold);
}

TEST_F(FlappingTest, ClockThatIsSetBackDampsNothingForEver) {
    TurnUntilDamped();
    Turn();
    m_Now -= 1000000;
    EXPECT_EQ(m_Flapping.Due(m_Now).size(), 1U);
    EXPECT_TRUE(Turn().isTold);
}

TEST_F(FlappingTest, WhatIsReadBackGoesOn) {
    TurnUntilDamped();
    Turn();
    Turn("another drive");
    const CJson json = m_Flapping.ToJson();
    m_Flapping = CFlapping::FromJson(json);
    EXPECT_EQ(m_Flapping.ToJson(), json);
    EXPECT_FALSE(Turn().isTold);
    m_Now += CFlapping::WINDOW;
    const auto due = m_Flapping.Due(m_Now);
    ASSERT_EQ(due.size(), 1U);
    EXPECT_EQ(due[0].count, 2U);
}

}  // namespace
