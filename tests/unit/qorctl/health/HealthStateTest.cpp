#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "health/Counters.h"

namespace {

using qorctl::CCounterHistory;
using qorctl::CCounterVerdict;

constexpr int64_t HOLD = 3600;

struct CStep {
    int64_t now;
    uint64_t value;
    uint64_t growth;
    bool firstSeen;
    const char* why;
};

TEST(HealthStateTest, CounterAlarmsWhileItsGrowthIsFresh) {
    const CStep steps[] = {
        {1000, 2, 0, true, "the baseline"},
        {1060, 2, 0, false, "it stands still"},
        {1120, 3, 1, false, "it grew"},
        {1180, 3, 1, false, "the growth is fresh"},
        {2000, 5, 3, false, "it grew again, counted from the same baseline"},
        {5599, 5, 3, false, "the last second of the hold"},
        {5600, 5, 0, false, "the hold is over: a new baseline"},
        {5660, 6, 1, false, "growth from the new baseline"},
        {9999, 8, 2, false, "growth when the earlier one is stale"},
        {10000, 1, 0, false, "the drive reset it: a new baseline"},
        {10060, 2, 1, false, "growth from there"},
    };
    CCounterHistory state;
    for (const CStep& step : steps) {
        const CCounterVerdict verdict =
            state.Take("drive", "mediaErrors", step.value, step.now, HOLD);
        EXPECT_EQ(verdict.growth, step.growth) << step.why;
        EXPECT_EQ(verdict.firstSeen, step.firstSeen) << step.why;
    }
}

TEST(HealthStateTest, WithoutAHoldGrowthAlarmsOnce) {
    CCounterHistory state;
    state.Take("drive", "mediaErrors", 0, 1000, 0);
    EXPECT_EQ(state.Take("drive", "mediaErrors", 1, 1060, 0).growth, 1U);
    EXPECT_EQ(state.Take("drive", "mediaErrors", 1, 1060, 0).growth, 0U);
}

TEST(HealthStateTest, ClockThatWasSetBackDoesNotKeepAnAlarmAlive) {
    CCounterHistory state;
    state.Take("drive", "mediaErrors", 0, 900000, HOLD);
    state.Take("drive", "mediaErrors", 1, 900000, HOLD);
    EXPECT_EQ(state.Take("drive", "mediaErrors", 1, 1000, HOLD).growth, 1U);
    EXPECT_EQ(state.Take("drive", "mediaErrors", 1, 1000 + HOLD, HOLD).growth, 0U);
}

TEST(HealthStateTest, DrivesAndCountersAreKeptApart) {
    CCounterHistory state;
    state.Take("one", "mediaErrors", 1, 1000, HOLD);
    EXPECT_TRUE(state.Take("two", "mediaErrors", 2, 1000, HOLD).firstSeen);
    EXPECT_TRUE(state.Take("one", "otherErrors", 3, 1000, HOLD).firstSeen);
    EXPECT_FALSE(state.Take("one", "mediaErrors", 1, 1000, HOLD).firstSeen);
}

TEST(HealthStateTest, DriveThatWasNotSeenForAMonthIsForgotten) {
    CCounterHistory state;
    state.Take("old", "mediaErrors", 1, 1000, HOLD);
    state.Take("new", "mediaErrors", 1, 1001, HOLD);
    state.ForgetOld(1000 + qorctl::FORGET_AFTER);
    EXPECT_EQ(state.Drives().count("old"), 0U);
    EXPECT_EQ(state.Drives().count("new"), 1U);
}

TEST(HealthStateTest, WrittenFormIsReadBack) {
    CCounterHistory state;
    state.Take("serial A", "mediaErrors", 2, 1000, HOLD);
    state.Take("serial A", "mediaErrors", 5, 1060, HOLD);
    state.Take("serial B \"quoted\"", "otherErrors", UINT64_MAX, 1060, HOLD);
    const std::optional<CCounterHistory> read = CCounterHistory::Parse(state.Format());
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->Format(), state.Format());
    const qorctl::CCounterRecord& record = read->Drives().at("serial A").counters.at("mediaErrors");
    EXPECT_EQ(record.baseline, 2U);
    EXPECT_EQ(record.value, 5U);
    EXPECT_EQ(record.grownAt, 1060);
    EXPECT_EQ(read->Drives().at("serial A").seen, 1060);
    EXPECT_EQ(read->Drives().at("serial B \"quoted\"").counters.at("otherErrors").value,
              UINT64_MAX);
}

TEST(HealthStateTest, WhatThisProgramDoesNotWriteIsRefused) {
    const std::string head = R"({"format":"qorctl-health-state","version":1,"drives":)";
    const std::string counter = R"({"d":{"seen":1,"counters":{"c":)";
    const std::string texts[] = {
        "",
        "{",
        "[]",
        "null",
        "7",
        "{}",
        std::string(100000, '['),
        head + "{}",  // cut short
        head + "[]}",
        head + R"({"d":7}})",
        head + R"({"d":{"seen":1}}})",
        head + R"({"d":{"seen":-1,"counters":{}}}})",
        head + R"({"d":{"seen":1.5,"counters":{}}}})",
        head + R"({"d":{"seen":18446744073709551615,"counters":{}}}})",
        head + R"({"d":{"counters":{}}}})",
        head + R"({"d":{"seen":1,"counters":[]}}})",
        head + counter + "7}}}}",
        head + counter + R"({"baseline":0,"value":0}}}}})",
        head + counter + R"({"baseline":"0","value":0,"grownAt":0}}}}})",
        head + counter + R"({"baseline":2,"value":1,"grownAt":0}}}}})",
        R"({"format":"other","version":1,"drives":{}})",
        R"({"format":"qorctl-health-state","version":2,"drives":{}})",
        R"({"format":"qorctl-health-state","drives":{}})",
    };
    for (const std::string& text : texts) {
        EXPECT_FALSE(CCounterHistory::Parse(text).has_value()) << text.substr(0, 200);
    }
    EXPECT_TRUE(CCounterHistory::Parse(head + "{}}").has_value());
}

// Memory that a refusal takes, in KiB; less than 0 when the text is not refused.
long MemoryOfRefusal(const std::string& text) {
    rusage before = {};
    rusage after = {};
    getrusage(RUSAGE_SELF, &before);
    const bool isRefused = !CCounterHistory::Parse(text);
    getrusage(RUSAGE_SELF, &after);
    return isRefused ? after.ru_maxrss - before.ru_maxrss : -1;
}

TEST(HealthStateTest, NestedTextOfTheLargestSizeTakesLittleMemory) {
    constexpr long MUCH = 100'000;  // KiB
    for (const std::string part : {"[", "[0,", "{\"a\":"}) {
        std::string text = "{\"drives\":";
        while (text.size() < 16'000'000) {
            text += part;
        }
        const pid_t child = fork();  // the most that a process ever had counts
        if (child == 0) {
            const long memory = MemoryOfRefusal(text);
            _exit(memory >= 0 && memory < MUCH ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << part;
    }
}

}  // namespace
