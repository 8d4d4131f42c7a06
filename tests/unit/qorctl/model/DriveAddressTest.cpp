#include <gtest/gtest.h>

#include "model/DriveAddress.h"

namespace {

using qorctl::ReadAddressNumber;
using qorctl::ReadDriveAddress;

TEST(DriveAddressTest, DecimalDigitsAreANumber) {
    EXPECT_EQ(ReadAddressNumber("0"), 0);
    EXPECT_EQ(ReadAddressNumber("252"), 252);
    EXPECT_EQ(ReadAddressNumber("010"), 10);
    EXPECT_EQ(ReadAddressNumber("2147483647"), 2147483647);
}

TEST(DriveAddressTest, EverythingElseIsNone) {
    for (const char* text : {"", "-1", "-0", "+1", " 1", "1 ", "1x", "0x10", "1.5", "2147483648",
                             "99999999999999999999"}) {
        EXPECT_EQ(ReadAddressNumber(text), std::nullopt) << text;
    }
}

TEST(DriveAddressTest, AddressIsControllerEnclosureSlot) {
    const auto address = ReadDriveAddress("1", "252", "3");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->controller, 1);
    EXPECT_EQ(address->enclosure, 252);
    EXPECT_EQ(address->slot, 3);
    EXPECT_FALSE(ReadDriveAddress("x", "252", "3"));
    EXPECT_FALSE(ReadDriveAddress("1", "x", "3"));
    EXPECT_FALSE(ReadDriveAddress("1", "252", "x"));
}

}  // namespace
