#include "model/Quantity.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <system_error>

namespace qorctl {
namespace {

constexpr std::string_view BLANKS = " \t";
constexpr double LIMIT = 9223372036854775808.0;  // 2^63

struct CUnit {
    std::string_view name;
    double factor;
};

constexpr double K2 = 1024.0;
constexpr double K10 = 1000.0;

constexpr CUnit BINARY_BYTES[] = {
    {"B", 1},
    {"KB", K2},
    {"MB", K2* K2},
    {"GB", K2* K2* K2},
    {"TB", K2* K2* K2* K2},
    {"PB", K2* K2* K2* K2* K2},
    {"KiB", K2},
    {"MiB", K2* K2},
    {"GiB", K2* K2* K2},
    {"TiB", K2* K2* K2* K2},
    {"PiB", K2* K2* K2* K2* K2},
};
constexpr CUnit DECIMAL_BYTES[] = {
    {"B", 1},
    {"KB", K10},
    {"MB", K10* K10},
    {"GB", K10* K10* K10},
    {"TB", K10* K10* K10* K10},
    {"PB", K10* K10* K10* K10* K10},
    {"KiB", K2},
    {"MiB", K2* K2},
    {"GiB", K2* K2* K2},
    {"TiB", K2* K2* K2* K2},
    {"PiB", K2* K2* K2* K2* K2},
};
constexpr CUnit CELSIUS[] = {{"C", 1}, {"\u00B0C", 1}, {"degrees C", 1}};
constexpr CUnit HOURS[] = {{"h", 1}, {"hours", 1}, {"", 1}};
constexpr CUnit PERCENT[] = {{"%", 1}};
constexpr CUnit BIT_RATES[] = {
    {"Kb/s", K10}, {"Mb/s", K10* K10}, {"Gb/s", K10* K10* K10}, {"Tb/s", K10* K10* K10* K10}};

std::string_view WithoutBlanks(std::string_view text) {
    const size_t first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

std::optional<long long> Rounded(double number) {
    const double rounded = std::round(number);
    if (!(rounded < LIMIT) || !(rounded >= -LIMIT)) {
        return std::nullopt;
    }
    return static_cast<long long>(rounded);
}

// number = [ "-" ] digit { digit } [ "." { digit } ]; then blanks and one of the units
std::optional<long long> ReadMeasure(std::string_view text, std::span<const CUnit> units) {
    text = WithoutBlanks(text);
    const size_t sign = text.starts_with('-') ? 1 : 0;
    if (text.size() <= sign || !IsDigit(text[sign])) {
        return std::nullopt;
    }
    double number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<size_t>(result.ptr - text.data()));
    const std::string_view name = WithoutBlanks(text);
    const auto unit = std::find_if(units.begin(), units.end(),
                                   [name](const CUnit& row) { return row.name == name; });
    return unit == units.end() ? std::nullopt : Rounded(number * unit->factor);
}

std::optional<long long> NotNegative(std::optional<long long> number) {
    return number.value_or(-1) >= 0 ? number : std::nullopt;
}

}  // namespace

std::optional<long long> ReadCount(std::string_view text) {
    text = WithoutBlanks(text);
    if (text.empty() || !IsDigit(text.front())) {
        return std::nullopt;
    }
    long long number = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? std::make_optional(number)
                                                         : std::nullopt;
}

std::optional<long long> ReadNumbered(std::string_view text, std::string_view head) {
    if (!text.starts_with(head)) {
        return std::nullopt;
    }
    return ReadCount(text.substr(head.size()));
}

std::optional<long long> ReadBinaryBytes(std::string_view text) {
    return NotNegative(ReadMeasure(text, BINARY_BYTES));
}

std::optional<long long> ReadDecimalBytes(std::string_view text) {
    return NotNegative(ReadMeasure(text, DECIMAL_BYTES));
}

std::optional<long long> ReadCelsius(std::string_view text) {
    text = WithoutBlanks(text);
    const size_t bracket = text.find('(');
    if (bracket != std::string_view::npos && text.ends_with(')')) {
        text = text.substr(0, bracket);
    }
    return ReadMeasure(text, CELSIUS);
}

std::optional<long long> ReadHours(std::string_view text) {
    return NotNegative(ReadMeasure(text, HOURS));
}

std::optional<long long> ReadPercent(std::string_view text) {
    return NotNegative(ReadMeasure(text, PERCENT));
}

std::optional<long long> ReadBitRate(std::string_view text) {
    return NotNegative(ReadMeasure(text, BIT_RATES));
}

}  // namespace qorctl
