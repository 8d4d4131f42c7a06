// Which characters say to a reader what they are.
#ifndef QOR_UTIL_PRINTABLE_H
#define QOR_UTIL_PRINTABLE_H

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace util {

struct CCharacterRange {
    std::uint32_t first;
    std::uint32_t last;
};

inline constexpr CCharacterRange UNPRINTABLE[] = {
    {0x00, 0x1F},           // control characters
    {0x7F, 0x9F},           // delete, and the second set of control characters
    {0xAD, 0xAD},           // soft hyphen
    {0x34F, 0x34F},         // without width
    {0x61C, 0x61C},         // a mark that reorders text
    {0x115F, 0x1160},       // letters that show as nothing
    {0x17B4, 0x17B5},       // without width
    {0x180B, 0x180F},       // without width
    {0x200B, 0x200F},       // without width, and marks that reorder text
    {0x2028, 0x202E},       // line separators, and marks that reorder text
    {0x2060, 0x206F},       // without width, and marks that reorder text
    {0x2800, 0x2800},       // a pattern without dots
    {0x3164, 0x3164},       // a letter that shows as nothing
    {0xD800, 0xF8FF},       // surrogates, invalid in UTF-8, and private use
    {0xFDD0, 0xFDEF},       // no characters
    {0xFE00, 0xFE0F},       // variants of the character before
    {0xFEFF, 0xFEFF},       // byte order mark
    {0xFFA0, 0xFFA0},       // a letter that shows as nothing
    {0xFFF0, 0xFFFB},       // without width, and annotations
    {0xFFFE, 0xFFFF},       // no characters
    {0x13430, 0x1343F},     // how hieroglyphs are joined
    {0x1BCA0, 0x1BCA3},     // how shorthand is joined
    {0x1D173, 0x1D17A},     // how music is joined
    {0x1FFFE, 0x1FFFF},     // no characters
    {0x2FFFE, 0x2FFFF},     // no characters
    {0x3FFFE, 0xFFFFFFFF},  // unused, tags, variants, private use, and beyond the character set
};

// False for controls, for what shows as nothing or turns the order of others, and for codes that
// have no meaning of their own.
inline bool IsPrintable(std::uint32_t code) {
    return std::none_of(
        std::begin(UNPRINTABLE), std::end(UNPRINTABLE),
        [code](const CCharacterRange& range) { return code >= range.first && code <= range.last; });
}

}  // namespace util

#endif  // QOR_UTIL_PRINTABLE_H
