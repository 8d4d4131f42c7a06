// What a watch remembers, and the events that it makes of what it sees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "health/StateFile.h"
#include "model/InventoryDiff.h"
#include "watch/SeenInventory.h"
#include "watch/WatchState.h"

namespace {

using qorctl::CChange;
using qorctl::CInventory;
using qorctl::CJson;
using qorctl::CQuantity;
using qorctl::CTick;
using qorctl::CWatchState;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t NOVEMBER = 1795168800;  // 2026-11-20T10:00:00Z

CInventory Inventory(const std::string& state) {
    CInventory inventory;
    qorctl::CController controller;
    controller.number = 0;
    controller.serial = "0123";
    controller.batteryStatus = "Normal \xe4\xff";
    inventory.controllers.push_back(controller);
    qorctl::CLogicalDrive logical;
    logical.controller = 0;
    logical.number = 1;
    logical.state = "Optimal";
    logical.group = "RG0";
    inventory.logicalDrives.push_back(logical);
    qorctl::CPhysicalDrive drive;
    drive.controller = 0;
    drive.number = 3;
    drive.place = {252, 3};
    drive.statusDetail = state;
    drive.use = "LD1";
    drive.group = "RG0";
    drive.serial = "4711";
    drive.product = "ST600";
    drive.capacity = CQuantity{"558.912GB", 600127190335};
    drive.progress = CQuantity{"10%", 10};
    drive.mediaErrors = CQuantity{"2", 2};
    drive.otherErrors = CQuantity{"many", std::nullopt};
    inventory.physicalDrives.push_back(drive);
    inventory.physicalDrives.push_back(drive);
    qorctl::CPcieSsd ssd;
    ssd.bus = 177;
    ssd.status = "Healthy";
    ssd.serial = "S1";
    inventory.pcieSsds.push_back(ssd);
    return inventory;
}

std::vector<std::string> Described(const std::vector<CChange>& changes) {
    std::vector<std::string> lines;
    for (const CChange& change : changes) {
        lines.push_back(qorctl::DescribeChange(change));
    }
    return lines;
}

TEST(SeenInventoryTest, WhatIsReadBackComparesAsWhatWasWritten) {
    const CInventory before = Inventory("ONLINE");
    const CJson json = qorctl::SeenToJson(before);
    const CInventory back = qorctl::SeenFromJson(CJson::parse(json.dump()));
    EXPECT_THAT(Described(CompareInventories(before, back)), IsEmpty());
    EXPECT_THAT(Described(CompareInventories(back, before)), IsEmpty());
    const CInventory nothing;
    EXPECT_EQ(Described(CompareInventories(back, nothing)),
              Described(CompareInventories(before, nothing)));
    const CInventory after = Inventory("FAILED");
    EXPECT_EQ(Described(CompareInventories(back, after)),
              Described(CompareInventories(before, after)));
}

class WatchStateTest : public testing::Test {
protected:
    // A look at the server, compared with the last one as a watch does.
    void See(const CInventory& inventory, std::vector<qorctl::CHealthFinding> findings = {}) {
        CTick tick;
        tick.wallTime = m_Time++;
        tick.answer.outcome = qorctl::EOutcome::ANSWERED;
        tick.answer.inventory = inventory;
        tick.answer.gaps = m_Gaps;
        tick.seen = &inventory;
        tick.isFirstAnswer = m_IsStarted;
        tick.status = qorctl::EHealth::OK;
        tick.health.findings = std::move(findings);
        if (m_State.Past().inventory) {
            tick.changes = CompareInventories(*m_State.Past().inventory, inventory);
        }
        m_IsStarted = false;
        m_State.Take(tick);
    }
    void SeeNothing() {
        CTick tick;
        tick.wallTime = m_Time++;
        tick.answer.sentence = "the RAID tool did not answer in time";
        m_State.Take(tick);
    }
    // As after an end of the program, whatever kind.
    void Restart() {
        CWatchState state({}, "server1");
        ASSERT_EQ(state.Parse(m_State.Format()), CWatchState::EParse::DONE);
        EXPECT_EQ(state.Format(), m_State.Format());
        m_State = std::move(state);
        m_IsStarted = true;
    }
    std::vector<CJson> Events() {
        std::vector<CJson> events;
        for (; !m_State.Outbox().IsEmpty(); m_State.Outbox().Strike()) {
            events.push_back(CJson::parse(m_State.Outbox().Head()));
        }
        return events;
    }
    std::vector<std::string> Told() {
        std::vector<std::string> told;
        for (const CJson& event : Events()) {
            told.push_back(event["event"].get<std::string>() + ' ' +
                           event["severity"].get<std::string>() + ' ' +
                           event["summary"].get<std::string>());
        }
        return told;
    }

    int64_t m_Time = NOVEMBER;
    bool m_IsStarted = true;
    std::vector<qorctl::CGap> m_Gaps;
    CWatchState m_State{{}, "server1"};
};

TEST_F(WatchStateTest, FirstLookTellsWhatIsNotWellOncePerObject) {
    See(Inventory("FAILED"),
        {{qorctl::EHealth::CRITICAL, "drive-state", "controller 0 drive 252:3", "FAILED"},
         {qorctl::EHealth::UNKNOWN, "gap", "", "a card without a controller"},
         {qorctl::EHealth::WARNING, "drive-media-errors", "controller 0 drive 252:3",
          "2 media errors"}});
    EXPECT_THAT(Told(),
                ElementsAre("found CRITICAL controller 0 drive 252:3: FAILED; 2 media errors",
                            "found UNKNOWN server: a card without a controller"));
    See(Inventory("FAILED"));
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(WatchStateTest, FirstLookAtAWellServerTellsNothing) {
    See(Inventory("ONLINE"));
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(WatchStateTest, ChangeBetweenTwoRunsHasTheTimeOfTheLastLook) {
    See(Inventory("ONLINE"));
    Restart();
    m_Time += 3600;
    CInventory failed = Inventory("ONLINE");
    failed.pcieSsds[0].status = "Failed";
    See(failed, {{qorctl::EHealth::CRITICAL, "ssd-state", "PCIe SSD 177", "Failed"}});
    const std::vector<CJson> events = Events();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0]["since"], "2026-11-20T10:00:00Z");
    EXPECT_EQ(events[0]["time"], "2026-11-20T11:00:01Z");
    EXPECT_EQ(events[0]["severity"], "CRITICAL");
    EXPECT_EQ(events[0]["host"], "server1");
    See(Inventory("ONLINE"));
    EXPECT_FALSE(Events().at(0).contains("since"));
}

TEST_F(WatchStateTest, GoneDeviceIsAWarning) {
    See(Inventory("ONLINE"));
    CInventory without = Inventory("ONLINE");
    without.pcieSsds.clear();
    See(without);
    EXPECT_THAT(Told(), ElementsAre("gone WARNING PCIe SSD 177: gone, Healthy"));
}

// Half an answer: nobody knows whether the drive is gone.
TEST_F(WatchStateTest, GoneInHalfAnAnswerMayBeLeftOut) {
    CInventory inventory = Inventory("ONLINE");
    See(inventory);
    inventory.physicalDrives.clear();
    m_Gaps = {{.rule = "drives-missing",
               .object = "controller 0",
               .text = "states 2 drives, 0 reported",
               .remedy = ""}};
    See(inventory);
    const std::vector<CJson> events = Events();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0]["event"], "gone");
    EXPECT_EQ(events[0]["incomplete"], true);
    EXPECT_THAT(events[0]["summary"].get<std::string>(),
                testing::EndsWith(
                    ": gone, ONLINE (or left out: controller 0 states 2 drives, 0 reported)"));
    m_Gaps.clear();
    See(Inventory("ONLINE"));
    EXPECT_FALSE(Events().at(0).contains("incomplete"));
}

TEST_F(WatchStateTest, NoAnswerIsToldOnceAcrossStarts) {
    See(Inventory("ONLINE"));
    SeeNothing();
    SeeNothing();
    Restart();
    SeeNothing();
    See(Inventory("ONLINE"));
    EXPECT_THAT(Told(),
                ElementsAre("no-answer UNKNOWN no answer: the RAID tool did not answer in time",
                            "answers-again OK answers again"));
}

// A loose cable of a server with all the drives that there may be: what is remembered must still
// fit into the file, or nothing would be handed over any more.
TEST_F(WatchStateTest, StateOfManyDrivesThatFlapFitsIntoItsFile) {
    CInventory inventory = Inventory("ONLINE");
    const qorctl::CPhysicalDrive drive = inventory.physicalDrives.front();
    inventory.physicalDrives.clear();
    for (int i = 0; i < MANY_DRIVES; ++i) {
        inventory.physicalDrives.push_back(drive);
        inventory.physicalDrives.back().number = i;
    }
    for (int i = 0; i < 10; ++i) {
        for (qorctl::CPhysicalDrive& each : inventory.physicalDrives) {
            each.statusDetail = i % 2 == 0 ? "FAILED" : "ONLINE";
            each.mediaErrors = CQuantity{std::to_string(i), i};
            each.use = i % 2 == 0 ? "LD1" : "LD2";
        }
        See(inventory);
        EXPECT_LE(m_State.Format().size(), qorctl::CStateFile::MAX_SIZE) << i;
    }
    Restart();
}

TEST_F(WatchStateTest, FlappingIsDampedAcrossStartsAndSaidSo) {
    See(Inventory("ONLINE"));
    for (int i = 0; i < 10; ++i) {
        CInventory inventory = Inventory("ONLINE");
        inventory.logicalDrives[0].state = i % 2 == 0 ? "Degraded" : "Optimal";
        See(inventory);
        Restart();
    }
    const std::vector<std::string> told = Told();
    ASSERT_EQ(told.size(), 6U);
    EXPECT_EQ(told[5],
              "flapping WARNING controller 0 logical drive LD1: state changes again and again "
              "(Degraded -> Optimal): told once an hour from now on");
    m_Time += 600;
    See(Inventory("ONLINE"));
    EXPECT_THAT(Told(),
                ElementsAre("flapping WARNING controller 0 logical drive LD1: state changed "
                            "4 more times (Optimal -> Optimal) and has settled"));
}

TEST_F(WatchStateTest, ProgressIsNoFlapping) {
    See(Inventory("REBUILD"));
    for (int percent = 11; percent < 31; ++percent) {
        CInventory inventory = Inventory("REBUILD");
        inventory.physicalDrives.pop_back();
        inventory.physicalDrives[0].progress = CQuantity{std::to_string(percent) + "%", percent};
        See(inventory);
    }
    EXPECT_EQ(Told().size(), 21U);  // and the twin that went
}

TEST_F(WatchStateTest, WhatIsNoStateIsCorruptAndWhatIsAnothersIsForeign) {
    See(Inventory("FAILED"));
    const std::string text = m_State.Format();
    CWatchState state({}, "server1");
    for (const std::string& corrupt :
         {std::string(), std::string("nonsense"), text.substr(0, text.size() / 2),
          std::string(100, '\0'), std::string("[1]"), std::string("{\"version\":1}"),
          std::string("{\"format\":\"qorctl-watch-state\",\"version\":1}")}) {
        EXPECT_EQ(state.Parse(corrupt), CWatchState::EParse::CORRUPT) << corrupt;
    }
    for (const char* foreign : {R"({"format":"qorctl-health-state","version":1,"drives":{}})",
                                R"({"format":"qorctl-watch-state","version":2})"}) {
        EXPECT_EQ(state.Parse(foreign), CWatchState::EParse::FOREIGN) << foreign;
    }
}

TEST_F(WatchStateTest, NestedTextIsCorrupt) {
    See(Inventory("FAILED"));
    std::string text = m_State.Format();
    const size_t end = text.rfind('}');
    constexpr size_t DEEP = 1000000;
    text.insert(end, ",\"x\":" + std::string(DEEP, '[') + std::string(DEEP, ']'));
    EXPECT_EQ(m_State.Parse(text), CWatchState::EParse::CORRUPT);
}

TEST_F(WatchStateTest, StateOfAPartOfTheServerIsForThatPartOnly) {
    const qorctl::CInventoryFilter part = {.controller = 1};
    CWatchState state(part, "server1");
    ASSERT_EQ(state.Parse(CWatchState(part, "server1").Format()), CWatchState::EParse::DONE);
    EXPECT_TRUE(state.IsFor(part));
    EXPECT_FALSE(state.IsFor({}));
}

TEST_F(WatchStateTest, CorruptStateIsAnEvent) {
    m_State.TellCorrupt("the state file was corrupt", NOVEMBER);
    EXPECT_THAT(Told(), ElementsAre("state-corrupt UNKNOWN the state file was corrupt"));
}

}  // namespace
