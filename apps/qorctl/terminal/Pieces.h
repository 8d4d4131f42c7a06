// A long text that is never in memory as a whole: whoever has it gives its pieces, one after the
// other, to whoever takes them.
#ifndef QORCTL_TERMINAL_PIECES_H
#define QORCTL_TERMINAL_PIECES_H

#include <functional>
#include <string_view>

namespace qorctl {

// False, with errno set, when the piece cannot be taken.
using CTakePiece = std::function<bool(std::string_view)>;

// Gives all pieces; stops with false, and errno as it was left, at the first that is not taken or
// cannot be had.
using CGivePieces = std::function<bool(const CTakePiece&)>;

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_PIECES_H
