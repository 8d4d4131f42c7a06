#include <gtest/gtest.h>

#include "FakeComLib.h"
#include "svp/CSvpCtrlPdItem.h"

namespace {

using qortest::CTraceLine;

std::string Dump(const CSvpCtrlPdItem& item) {
    std::string digits;
    item.DumpMe(&digits);
    return digits;
}

TEST(SvpCtrlPdItem, LayoutIsSizeLabelSizeValue) {
    const CSvpCtrlPdItem item("Label", "v1");
    EXPECT_EQ(Dump(item),
              "06"            // label size
              "4c6162656c00"  // "Label" and its zero byte
              "0300"          // value size
              "763100");      // "v1" and its zero byte
    EXPECT_EQ(item.LavelSize(), 6);
    EXPECT_EQ(item.ValueSize(), 3);
    EXPECT_EQ(item.DataSize(), 12U);
}

TEST(SvpCtrlPdItem, EmptyTextsTakeFiveBytes) {
    const CSvpCtrlPdItem item("", "");
    EXPECT_EQ(Dump(item), "0100010000");
    EXPECT_EQ(item.DataSize(), 5U);
}

TEST(SvpCtrlPdItem, LongTextsAreCut) {
    const struct {
        std::size_t label;
        std::size_t value;
        std::size_t keptLabel;
        std::size_t keptValue;
    } rows[] = {{30, 254, 30, 254}, {31, 255, 31, 255}, {32, 256, 31, 255}, {40, 300, 31, 255}};
    for (const auto& row : rows) {
        const std::string label = std::string(row.label - 1, 'l') + "!";
        const std::string value = std::string(row.value - 1, 'v') + "!";
        const CSvpCtrlPdItem item(label, value);
        EXPECT_EQ(item.Lavel(), label.substr(0, row.keptLabel));
        EXPECT_EQ(item.LavelSize(), row.keptLabel + 1);
        EXPECT_EQ(item.Value(), value.substr(0, row.keptValue));
        EXPECT_EQ(item.ValueSize(), row.keptValue + 1);
        EXPECT_EQ(item.DataSize(), 3 + row.keptLabel + 1 + row.keptValue + 1);
        EXPECT_EQ(Dump(item).size(), 2 * item.DataSize());
    }
}

TEST(SvpCtrlPdItem, ValueSizeOfTwoBytesIsLittleEndian) {
    EXPECT_EQ(Dump(CSvpCtrlPdItem("", std::string(255, 'v'))).substr(0, 8),
              "01"      // label size
              "00"      // zero byte of the label
              "0001");  // value size 256
}

TEST(SvpCtrlPdItem, BytesFrom0x80AreSkippedYetCounted) {
    const CSvpCtrlPdItem item("L\xE9", "caf\xE9s");
    EXPECT_EQ(Dump(item),
              "03"            // label size, 0xE9 counted
              "4c00"          // "L"
              "0600"          // value size, 0xE9 counted
              "6361667300");  // "cafs"
    EXPECT_EQ(item.DataSize(), 3U + 3 + 6);
}

TEST(SvpCtrlPdItem, EveryByteBelow0x80IsWrittenAndNoneAbove) {
    for (int byte = 0; byte < 256; ++byte) {
        char expected[5];
        std::snprintf(expected, sizeof expected, "%02x00", static_cast<unsigned int>(byte));
        EXPECT_EQ(CSvpCtrlPdItem::StringToBinString(std::string(1, static_cast<char>(byte))),
                  byte < 0x80 ? expected : "00");
    }
}

TEST(SvpCtrlPdItem, InitFormEmptiesEverything) {
    CSvpCtrlPdItem item("Label", "value");
    item.InitForm();
    EXPECT_EQ(item.DataSize(), 0U);
    EXPECT_EQ(item.LavelSize(), 0);
    EXPECT_EQ(item.Lavel(), "");
    EXPECT_EQ(item.ValueSize(), 0);
    EXPECT_EQ(item.Value(), "");
    EXPECT_EQ(Dump(item),
              "00"    // label size, its zero byte not counted
              "00"    // zero byte of the label
              "0000"  // value size
              "00");  // zero byte of the value
}

TEST(SvpCtrlPdItem, TraceLinesInOrder) {
    qortest::ResetFakeComLib();
    CSvpCtrlPdItem("Label", "100% ok").OutPutMemberToDebugLog();
    const std::vector<CTraceLine> expected = {
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[START]"},
        {1, "m_LavelSize=6"},
        {1, "m_Lavel=Label"},
        {1, "m_ValueSize=8"},
        {1, "m_Value=100% ok"},
        {4, "CSvpCtrlPdItem::OutPutMemberToDebugLog[END]"},
    };
    EXPECT_EQ(qortest::FakeComLib().traces, expected);
}

}  // namespace
