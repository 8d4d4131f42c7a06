// Texts for a terminal that may hold parts of what somebody else wrote.
#ifndef QORSIM_VISIBLETEXT_H
#define QORSIM_VISIBLETEXT_H

#include <string>
#include <string_view>

namespace qorsim {

// The text with every byte written out ("\x1b", "\n") that is no part of a printable character.
std::string Visible(std::string_view text);

// The same, but line ends and tabs stay as they are.
std::string VisibleLines(std::string_view text);

// "WHO: WHAT" as one line on standard error, visible and of a bounded length.
void Complain(const std::string& who, const std::string& what);

}  // namespace qorsim

#endif  // QORSIM_VISIBLETEXT_H
