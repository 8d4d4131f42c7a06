// A text that was handed out is freed when its time is over, and not before: told by the blocks
// that are allocated.
#include <gtest/gtest.h>

#include "AllocationFault.h"
#include "ItemList.h"
#include "plugin/MngSrv_QorLibIF.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

using qortest::LiveAllocations;

// Too long for a string's own buffer.
constexpr const char* COMPONENT = "a component text of some length";

class XmlTextLifetime : public testing::Test {
protected:
    XmlTextLifetime() { m_List.Add("", "R"); }

    unsigned int Serialize(unsigned int type = 0) {
        char* out = nullptr;
        return m_Manager.XmlSerialize(type, COMPONENT, &m_List.items, &out);
    }

    qortest::CItemList m_List;
    CMngSrv_QorLibMan m_Manager;
};

TEST_F(XmlTextLifetime, NextRequestTakesThePlaceOfTheOneBefore) {
    ASSERT_EQ(Serialize(), 0U);
    const long held = LiveAllocations();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(Serialize(), 0U);
        EXPECT_EQ(LiveAllocations(), held);
    }
}

TEST_F(XmlTextLifetime, RequestOfAnUnknownTypeEndsTheTextBefore) {
    const long before = LiveAllocations();
    ASSERT_EQ(Serialize(), 0U);
    EXPECT_GT(LiveAllocations(), before);
    EXPECT_EQ(Serialize(1), 0x02000000U);
    EXPECT_EQ(LiveAllocations(), before);
}

TEST_F(XmlTextLifetime, RefusedArgumentsEndNothing) {
    ASSERT_EQ(Serialize(), 0U);
    const long held = LiveAllocations();
    char* out = nullptr;
    EXPECT_EQ(m_Manager.XmlSerialize(0, nullptr, &m_List.items, &out), 0x01000000U);
    EXPECT_EQ(m_Manager.XmlSerialize(0, COMPONENT, nullptr, &out), 0x01000000U);
    char text = 'x';
    out = &text;
    EXPECT_EQ(m_Manager.XmlSerialize(0, COMPONENT, &m_List.items, &out), 0x01000000U);
    EXPECT_EQ(LiveAllocations(), held);
}

TEST_F(XmlTextLifetime, DeletingFreesTheText) {
    const long before = LiveAllocations();
    ASSERT_EQ(Serialize(), 0U);
    m_Manager.DeleteXmlSerializer();
    EXPECT_EQ(LiveAllocations(), before);
}

TEST_F(XmlTextLifetime, PlugInObjectTakesItsTextWithIt) {
    const long before = LiveAllocations();
    auto* const object = static_cast<CMngSrv_QorLibIF*>(CreateLibIF());
    char* out = nullptr;
    EXPECT_EQ(object->XmlSerialize(0, COMPONENT, &m_List.items, &out), 0U);
    DeleteLibIF(object);
    EXPECT_EQ(LiveAllocations(), before);
}

}  // namespace
