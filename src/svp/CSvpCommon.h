// What the records of the service-processor form share: numbers and bytes as hexadecimal text, the
// narrowing of sizes and counts, and the trace lines. No state.
//
// The form is a binary record that travels as text, two lower-case hexadecimal digits a byte.
// Numbers in it are little-endian on every host.
//
// Errors: the operations that return a string throw std::bad_alloc only, the others do not throw.
// Thread rule: callable from any thread.
#ifndef QOR_SVP_CSVPCOMMON_H
#define QOR_SVP_CSVPCOMMON_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace svp {

using CByteDigits = std::array<char, 2>;

consteval std::array<CByteDigits, 256> DigitsOfAllBytes() {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::array<CByteDigits, 256> all = {};
    for (std::size_t byte = 0; byte < all.size(); ++byte) {
        all[byte] = {DIGITS[byte >> 4U], DIGITS[byte & 0x0FU]};
    }
    return all;
}

inline constexpr std::array<CByteDigits, 256> DIGITS_OF = DigitsOfAllBytes();

}  // namespace svp

class CSvpCommon {
public:
    // The `size` bytes of the number at `value` (never null), least significant byte first.
    static std::string ValueToBinString(const void* value, unsigned int size);

    // How this host keeps a number, told by the first byte of one.
    static std::endian HostOrder();

    // The `count` bytes at `bytes` (never null): as they stand for std::endian::little, from the
    // last to the first for std::endian::big.
    static std::string BytesToBinString(const void* bytes, std::size_t count, std::endian order);

    // Writes the two digits of one byte to `digits` (never null); returns the place behind them.
    static char* WriteByte(char* digits, unsigned char byte) {
        const svp::CByteDigits& pair = svp::DIGITS_OF[byte];
        std::memcpy(digits, pair.data(), pair.size());
        return digits + pair.size();
    }

    // Counts and sizes of the form are narrow and wrap; these keep what fits.
    static constexpr std::uint8_t Low8(std::uint64_t number) {
        return static_cast<std::uint8_t>(number & 0xFFU);
    }
    static constexpr std::uint16_t Low16(std::uint64_t number) {
        return static_cast<std::uint16_t>(number & 0xFFFFU);
    }
    static constexpr std::uint32_t Low32(std::uint64_t number) {
        return static_cast<std::uint32_t>(number & 0xFFFFFFFFU);
    }

    // The trace of a record: "CLASS::OutPutMemberToDebugLog[START]" (without a blank, unlike the
    // library's other start lines), one "FIELD=VALUE" line a field, and the same with "[END]".
    // A number that does not fit into an int is shown as the int of its low bits.
    static void TraceStart(const char* className);
    static void TraceEnd(const char* className);
    static void TraceNumber(const char* field, std::uint64_t number);
    static void TraceText(const char* field, const std::string& text);
};

#endif  // QOR_SVP_CSVPCOMMON_H
