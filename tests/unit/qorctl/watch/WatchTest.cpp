// The loop of `qorctl watch`, with a clock that only goes when it is told to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <nlohmann/json.hpp>

#include "watch/Watch.h"

namespace {

using qorctl::CAnswer;
using qorctl::CMoment;
using qorctl::CTick;
using qorctl::EWake;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t BEGAN_AT = 1795168800;  // 2026-11-20T10:00:00Z

class CTestClock : public qorctl::IWatchClock {
public:
    int64_t Now() override { return m_Now; }
    int64_t WallTime() override { return BEGAN_AT + m_Now / 1000; }
    EWake WaitUntil(int64_t time, int input, const pollfd& /*terminal*/) override {
        m_Waits.push_back(time);
        m_Input = input;
        if (!m_Wakes.empty()) {
            const EWake wake = m_Wakes.front();
            m_Wakes.pop_front();
            if (wake != EWake::TIME) {
                return wake;
            }
        }
        m_Now = std::max(m_Now, time);
        return EWake::TIME;
    }

    void Pause() override { ++m_Pauses; }

    int64_t m_Now = 0;
    int m_Input = 0;
    int m_Pauses = 0;
    std::vector<int64_t> m_Waits;
    std::deque<EWake> m_Wakes;  // how the next waits end; TIME after the last one
};

class CTestView : public qorctl::IWatchView {
public:
    bool Show(const CTick& tick) override {
        m_Ticks.push_back(tick);
        m_Text += FormatTickText(tick);
        m_Json += FormatTickJson(tick);
        return m_CanShow;
    }
    bool Refresh(EWake why, const CMoment& moment) override {
        m_Refreshes.push_back(why);
        m_Moments.push_back(moment);
        return m_CanShow && why != EWake::TERMINAL;
    }
    bool IsLive() const override { return m_IsLive; }
    void Leave() override { ++m_Leaves; }
    bool End(const CMoment& /*moment*/) override {
        ++m_Ends;
        return m_CanEnd;
    }

    bool m_IsLive = false;
    bool m_CanEnd = true;
    int m_Leaves = 0;
    int m_Ends = 0;
    std::vector<EWake> m_Refreshes;
    std::vector<CMoment> m_Moments;
    bool m_CanShow = true;
    std::vector<CTick> m_Ticks;
    std::string m_Text;
    std::string m_Json;
};

CAnswer Answer(const std::string& state, long long temperature = 31) {
    CAnswer answer;
    answer.outcome = qorctl::EOutcome::ANSWERED;
    qorctl::CPhysicalDrive drive;
    drive.controller = 0;
    drive.number = 3;
    drive.statusDetail = state;
    drive.temperature = qorctl::CQuantity{std::to_string(temperature) + "C", temperature};
    answer.inventory.physicalDrives.push_back(drive);
    return answer;
}

CAnswer NoAnswer() {
    CAnswer answer;
    answer.reason = "tool-timeout";
    answer.sentence = "the RAID tool did not answer in time";
    answer.command = "krzcli -pdinfo -a0";
    return answer;
}

class WatchTest : public testing::Test {
protected:
    // A request for each answer, which takes `m_Duration`.
    int Watch(const std::vector<CAnswer>& answers, int64_t interval = 60) {
        size_t asked = 0;
        const auto ask = [&](const qorctl::CWatch::CWait& wait) -> std::optional<CAnswer> {
            if (m_Input >= 0 && !wait(m_Input, m_Patience)) {
                return std::nullopt;
            }
            m_Clock.m_Now += m_Duration;
            return answers.at(asked++);
        };
        return qorctl::CWatch({.interval = interval,
                               .count = static_cast<int64_t>(answers.size()),
                               .filter = m_Filter},
                              ask, m_Clock, m_View)
            .Run();
    }

    int64_t m_Duration = 0;  // milliseconds
    qorctl::CInventoryFilter m_Filter;
    int m_Input = -1;         // what a request waits for, if it does
    int64_t m_Patience = -1;  // and for how long
    CTestClock m_Clock;
    CTestView m_View;
};

TEST_F(WatchTest, RequestsDoNotDriftWhateverTheyTake) {
    m_Duration = 700;
    Watch(std::vector<CAnswer>(4, Answer("ONLINE")), 10);
    EXPECT_THAT(m_Clock.m_Waits, ElementsAre(10000, 20000, 30000));
}

TEST_F(WatchTest, ProblemsAreShownAndTheirEndsAreChanges) {
    m_Filter.problems = true;
    Watch({Answer("ONLINE"), Answer("FAILED"), Answer("ONLINE")});
    EXPECT_TRUE(m_View.m_Ticks[0].answer.inventory.physicalDrives.empty());
    EXPECT_EQ(m_View.m_Ticks[1].answer.inventory.physicalDrives.size(), 1U);
    EXPECT_THAT(m_View.m_Text, testing::HasSubstr("controller 0 drive PD3: ONLINE -> FAILED"));
    EXPECT_THAT(m_View.m_Text, testing::HasSubstr("controller 0 drive PD3: FAILED -> ONLINE"));
}

TEST_F(WatchTest, PlaceThatIsNotReportedIsUnknown) {
    m_Filter.controller = 7;
    Watch({Answer("FAILED")});
    EXPECT_EQ(m_View.m_Ticks[0].status, qorctl::EHealth::UNKNOWN);
    ASSERT_EQ(m_View.m_Ticks[0].health.findings.size(), 1U);
    EXPECT_EQ(m_View.m_Ticks[0].health.findings[0].rule, "no-such-controller");
}

TEST_F(WatchTest, TimesThatALongRequestMissedAreLeftOut) {
    m_Duration = 25000;
    Watch(std::vector<CAnswer>(3, Answer("ONLINE")), 10);
    EXPECT_THAT(m_Clock.m_Waits, ElementsAre(30000, 60000));
}

TEST_F(WatchTest, RequestThatEndsAtATimeWaitsForTheNextOne) {
    EXPECT_EQ(qorctl::NextTime(0, 10, 0), 10);
    EXPECT_EQ(qorctl::NextTime(0, 10, 9), 10);
    EXPECT_EQ(qorctl::NextTime(0, 10, 10), 20);
    EXPECT_EQ(qorctl::NextTime(5, 10, 16), 25);
}

TEST_F(WatchTest, ChangesAreLinesWithTheTime) {
    EXPECT_EQ(Watch({Answer("ONLINE"), Answer("ONLINE"), Answer("FAILED")}), 0);
    EXPECT_EQ(
        m_View.m_Text,
        "2026-11-20T10:00:00Z watching 0 controllers, 0 logical drives, 1 drive, 0 PCIe SSDs: OK\n"
        "2026-11-20T10:02:00Z controller 0 drive PD3: ONLINE -> FAILED\n"
        "2026-11-20T10:02:00Z server: OK -> CRITICAL\n");
}

TEST_F(WatchTest, StatusThatATemperatureChangesIsALine) {
    Watch({Answer("ONLINE"), Answer("ONLINE", 55)});
    EXPECT_THAT(m_View.m_Text, testing::EndsWith("\n2026-11-20T10:01:00Z server: OK -> WARNING\n"));
}

TEST_F(WatchTest, FailedRequestIsShownAndComparedOver) {
    EXPECT_EQ(Watch({Answer("ONLINE"), NoAnswer(), NoAnswer(), Answer("REBUILD")}), 0);
    EXPECT_EQ(
        m_View.m_Text,
        "2026-11-20T10:00:00Z watching 0 controllers, 0 logical drives, 1 drive, 0 PCIe SSDs: OK\n"
        "2026-11-20T10:01:00Z no answer: the RAID tool did not answer in time "
        "(krzcli -pdinfo -a0)\n"
        "2026-11-20T10:02:00Z no answer: the RAID tool did not answer in time "
        "(krzcli -pdinfo -a0)\n"
        "2026-11-20T10:03:00Z answers again\n"
        "2026-11-20T10:03:00Z controller 0 drive PD3: ONLINE -> REBUILD\n"
        "2026-11-20T10:03:00Z server: OK -> WARNING\n");
}

TEST_F(WatchTest, LastRequestWithoutAnAnswerIsAFailure) {
    EXPECT_EQ(Watch({Answer("ONLINE"), NoAnswer()}), 1);
}

TEST_F(WatchTest, EverythingGoesWhenTheHardwareDisappears) {
    CAnswer nothing;
    nothing.outcome = qorctl::EOutcome::ANSWERED;
    nothing.reason = qorctl::REASON_NO_HARDWARE;
    EXPECT_EQ(Watch({Answer("ONLINE"), nothing}), 0);
    EXPECT_THAT(m_View.m_Text,
                testing::EndsWith("2026-11-20T10:01:00Z controller 0 drive PD3: gone, ONLINE\n"
                                  "2026-11-20T10:01:00Z server: OK -> UNKNOWN\n"));
}

TEST_F(WatchTest, EventsAreJsonLines) {
    CAnswer odd = Answer("\xff");
    odd.inventory.physicalDrives.push_back(odd.inventory.physicalDrives.front());
    odd.inventory.physicalDrives.back().number = 4;
    Watch({NoAnswer(), Answer("ONLINE"), odd, Answer("ONLINE")});
    std::vector<nlohmann::json> events;
    std::istringstream lines(m_View.m_Json);
    for (std::string line; std::getline(lines, line);) {
        events.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_EQ(events.back()["command"], "watch") << line;
        EXPECT_EQ(events.back()["schema_version"], 2) << line;
        events.back().erase("command");
        events.back().erase("schema_version");
    }
    const auto parsed = [](const char* text) { return nlohmann::json::parse(text); };
    ASSERT_GE(events.size(), 6U);
    EXPECT_EQ(events[0], parsed(R"({"time":"2026-11-20T10:00:00Z","event":"no-answer",
        "reason":"tool-timeout","message":"the RAID tool did not answer in time",
        "failed_command":"krzcli -pdinfo -a0"})"));
    EXPECT_EQ(events[1], parsed(R"({"time":"2026-11-20T10:01:00Z","event":"answers-again"})"));
    EXPECT_EQ(events[2], parsed(R"({"time":"2026-11-20T10:01:00Z","event":"start",
        "status":"OK","controllers":0,"logical_drives":0,"drives":1,"pcie_ssds":0})"));
    EXPECT_EQ(events[3], parsed(R"({"time":"2026-11-20T10:02:00Z","event":"change",
        "object":"controller 0 drive PD3","physical_drive":{"controller":0,"drive":3},
        "what":"state","before":"ONLINE","after":"\ufffd"})"));
    EXPECT_EQ(events[4], parsed(R"({"time":"2026-11-20T10:02:00Z","event":"appeared",
        "object":"controller 0 drive PD4","physical_drive":{"controller":0,"drive":4},
        "state":"\ufffd"})"));
    EXPECT_EQ(events.back()["event"], "change");
    EXPECT_EQ(events[events.size() - 2], parsed(R"({"time":"2026-11-20T10:03:00Z","event":"gone",
        "object":"controller 0 drive PD4","physical_drive":{"controller":0,"drive":4},
        "state":"\ufffd"})"));
}

TEST_F(WatchTest, ValueThatTheToolDidNotSayIsNull) {
    CAnswer silent = Answer("");
    silent.inventory.physicalDrives.front().statusDetail.reset();
    Watch({Answer("ONLINE"), silent});
    EXPECT_THAT(m_View.m_Json, testing::HasSubstr("\"before\":\"ONLINE\",\"after\":null}"));
}

TEST_F(WatchTest, NumbersOfAnEventAreNumbers) {
    CAnswer before = Answer("REBUILD");
    CAnswer after = Answer("REBUILD");
    before.inventory.physicalDrives[0].progress = qorctl::CQuantity{"10%", 10};
    before.inventory.physicalDrives[0].mediaErrors = qorctl::CQuantity{"2", 2};
    after.inventory.physicalDrives[0].progress = qorctl::CQuantity{"50%", 50};
    after.inventory.physicalDrives[0].mediaErrors = qorctl::CQuantity{"many", std::nullopt};
    Watch({before, after});
    EXPECT_THAT(m_View.m_Json,
                testing::HasSubstr("\"what\":\"progress\",\"before\":10,\"after\":50}"));
    EXPECT_THAT(m_View.m_Json, testing::HasSubstr("\"before\":2,\"after\":\"many\"}"));
    EXPECT_THAT(m_View.m_Text, testing::HasSubstr("progress 10% -> 50%\n"));
}

TEST_F(WatchTest, StateThatComesWithProgressShowsIt) {
    CAnswer rebuilt = Answer("REBUILD");
    rebuilt.inventory.physicalDrives[0].progress = qorctl::CQuantity{"10%", 10};
    Watch({Answer("ONLINE"), rebuilt});
    EXPECT_THAT(m_View.m_Text,
                testing::HasSubstr("controller 0 drive PD3: ONLINE -> REBUILD 10%\n"));
    EXPECT_THAT(
        m_View.m_Json,
        testing::HasSubstr("\"before\":\"ONLINE\",\"after\":\"REBUILD\",\"progress_percent\":10}"));
}

TEST_F(WatchTest, SomebodyWhoWantsAnEndGetsIt) {
    m_Clock.m_Wakes = {EWake::TIME, EWake::STOP};
    Watch(std::vector<CAnswer>(9, Answer("ONLINE")));
    EXPECT_EQ(m_View.m_Ticks.size(), 2U);
}

TEST_F(WatchTest, ResizedTerminalIsRedrawnAndTheWaitGoesOn) {
    m_Clock.m_Wakes = {EWake::REDRAW, EWake::REDRAW};
    Watch(std::vector<CAnswer>(2, Answer("ONLINE")));
    EXPECT_THAT(m_View.m_Refreshes, ElementsAre(EWake::REDRAW, EWake::REDRAW));
    EXPECT_THAT(m_Clock.m_Waits, ElementsAre(60000, 60000, 60000));
    EXPECT_EQ(m_View.m_Ticks.size(), 2U);
}

TEST_F(WatchTest, LiveViewShowsEachSecond) {
    m_View.m_IsLive = true;
    m_Duration = 300;
    Watch(std::vector<CAnswer>(2, Answer("ONLINE")), 3);
    EXPECT_THAT(m_Clock.m_Waits, ElementsAre(1000, 2000, 3000));
    EXPECT_THAT(m_View.m_Refreshes, ElementsAre(EWake::TIME, EWake::TIME));
    EXPECT_EQ(m_View.m_Moments[1].now, 2000);
    EXPECT_EQ(m_View.m_Moments[1].askedAt, std::nullopt);
}

TEST_F(WatchTest, ViewGoesOnWhileARequestIsAwaited) {
    m_View.m_IsLive = true;
    m_Clock.m_Wakes = {EWake::TIME, EWake::TIME, EWake::REDRAW, EWake::INPUT};
    m_Input = 7;
    EXPECT_EQ(Watch({Answer("ONLINE")}), 0);
    EXPECT_THAT(m_View.m_Refreshes, ElementsAre(EWake::TIME, EWake::TIME, EWake::REDRAW));
    EXPECT_EQ(m_View.m_Moments[2].now, 2000);
    EXPECT_EQ(m_View.m_Moments[2].askedAt, 0);
    EXPECT_EQ(m_Clock.m_Input, 7);
}

TEST_F(WatchTest, RequestIsAwaitedNoLongerThanItWants) {
    m_Input = 7;
    m_Patience = 250;
    Watch({Answer("ONLINE")});
    EXPECT_THAT(m_Clock.m_Waits, ElementsAre(250));
}

TEST_F(WatchTest, PauseLeavesTheTerminalAndShowsAllAgain) {
    m_Clock.m_Wakes = {EWake::PAUSE};
    Watch(std::vector<CAnswer>(2, Answer("ONLINE")));
    EXPECT_EQ(m_View.m_Leaves, 1);
    EXPECT_EQ(m_Clock.m_Pauses, 1);
    EXPECT_THAT(m_View.m_Refreshes, ElementsAre(EWake::PAUSE));
}

TEST_F(WatchTest, EndBetweenRequestsIsThatOfTheLastOne) {
    m_Clock.m_Wakes = {EWake::TIME, EWake::TERMINAL};
    EXPECT_EQ(Watch(std::vector<CAnswer>(9, Answer("ONLINE"))), 0);
    EXPECT_EQ(m_View.m_Ticks.size(), 2U);
    EXPECT_EQ(m_View.m_Ends, 1);
}

TEST_F(WatchTest, EndDuringTheFirstRequestIsAFailure) {
    m_Clock.m_Wakes = {EWake::TERMINAL};
    m_Input = 7;
    EXPECT_EQ(Watch({Answer("ONLINE")}), 1);
    EXPECT_EQ(m_View.m_Ticks.size(), 0U);
    EXPECT_EQ(m_View.m_Ends, 1);
}

TEST_F(WatchTest, LastWordsThatAreLostAreAFailure) {
    m_View.m_CanEnd = false;
    EXPECT_EQ(Watch({Answer("ONLINE")}), 1);
}

TEST_F(WatchTest, ViewThatCannotShowEndsIt) {
    m_View.m_CanShow = false;
    EXPECT_EQ(Watch(std::vector<CAnswer>(9, Answer("ONLINE"))), 1);
    EXPECT_EQ(m_View.m_Ticks.size(), 1U);
}

TEST_F(WatchTest, TextsOfTheToolStayOnTheirLine) {
    Watch({Answer("ONLINE"), Answer("a\nb\x1b")});
    EXPECT_THAT(m_View.m_Text, testing::HasSubstr("ONLINE -> a\\nb\\x1b\n"));
}

TEST_F(WatchTest, TimesAreUtc) {
    EXPECT_EQ(qorctl::FormatTime(BEGAN_AT), "2026-11-20T10:00:00Z");
    EXPECT_EQ(qorctl::FormatTime(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(qorctl::FormatTime(INT64_MAX), "?");
}

}  // namespace
