// Numbers out of the tool's texts: "558.912GB", "31C", "21904h", "PD3".
//
// A text must be the number and its unit and nothing else (blanks between the two, and around, do
// not count); otherwise there is no number. The decimal point is a point, whatever the locale.
#ifndef QORCTL_MODEL_QUANTITY_H
#define QORCTL_MODEL_QUANTITY_H

#include <optional>
#include <string>
#include <string_view>

namespace qorctl {

// A text of the tool, and the number in it in a base unit if it could be read.
struct CQuantity {
    std::string text;
    std::optional<long long> number;

    bool operator==(const CQuantity&) const = default;
};

// A decimal number without a unit, from 0 to 2^63 - 1.
std::optional<long long> ReadCount(std::string_view text);

// The count behind `head`, which is compared exactly: ("PD3", "PD") is 3.
std::optional<long long> ReadNumbered(std::string_view text, std::string_view head);

// Bytes, rounded to the nearest, of "558.912GB", "64KB", "512B" ... up to PB. The RAID tool's units
// are powers of 1024 for what a controller holds; "GiB" means the same.
std::optional<long long> ReadBinaryBytes(std::string_view text);

// The same with powers of 1000, in which the tool states what PCIe SSDs hold; "GiB" stays 1024^3.
std::optional<long long> ReadDecimalBytes(std::string_view text);

// Degrees Celsius, rounded to the nearest, of "31C", "-5 C", "31°C" and "31 degrees C". Another
// scale alone is no number; behind, in brackets, it says the same once more: "31C (87.80 F)".
std::optional<long long> ReadCelsius(std::string_view text);

// Hours of "21904h", "21904 hours" and "21904".
std::optional<long long> ReadHours(std::string_view text);

// Per cent, rounded to the nearest, of "98%"; may exceed 100.
std::optional<long long> ReadPercent(std::string_view text);

// Bits a second of "12.0Gb/s" and "600Mb/s".
std::optional<long long> ReadBitRate(std::string_view text);

}  // namespace qorctl

#endif  // QORCTL_MODEL_QUANTITY_H
