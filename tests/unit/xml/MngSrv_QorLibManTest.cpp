#include <gtest/gtest.h>

#include "ItemList.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

using qortest::CItemList;

class MngSrv_QorLibMan : public testing::Test {
protected:
    MngSrv_QorLibMan() { m_List.Add("", "R"); }

    CItemList m_List;
    CMngSrv_QorLibMan m_Manager;
    char* m_pOut = nullptr;
};

const char* const DOCUMENT =
    "<dispdata><component>C</component>"
    "<item><name>R</name><val/><enbl>TRUE</enbl><item/></item></dispdata>";

TEST_F(MngSrv_QorLibMan, HandsOutADocumentOfDisplayData) {
    EXPECT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &m_pOut), 0U);
    EXPECT_STREQ(m_pOut, DOCUMENT);
}

TEST_F(MngSrv_QorLibMan, HoldsNoSerializerAtFirst) {
    EXPECT_FALSE(m_Manager.HasXmlSerializer());
    m_Manager.DeleteXmlSerializer();
    EXPECT_FALSE(m_Manager.HasXmlSerializer());
}

TEST_F(MngSrv_QorLibMan, ArgumentFailuresKeepThePreviousText) {
    ASSERT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &m_pOut), 0U);
    char* none = nullptr;
    char* set = m_pOut;
    EXPECT_EQ(m_Manager.XmlSerialize(0, nullptr, &m_List.items, &none), 0x01000000U);
    EXPECT_EQ(m_Manager.XmlSerialize(0, "C", nullptr, &none), 0x01000000U);
    EXPECT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &set), 0x01000000U);
    EXPECT_EQ(m_Manager.XmlSerialize(1, "C", &m_List.items, &set), 0x01000000U);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(set, m_pOut);
    EXPECT_STREQ(m_pOut, DOCUMENT);
}

TEST_F(MngSrv_QorLibMan, UnknownTypesLeaveNoSerializerHeld) {
    for (const unsigned int type : {1U, 2U, 0xFFFFFFFFU}) {
        char* first = nullptr;
        ASSERT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &first), 0U);
        EXPECT_EQ(m_Manager.XmlSerialize(type, "C", &m_List.items, &m_pOut), 0x02000000U);
        EXPECT_EQ(m_pOut, nullptr);
        EXPECT_FALSE(m_Manager.HasXmlSerializer());
    }
}

TEST_F(MngSrv_QorLibMan, EmptyListIsAnInvalidArgument) {
    std::list<CItemDisp*> empty;
    EXPECT_EQ(m_Manager.XmlSerialize(0, "C", &empty, &m_pOut), 0x01000000U);
    EXPECT_EQ(m_pOut, nullptr);
}

TEST_F(MngSrv_QorLibMan, ItemFailuresPassThroughAndKeepTheSerializer) {
    m_List.Add("R", "A", "", "true");
    EXPECT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &m_pOut), 0x03300002U);
    EXPECT_EQ(m_pOut, nullptr);
    EXPECT_TRUE(m_Manager.HasXmlSerializer());
}

TEST_F(MngSrv_QorLibMan, EverySerializationStartsAfresh) {
    for (int round = 0; round < 3; ++round) {
        char* out = nullptr;
        ASSERT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &out), 0U);
        EXPECT_STREQ(out, DOCUMENT);
    }
}

TEST_F(MngSrv_QorLibMan, CreatingRefusesUnknownTypesAndChangesNothing) {
    EXPECT_EQ(m_Manager.CreateXmlSerializer(1, "C"), 0x02000000U);
    EXPECT_FALSE(m_Manager.HasXmlSerializer());
    EXPECT_EQ(m_Manager.CreateXmlSerializer(0, "C"), 0U);
    EXPECT_EQ(m_Manager.CreateXmlSerializer(1, "C"), 0x02000000U);
    EXPECT_TRUE(m_Manager.HasXmlSerializer());
}

// A sanitizer build tells if the text were gone, or if a serializer were never freed.
TEST_F(MngSrv_QorLibMan, CreatingAnotherSerializerKeepsTheTextOfTheOneBefore) {
    ASSERT_EQ(m_Manager.XmlSerialize(0, "C", &m_List.items, &m_pOut), 0U);
    EXPECT_EQ(m_Manager.CreateXmlSerializer(0, "D"), 0U);
    EXPECT_EQ(m_Manager.CreateXmlSerializer(0, "E"), 0U);
    EXPECT_STREQ(m_pOut, DOCUMENT);
    m_Manager.DeleteXmlSerializer();
    EXPECT_FALSE(m_Manager.HasXmlSerializer());
    EXPECT_STREQ(m_pOut, DOCUMENT);
}

}  // namespace
