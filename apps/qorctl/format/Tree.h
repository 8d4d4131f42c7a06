// The tree of display items as text for people.
//
//     Physical Drive Information
//     ├─ [General Information]
//     │  ├─ PD No.      : PD3
//     │  └─ Temperature : (not reported)
//     └─ [Enclosure Properties Information]
//
// A section title stands in brackets instead of hash marks; a key is followed by a colon, the
// colons of one section in one column; an item marked as not reported by the tool says so (and is
// dim where there is colour); a state that is not well has the colour of a problem; a value
// that is too long for the width goes on below itself; a name of more than MAX_NAME bytes and a
// value of more than MAX_VALUE are cut and say how long they were (see CutText()); an empty line
// separates the trees of the top level. Branches are drawn down to MAX_DRAWN_DEPTH; what is deeper
// stays at that indentation and names its level instead, so that the cost stays linear in the
// number of items.
#ifndef QORCTL_FORMAT_TREE_H
#define QORCTL_FORMAT_TREE_H

#include <cstddef>
#include <functional>
#include <string>

#include "model/ItemTree.h"
#include "terminal/TerminalText.h"

namespace qorctl {

// A top-level item has depth 1.
inline constexpr size_t MAX_DRAWN_DEPTH = 16;
// Bytes of a value that are shown.
inline constexpr size_t MAX_VALUE = 4096;
// Columns up to which a key takes part in the alignment of its section.
inline constexpr size_t MAX_ALIGNED_KEY = 40;

// Which branches of the top level are shown, by their node; empty: all.
using CBranchFilter = std::function<bool(size_t node)>;

// The whole text, every line ended; empty for an empty tree.
std::string FormatTree(const CItemTree& tree, const CTextStyle& style,
                       const CBranchFilter& isShown = {});

}  // namespace qorctl

#endif  // QORCTL_FORMAT_TREE_H
