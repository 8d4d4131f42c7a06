#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "FakeComLib.h"
#include "svp/CSvpPdInfo.h"

namespace {

using qortest::CTraceLine;
using CPairs = std::vector<std::pair<std::string, std::string>>;

const CPairs COMPLETE = {
    {"Raw Capacity", "931 GB"}, {"Interface Type", "SAS"},  {"Media Type", "HDD"},
    {"Product ID", "P1"},       {"Serial Number", "S1"},    {"Vendor ID", "V1"},
    {"PD Status", "Online"},    {"PD Status(Detail)", "O"}, {"Drive Speed", "10500"},
    {"Revision Level", "0001"},
};

CSvpPdInfo PdOf(const CPairs& pairs) {
    CSvpPdInfo pd;
    for (const auto& [label, value] : pairs) {
        pd.AddItem(label, value);
    }
    return pd;
}

CPairs Checked(const CPairs& pairs) {
    CSvpPdInfo pd = PdOf(pairs);
    pd.CheckMyItem();
    CPairs left;
    for (const CSvpCtrlPdItem& item : pd.Items()) {
        left.emplace_back(item.Lavel(), item.Value());
    }
    return left;
}

TEST(SvpPdInfo, LayoutIsNumberSizeItems) {
    CSvpPdInfo pd = PdOf({{"A", "1"}, {"B", ""}});
    pd.SetPDNo(0xFE);
    pd.SetDataSize();
    std::string digits = "before";
    pd.DumpMe(&digits);
    EXPECT_EQ(digits,
              "before"
              "fe"    // drive number
              "1000"  // section size 16
              "024100"
              "02003100"  // "A" = "1"
              "024200"
              "010000");  // "B" = ""
    EXPECT_EQ(pd.PDSectionSize(), 16);
    EXPECT_EQ(pd.DataSize(), 16U);
}

TEST(SvpPdInfo, SectionWithoutItemsIsItsHeader) {
    CSvpPdInfo pd;
    pd.SetDataSize();
    std::string digits;
    pd.DumpMe(&digits);
    EXPECT_EQ(digits, "000300");
}

TEST(SvpPdInfo, SectionSizeWrapsBeyond16Bits) {
    CSvpPdInfo pd;
    for (int i = 0; i < 226; ++i) {
        pd.AddItem(std::string(31, 'l'), std::string(255, 'v'));
    }
    pd.SetDataSize();
    EXPECT_EQ(pd.PDSectionSize(), 3 + 226 * 291 - 65'536);
    EXPECT_EQ(pd.DataSize(), pd.PDSectionSize());
}

TEST(SvpPdInfo, SetDataSizeTwiceIsTheSame) {
    CSvpPdInfo pd = PdOf(COMPLETE);
    pd.SetDataSize();
    const std::uint64_t size = pd.DataSize();
    pd.SetDataSize();
    EXPECT_EQ(pd.DataSize(), size);
}

TEST(SvpPdInfo, CompleteItemsAreKept) {
    EXPECT_EQ(Checked(COMPLETE), COMPLETE);
}

TEST(SvpPdInfo, ItemsBeyondTheTableAreKept) {
    CPairs more = COMPLETE;
    more.emplace_back("Something", "");
    more.emplace_back("PD No.", "PD1");
    EXPECT_EQ(Checked(more), more);
}

TEST(SvpPdInfo, MissingItemDropsEveryItem) {
    for (std::size_t missing = 0; missing < COMPLETE.size(); ++missing) {
        CPairs pairs = COMPLETE;
        pairs.erase(pairs.begin() + static_cast<std::ptrdiff_t>(missing));
        EXPECT_EQ(Checked(pairs), CPairs()) << COMPLETE[missing].first;
    }
}

TEST(SvpPdInfo, EmptyValueDropsEveryItem) {
    for (std::size_t empty = 0; empty < COMPLETE.size(); ++empty) {
        CPairs pairs = COMPLETE;
        pairs[empty].second.clear();
        EXPECT_EQ(Checked(pairs), CPairs()) << COMPLETE[empty].first;
    }
}

TEST(SvpPdInfo, OtherNameOrOrderDropsEveryItem) {
    for (std::size_t first = 0; first + 1 < COMPLETE.size(); ++first) {
        CPairs swapped = COMPLETE;
        std::swap(swapped[first], swapped[first + 1]);
        EXPECT_EQ(Checked(swapped), CPairs()) << first;
        CPairs otherCase = COMPLETE;
        otherCase[first].first[0] = 'x';
        EXPECT_EQ(Checked(otherCase), CPairs()) << first;
        CPairs longer = COMPLETE;
        longer[first].first += " of the drive";
        EXPECT_EQ(Checked(longer), CPairs()) << first;
        CPairs shorter = COMPLETE;
        shorter[first].first.pop_back();
        EXPECT_EQ(Checked(shorter), CPairs()) << first;
    }
    CPairs extraInFront = COMPLETE;
    extraInFront.insert(extraInFront.begin(), {"PD No.", "PD1"});
    EXPECT_EQ(Checked(extraInFront), CPairs());
}

TEST(SvpPdInfo, CheckOfNoItemsIsHarmless) {
    EXPECT_EQ(Checked({}), CPairs());
}

TEST(SvpPdInfo, InitFormEmptiesEverything) {
    CSvpPdInfo pd = PdOf(COMPLETE);
    pd.SetPDNo(5);
    pd.SetDataSize();
    pd.InitForm();
    EXPECT_EQ(pd.PDNo(), 0);
    EXPECT_EQ(pd.PDSectionSize(), 0);
    EXPECT_EQ(pd.DataSize(), 0U);
    EXPECT_TRUE(pd.Items().empty());
}

TEST(SvpPdInfo, TraceLinesInOrder) {
    CSvpPdInfo pd = PdOf({{"A", "1"}});
    pd.SetPDNo(7);
    pd.SetDataSize();
    qortest::ResetFakeComLib();
    pd.OutPutMemberToDebugLog();
    const std::vector<CTraceLine> expected = {
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[START]"},
        {1, "m_PDNo=7"},
        {1, "m_PDSectionSize=10"},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[START]"},
        {1, "m_LavelSize=2"},
        {1, "m_Lavel=A"},
        {1, "m_ValueSize=2"},
        {1, "m_Value=1"},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[END]"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[END]"},
    };
    EXPECT_EQ(qortest::FakeComLib().traces, expected);
}

}  // namespace
