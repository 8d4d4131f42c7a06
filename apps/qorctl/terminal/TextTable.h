// A table of texts that fits the terminal.
//
// Columns stand two blanks apart and are as wide as what they hold. Where that is too wide, the
// least important columns are shortened first, down to their smallest width, and then left out,
// the least important first; the most important ones (importance 0) stay, and lines are cut where
// even they are too wide. A line below the table names what was left out. A column without any text
// is left out without that. No column but the last is wider than MAX_CELL, since each line is as
// long as the widest cells. A shortened text ends with "…", "~" where the
// style is ASCII.
#ifndef QORCTL_TERMINAL_TEXTTABLE_H
#define QORCTL_TERMINAL_TEXTTABLE_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/TerminalText.h"

namespace qorctl {

inline constexpr size_t MAX_CELL = 64;

enum class EAlign { LEFT, RIGHT };

struct CTableColumn {
    std::string_view title;
    int importance = 0;     // 0: the most important
    unsigned smallest = 0;  // columns that it may be shortened to; 0: not shortened
    EAlign align = EAlign::LEFT;
};

struct CTableRow {
    std::vector<std::string> cells;  // one a column, made visible
    std::string_view colour;  // a control sequence, or empty; used where the style has colour
};

// The table with its line of titles, each line ended; empty without rows.
std::string FormatTextTable(std::span<const CTableColumn> columns,
                            const std::vector<CTableRow>& rows, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_TEXTTABLE_H
