// What a terminal or a file can take, and what is drawn there: escape sequences and marks.
#ifndef QORCTL_TERMINAL_STYLE_H
#define QORCTL_TERMINAL_STYLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qorctl {

// No limit on the width.
inline constexpr size_t ANY_WIDTH = 0;

struct CTextStyle {
    bool utf8 = false;         // the locale's character set is UTF-8; plain ASCII otherwise
    bool colour = false;       // control sequences for colours, bold and dim text are welcome
    size_t width = ANY_WIDTH;  // columns of a line
};

// The style for the output `fd`: the character set of the environment's locale; colour on a
// terminal only, and neither on a dumb one nor when NO_COLOR is set; the width of a terminal. Does
// not change the process's locale.
CTextStyle DetectTextStyle(int fd);

// The width of the terminal `fd`; ANY_WIDTH when it is no terminal. The environment variable
// COLUMNS stands in for a terminal that does not say.
size_t DetectWidth(int fd);

// Whether `fd` is a terminal on which the cursor can be moved: not a dumb one.
bool CanMoveCursor(int fd);

inline constexpr std::string_view RED = "\x1b[31m";
inline constexpr std::string_view GREEN = "\x1b[32m";
inline constexpr std::string_view YELLOW = "\x1b[33m";
inline constexpr std::string_view BOLD = "\x1b[1m";
inline constexpr std::string_view DIM = "\x1b[2m";
inline constexpr std::string_view PLAIN = "\x1b[0m";  // as it was

// `text` in `colour`, one of the above, and plain behind it; as it is where that is empty or the
// style has no colour.
std::string Coloured(std::string_view text, std::string_view colour, const CTextStyle& style);

inline constexpr std::string_view CLEAR_LINE = "\r\x1b[K";

// The lines of a tree, each as wide as the others.
struct CBranchMarks {
    std::string_view through;  // an outer branch goes on below this line
    std::string_view none;     // an outer branch has ended
    std::string_view fork;     // the line is a child, others follow
    std::string_view last;     // the line is the last child
};

const CBranchMarks& BranchMarks(const CTextStyle& style);

// The end of a text that was shortened, one column wide.
std::string_view Ellipsis(const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_STYLE_H
