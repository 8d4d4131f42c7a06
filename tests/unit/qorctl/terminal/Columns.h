// Names of logical drives in many scripts, and where things stand in lines that hold them: told
// without the code that is tested.
#ifndef QORTEST_COLUMNS_H
#define QORTEST_COLUMNS_H

#include <cstddef>
#include <string>

namespace qortest {

struct CWideName {
    const char* what;
    std::string text;
    size_t columns;
};

inline const CWideName WIDE_NAMES[] = {
    {"Latin", "Data", 4},
    {"Chinese", "\u6570\u636E\u5E93", 6},
    {"Japanese, of half and of full width", "\uFF76\uFF77\u30AF", 4},
    {"marks over letters", "De\u0301mo\u0302", 4},
    {"letters of a Korean syllable", "\u1112\u1161\u11AB", 2},
    {"Hebrew with points", "\u05E9\u05B8\u05DC\u05D5\u05B9\u05DD", 4},
    {"Arabic with a vowel", "\u0646\u064E\u0633\u062E", 3},
    {"pictures", "\U0001F4BE\U0001F600", 4},
    {"a flag", "\U0001F1E9\U0001F1EA", 2},
    {"no character yet", "\u0378", 1},
};

// The line with a "#" for each column of those names and of other characters beyond ASCII.
inline std::string Flat(std::string line) {
    for (const CWideName& name : WIDE_NAMES) {
        for (size_t at = line.find(name.text); at != std::string::npos; at = line.find(name.text)) {
            line.replace(at, name.text.size(), std::string(name.columns, '#'));
        }
    }
    std::string flat;
    for (const char byte : line) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x80) {
            flat += byte;
        } else if (value >= 0xC0) {
            flat += '#';
        }
    }
    return flat;
}

}  // namespace qortest

#endif  // QORTEST_COLUMNS_H
