// Events that wait to be handed over, each under an id of its own.
#include <gtest/gtest.h>

#include <set>

#include "watch/Outbox.h"

namespace {

using qorctl::CJson;
using qorctl::COutbox;

constexpr int64_t SENT_AT = 1795168800;

CJson Event(const std::string& summary) {
    CJson event = qorctl::NewEvent(SENT_AT, "change");
    event["severity"] = "OK";
    event["object"] = "server";
    event["summary"] = summary;
    event["host"] = "server1";
    return event;
}

CJson Head(const COutbox& outbox) {
    return CJson::parse(outbox.Head());
}

COutbox ReadBack(const COutbox& outbox) {
    return COutbox::FromJson(CJson::parse('{' + outbox.Members() + '}'));
}

TEST(OutboxTest, EventsComeInTheirOrderUnderIdsOfTheirOwn) {
    COutbox outbox;
    std::set<std::string> ids;
    for (int i = 0; i < 3; ++i) {
        outbox.Add(Event(std::to_string(i)), SENT_AT);
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Head(outbox)["summary"], std::to_string(i));
        ids.insert(Head(outbox)["id"]);
        outbox.Strike();
    }
    EXPECT_TRUE(outbox.IsEmpty());
    EXPECT_EQ(ids.size(), 3U);
}

TEST(OutboxTest, OutboxesHaveIdsOfTheirOwn) {
    COutbox one;
    COutbox other;
    one.Add(Event("a"), SENT_AT);
    other.Add(Event("a"), SENT_AT);
    EXPECT_NE(Head(one)["id"], Head(other)["id"]);
}

TEST(OutboxTest, NothingIsHandedOverBeforeItIsInTheFile) {
    COutbox outbox;
    outbox.Add(Event("a"), SENT_AT);
    EXPECT_FALSE(outbox.IsHeadKept());
    outbox.MarkKept();
    EXPECT_TRUE(outbox.IsHeadKept());
    outbox.Add(Event("b"), SENT_AT);
    outbox.Strike();
    EXPECT_FALSE(outbox.IsHeadKept());
}

TEST(OutboxTest, WhatIsReadBackIsTheSameAndGoesOnCounting) {
    COutbox outbox;
    outbox.Add(Event("struck"), SENT_AT);
    outbox.Add(Event("a\nb \x1b \xff"), SENT_AT);
    outbox.Strike();
    COutbox back = ReadBack(outbox);
    EXPECT_EQ(back.Head(), outbox.Head());
    EXPECT_EQ(back.Members(), outbox.Members());
    EXPECT_TRUE(back.IsHeadKept());
    back.Strike();
    back.Add(Event("next"), SENT_AT);
    const std::string id = Head(back)["id"];
    EXPECT_TRUE(id.ends_with("-3")) << id;
}

// An event that no program takes for weeks must not fill the disk; what is lost is counted.
TEST(OutboxTest, OldestEventsBecomeOneThatCountsThem) {
    COutbox outbox;
    uint64_t lost = 0;
    constexpr size_t MANY = 2 * COutbox::MOST_EVENTS + 500;
    for (size_t i = 0; i < MANY; ++i) {
        outbox.Add(Event(std::to_string(i)), SENT_AT);
        ASSERT_LE(outbox.Size(), COutbox::MOST_EVENTS);
    }
    outbox = ReadBack(outbox);
    EXPECT_EQ(Head(outbox)["event"], "lost");
    EXPECT_EQ(Head(outbox)["severity"], "UNKNOWN");
    EXPECT_EQ(Head(outbox)["host"], "server1");
    lost = Head(outbox)["count"];
    EXPECT_EQ(lost + outbox.Size() - 1, MANY);
    outbox.Strike();
    EXPECT_EQ(Head(outbox)["summary"], std::to_string(lost));
}

TEST(OutboxTest, EventThatIsBeingHandedOverStays) {
    COutbox outbox;
    outbox.Add(Event("first"), SENT_AT);
    outbox.Hold(true);
    for (size_t i = 0; i <= COutbox::MOST_EVENTS; ++i) {
        outbox.Add(Event("other"), SENT_AT);
    }
    EXPECT_EQ(Head(outbox)["summary"], "first");
    outbox.Strike();
    EXPECT_EQ(Head(outbox)["event"], "lost");
}

TEST(OutboxTest, LargeEventsAreFewer) {
    COutbox outbox;
    for (int i = 0; i < 100; ++i) {
        outbox.Add(Event(std::string(200000, 'x')), SENT_AT);
        ASSERT_LE(outbox.Members().size(), COutbox::MOST_BYTES + 1000);
    }
    EXPECT_EQ(Head(outbox)["count"].get<size_t>() + outbox.Size() - 1, 100U);
}

}  // namespace
