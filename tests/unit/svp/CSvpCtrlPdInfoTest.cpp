#include <gtest/gtest.h>

#include "FakeComLib.h"
#include "svp/CSvpCtrlPdInfo.h"

namespace {

using qortest::CTraceLine;

// Controller 3 with the item "A" = "1" and the drives 4 (one item) and 5 (none).
CSvpCtrlPdInfo SmallCtrl() {
    CSvpCtrlPdInfo ctrl;
    ctrl.SetCtrlNo(3);
    ctrl.AddItem("A", "1");
    CSvpPdInfo pd;
    pd.SetPDNo(4);
    pd.AddItem("B", "");
    ctrl.AddPD(pd);
    pd.InitForm();
    pd.SetPDNo(5);
    ctrl.AddPD(pd);
    return ctrl;
}

TEST(SvpCtrlPdInfo, LayoutIsHeaderItemsDrives) {
    CSvpCtrlPdInfo ctrl = SmallCtrl();
    ctrl.SetDataSize();
    std::string digits = "before";
    ctrl.DumpMe(&digits);
    EXPECT_EQ(digits,
              "before"
              "03"    // controller number
              "02"    // drive count
              "1900"  // size with the drives: 25
              "0d00"  // size without them: 13
              "024100"
              "02003100"  // "A" = "1"
              "040900"    // drive 4, 9 bytes
              "024200"
              "010000"    // "B" = ""
              "050300");  // drive 5, header only
    EXPECT_EQ(ctrl.DataSize(), 25U);
}

TEST(SvpCtrlPdInfo, SectionWithoutItemsAndDrivesIsItsHeader) {
    CSvpCtrlPdInfo ctrl;
    ctrl.SetDataSize();
    std::string digits;
    ctrl.DumpMe(&digits);
    EXPECT_EQ(digits, "000006000600");
}

TEST(SvpCtrlPdInfo, SetDataSizeTwiceCountsTheDrivesTwice) {
    CSvpCtrlPdInfo ctrl = SmallCtrl();
    ctrl.SetDataSize();
    ctrl.SetDataSize();
    EXPECT_EQ(ctrl.PDCountOnCtrl(), 4);
    EXPECT_EQ(ctrl.CtrlAndPDSectionSize(), 25);
    EXPECT_EQ(ctrl.CtrlSectionSize(), 13);
}

TEST(SvpCtrlPdInfo, DriveCountWrapsBeyond8Bits) {
    for (const int count : {255, 256, 300}) {
        CSvpCtrlPdInfo ctrl;
        for (int i = 0; i < count; ++i) {
            ctrl.AddPD(CSvpPdInfo());
        }
        ctrl.SetDataSize();
        EXPECT_EQ(ctrl.PDCountOnCtrl(), count % 256);
        EXPECT_EQ(ctrl.DataSize(), 6U + 3U * static_cast<unsigned int>(count));
    }
}

TEST(SvpCtrlPdInfo, SectionSizesWrapBeyond16Bits) {
    CSvpCtrlPdInfo ctrl;
    for (int i = 0; i < 226; ++i) {
        ctrl.AddItem(std::string(31, 'l'), std::string(255, 'v'));
    }
    ctrl.AddPD(CSvpPdInfo());
    ctrl.SetDataSize();
    EXPECT_EQ(ctrl.CtrlSectionSize(), 6 + 226 * 291 - 65'536);
    EXPECT_EQ(ctrl.CtrlAndPDSectionSize(), ctrl.CtrlSectionSize() + 3);
    EXPECT_EQ(ctrl.DataSize(), ctrl.CtrlAndPDSectionSize());
}

TEST(SvpCtrlPdInfo, SizeWithDrivesWrapsAlone) {
    CSvpCtrlPdInfo ctrl;
    for (int i = 0; i < 21'844; ++i) {
        ctrl.AddPD(CSvpPdInfo());
    }
    ctrl.SetDataSize();
    EXPECT_EQ(ctrl.CtrlSectionSize(), 6);
    EXPECT_EQ(ctrl.CtrlAndPDSectionSize(), 6 + 3 * 21'844 - 65'536);
}

TEST(SvpCtrlPdInfo, CopyIsIndependent) {
    CSvpCtrlPdInfo ctrl = SmallCtrl();
    CSvpCtrlPdInfo copy = ctrl;
    ctrl.InitForm();
    copy.SetDataSize();
    EXPECT_EQ(copy.CtrlNo(), 3);
    EXPECT_EQ(copy.Items().size(), 1U);
    EXPECT_EQ(copy.PDs().size(), 2U);
    EXPECT_EQ(copy.PDs().front().Items().size(), 1U);
    EXPECT_EQ(copy.DataSize(), 25U);
}

TEST(SvpCtrlPdInfo, InitFormEmptiesEverything) {
    CSvpCtrlPdInfo ctrl = SmallCtrl();
    ctrl.SetDataSize();
    ctrl.InitForm();
    EXPECT_EQ(ctrl.CtrlNo(), 0);
    EXPECT_EQ(ctrl.PDCountOnCtrl(), 0);
    EXPECT_EQ(ctrl.CtrlAndPDSectionSize(), 0);
    EXPECT_EQ(ctrl.CtrlSectionSize(), 0);
    EXPECT_EQ(ctrl.DataSize(), 0U);
    EXPECT_TRUE(ctrl.Items().empty());
    EXPECT_TRUE(ctrl.PDs().empty());
}

TEST(SvpCtrlPdInfo, TraceLinesInOrder) {
    CSvpCtrlPdInfo ctrl = SmallCtrl();
    ctrl.SetDataSize();
    qortest::ResetFakeComLib();
    ctrl.OutPutMemberToDebugLog();
    const std::vector<CTraceLine> expected = {
        {4, "CSvpCtrlPdInfo::OutPutMemberToDebugLog[START]"},
        {1, "m_CtrlNo=3"},
        {1, "m_PDCountOnCtrl=2"},
        {1, "m_CtrlAndPDSectionSize=25"},
        {1, "m_CtrlSectionSize=13"},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[START]"},
        {1, "m_LavelSize=2"},
        {1, "m_Lavel=A"},
        {1, "m_ValueSize=2"},
        {1, "m_Value=1"},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[END]"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[START]"},
        {1, "m_PDNo=4"},
        {1, "m_PDSectionSize=9"},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[START]"},
        {1, "m_LavelSize=2"},
        {1, "m_Lavel=B"},
        {1, "m_ValueSize=1"},
        {1, "m_Value="},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[END]"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[END]"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[START]"},
        {1, "m_PDNo=5"},
        {1, "m_PDSectionSize=3"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[END]"},
        {1, "m_DumpSize=25"},
        {4, "CSvpCtrlPdInfo::OutPutMemberToDebugLog[END]"},
    };
    EXPECT_EQ(qortest::FakeComLib().traces, expected);
}

}  // namespace
