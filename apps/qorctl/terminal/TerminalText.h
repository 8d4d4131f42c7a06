// Texts made safe for a terminal or a file.
//
// The texts of the plug-in are bytes as an external tool printed them. They may hold control
// sequences that would move the cursor or set colours, and bytes of another character set; nothing
// of that may reach a terminal raw.
#ifndef QORCTL_TERMINAL_TERMINALTEXT_H
#define QORCTL_TERMINAL_TERMINALTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

#include "terminal/Style.h"

namespace qorctl {

// Bytes of a name or a state of a report that are shown; see CutText().
inline constexpr size_t MAX_NAME = 256;

// A printable copy of `text` on one line. Control characters, bytes that are not valid UTF-8,
// characters that reorder, hide or annotate text and, where the style is ASCII, everything beyond
// ASCII become visible as "\t", "\n", "\r" or the hexadecimal form of each byte, "\x1b".
std::string MakeVisible(std::string_view text, const CTextStyle& style);

// Such a copy of a text of many lines: tabs and the ends of lines, "\n" or "\r\n", stay.
std::string MakeLinesVisible(std::string_view text, const CTextStyle& style);

// The same JSON with what is not printable in the form "\u202e", which means the same to a reader.
// `json` is UTF-8.
std::string MakeJsonVisible(std::string_view json, const CTextStyle& style);

// The text; of one that is longer than `most` bytes the beginning and how long it is, "abc... (1000
// bytes)", in `most` bytes at most. No UTF-8 character is cut in two. `most` is 40 or more.
std::string CutText(std::string_view text, size_t most);

// The columns of a text that MakeVisible() returned: two of a wide character, none of a mark over a
// letter.
size_t CountColumns(std::string_view visibleText);

// The first whole characters of such a text that fit into `count` columns.
std::string_view FirstColumns(std::string_view visibleText, size_t count);

// Such a text in lines of at most `width` columns, if that is not ANY_WIDTH; without an end of the
// last line. `used` columns of the first line are taken; `indent` stands in front of the others. A
// line ends at a blank, within a word only where the word does not fit into a line of its own.
std::string WrapText(std::string_view visibleText, size_t width, size_t used,
                     std::string_view indent);

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_TERMINALTEXT_H
