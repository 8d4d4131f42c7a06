#include <gtest/gtest.h>

#include <limits>

#include "model/Quantity.h"

namespace {

using qorctl::ReadBinaryBytes;
using qorctl::ReadBitRate;
using qorctl::ReadCelsius;
using qorctl::ReadCount;
using qorctl::ReadDecimalBytes;
using qorctl::ReadHours;
using qorctl::ReadNumbered;
using qorctl::ReadPercent;
using CNumber = std::optional<long long>;
using CRead = CNumber (*)(std::string_view);

struct CRow {
    CRead read;
    std::string_view text;
    CNumber number;
};

constexpr long long GIB = 1LL << 30U;

const CRow ROWS[] = {
    {ReadCount, "0", 0},
    {ReadCount, " 12\t", 12},
    {ReadCount, "010", 10},
    {ReadCount, "9223372036854775807", std::numeric_limits<long long>::max()},
    {ReadCount, "9223372036854775808", {}},
    {ReadCount, "", {}},
    {ReadCount, " ", {}},
    {ReadCount, "-1", {}},
    {ReadCount, "+1", {}},
    {ReadCount, "1 2", {}},
    {ReadCount, "0x10", {}},

    {ReadBinaryBytes, "558.912GB", 600127190335},
    {ReadBinaryBytes, "1GB", GIB},
    {ReadBinaryBytes, "1 GiB", GIB},
    {ReadBinaryBytes, "64KB", 65536},
    {ReadBinaryBytes, "512B", 512},
    {ReadBinaryBytes, "1024MB", GIB},
    {ReadBinaryBytes, "2TB", 2048 * GIB},
    {ReadBinaryBytes, "1PB", 1048576 * GIB},
    {ReadBinaryBytes, "0.4B", 0},
    {ReadBinaryBytes, "0.5B", 1},
    {ReadBinaryBytes, "9000PB", {}},
    {ReadBinaryBytes, "-1GB", {}},
    {ReadBinaryBytes, "1gb", {}},
    {ReadBinaryBytes, "1,5GB", {}},
    {ReadBinaryBytes, "1e3GB", {}},
    {ReadBinaryBytes, "1", {}},
    {ReadBinaryBytes, "GB", {}},
    {ReadBinaryBytes, "infGB", {}},
    {ReadBinaryBytes, "1GB free", {}},

    {ReadDecimalBytes, "1205GB", 1205000000000},
    {ReadDecimalBytes, "318TB", 318000000000000},
    {ReadDecimalBytes, "1GiB", GIB},
    {ReadDecimalBytes, "1 XB", {}},

    {ReadCelsius, "31C", 31},
    {ReadCelsius, "-5 C", -5},
    {ReadCelsius, "31.5C", 32},
    {ReadCelsius, "31\u00B0C", 31},
    {ReadCelsius, "31 degrees C", 31},
    {ReadCelsius, "31C (87.80 F)", 31},
    {ReadCelsius, "87.80 F (31C)", {}},
    {ReadCelsius, "31C (87.80 F", {}},
    {ReadCelsius, "88F", {}},
    {ReadCelsius, "31", {}},
    {ReadCelsius, "--5C", {}},
    {ReadCelsius, "-", {}},

    {ReadHours, "21904h", 21904},
    {ReadHours, "21904 hours", 21904},
    {ReadHours, "21904", 21904},
    {ReadHours, "-1h", {}},
    {ReadHours, "2d", {}},

    {ReadPercent, "104%", 104},
    {ReadPercent, "98 %", 98},
    {ReadPercent, "98", {}},

    {ReadBitRate, "12.0Gb/s", 12000000000},
    {ReadBitRate, "600Mb/s", 600000000},
    {ReadBitRate, "12.0GB/s", {}},
};

TEST(QuantityTest, TextsAreNumbersOrNot) {
    for (const CRow& row : ROWS) {
        EXPECT_EQ(row.read(row.text), row.number) << '"' << row.text << '"';
    }
}

TEST(QuantityTest, NumberStandsBehindItsHead) {
    EXPECT_EQ(ReadNumbered("PD3", "PD"), 3);
    EXPECT_EQ(ReadNumbered("3", ""), 3);
    EXPECT_EQ(ReadNumbered("pd3", "PD"), std::nullopt);
    EXPECT_EQ(ReadNumbered("PD", "PD"), std::nullopt);
    EXPECT_EQ(ReadNumbered("PD3x", "PD"), std::nullopt);
}

}  // namespace
