#include <gtest/gtest.h>

#include <climits>

#include "FakeComLib.h"
#include "svp/CSvpCommon.h"

namespace {

using qortest::CTraceLine;

TEST(SvpCommon, NumbersAreWrittenLeastSignificantByteFirst) {
    const std::uint8_t eight = 0xA5;
    const std::uint16_t sixteen = 0x1234;
    const std::uint32_t thirtyTwo = 0xDEADBEEF;
    const std::uint64_t sixtyFour = 0x0123456789ABCDEF;
    EXPECT_EQ(CSvpCommon::ValueToBinString(&eight, 1), "a5");
    EXPECT_EQ(CSvpCommon::ValueToBinString(&sixteen, 2), "3412");
    EXPECT_EQ(CSvpCommon::ValueToBinString(&thirtyTwo, 4), "efbeadde");
    EXPECT_EQ(CSvpCommon::ValueToBinString(&sixtyFour, 8), "efcdab8967452301");
    EXPECT_EQ(CSvpCommon::ValueToBinString(&eight, 0), "");
}

TEST(SvpCommon, BigEndianHostWritesTheSameText) {
    const unsigned char asLittle[] = {0xEF, 0xBE, 0xAD, 0xDE};
    const unsigned char asBig[] = {0xDE, 0xAD, 0xBE, 0xEF};
    EXPECT_EQ(CSvpCommon::BytesToBinString(asLittle, 4, std::endian::little), "efbeadde");
    EXPECT_EQ(CSvpCommon::BytesToBinString(asBig, 4, std::endian::big), "efbeadde");
}

TEST(SvpCommon, EveryByteHasTwoLowerCaseDigits) {
    for (int byte = 0; byte < 256; ++byte) {
        char expected[3];
        std::snprintf(expected, sizeof expected, "%02x", static_cast<unsigned int>(byte));
        std::string digits = "???";
        char* behind = CSvpCommon::WriteByte(digits.data(), static_cast<unsigned char>(byte));
        EXPECT_EQ(digits, std::string(expected) + "?");
        EXPECT_EQ(behind, digits.data() + 2);
    }
}

TEST(SvpCommon, NarrowNumbersWrap) {
    EXPECT_EQ(CSvpCommon::Low8(255), 255);
    EXPECT_EQ(CSvpCommon::Low8(256), 0);
    EXPECT_EQ(CSvpCommon::Low16(65'535), 65'535);
    EXPECT_EQ(CSvpCommon::Low16(65'537), 1);
    EXPECT_EQ(CSvpCommon::Low32(0xFFFFFFFF), 0xFFFFFFFFU);
    EXPECT_EQ(CSvpCommon::Low32(0x100000002), 2U);
}

TEST(SvpCommon, TraceShowsNumbersAsInt) {
    qortest::ResetFakeComLib();
    CSvpCommon::TraceNumber("n", 0);
    CSvpCommon::TraceNumber("n", INT_MAX);
    CSvpCommon::TraceNumber("n", 0xFFFFFFFF);
    CSvpCommon::TraceText("t", "%s and %d stay");
    const std::vector<CTraceLine> expected = {
        {1, "n=0"}, {1, "n=2147483647"}, {1, "n=-1"}, {1, "t=%s and %d stay"}};
    EXPECT_EQ(qortest::FakeComLib().traces, expected);
}

}  // namespace
