// What a terminal or a file can take, and texts made safe for it.
//
// The texts of the plug-in are bytes as an external tool printed them. They may hold control
// sequences that would move the cursor or set colours, and bytes of another character set; nothing
// of that may reach a terminal raw.
//
// Thread rule: plain functions without state.
#ifndef QORCTL_TERMINALTEXT_H
#define QORCTL_TERMINALTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qorctl {

struct CTextStyle {
    bool utf8 = false;    // the locale's character set is UTF-8; plain ASCII otherwise
    bool colour = false;  // control sequences for bold and dim text are welcome
};

// The style for the output `fd`: the character set of the environment's locale; colour on a
// terminal only, and neither on a dumb one nor when NO_COLOR is set. Does not change the process's
// locale.
CTextStyle DetectTextStyle(int fd);

// Whether `fd` is a terminal on which the cursor can be moved: not a dumb one.
bool CanMoveCursor(int fd);

// A printable copy of `text` on one line. Control characters, bytes that are not valid UTF-8,
// characters that reorder or hide text and, where the style is ASCII, everything beyond ASCII
// become visible as "\t", "\n", "\r" or the hexadecimal form of each byte, "\x1b".
std::string MakeVisible(std::string_view text, const CTextStyle& style);

// The number of characters of a text that MakeVisible() returned, each taken as one column wide.
size_t CountColumns(std::string_view visibleText);

}  // namespace qorctl

#endif  // QORCTL_TERMINALTEXT_H
