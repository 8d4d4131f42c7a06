// The tree that a flat list of display items describes.
//
// The list is in display order, depth first, and an item names its parent by the parent's item name
// only. Names repeat: every drive has a section of the same name. So an item belongs to the nearest
// earlier item of that name whose branch is still open, and opening it there closes every branch
// below that one.
//
// Nothing is lost: an item without a parent name, or with one that no open item has, stands at the
// top level. The latter leaves the open branches as they are, so that what follows still finds
// them.
//
// Owner: the tree points to the items of the list it was made from; the list must outlive it.
// Thread rule: read-only after construction.
#ifndef QORCTL_MODEL_ITEMTREE_H
#define QORCTL_MODEL_ITEMTREE_H

#include <cstddef>
#include <list>
#include <map>
#include <string_view>
#include <vector>

#include "plugin/ItemDisp.h"

namespace qorctl {

class CItemTree {
public:
    static constexpr size_t NO_NODE = static_cast<size_t>(-1);
    // The node above the top level. It has no item.
    static constexpr size_t ROOT = 0;

    struct CNode {
        bool HasChildren() const { return firstChild != NO_NODE; }
        // Whether it is the title of a section: "### General Information ###"
        bool IsTitle() const;
        // The item's name, without the marks of a title. Valid as long as the item.
        std::string_view Title() const;

        const CItemDisp* item = nullptr;
        size_t parent = NO_NODE;
        size_t firstChild = NO_NODE;
        size_t lastChild = NO_NODE;
        size_t nextSibling = NO_NODE;
        size_t depth = 0;            // 1 at the top level
        bool parentMissing = false;  // it names a parent that is not there
    };

    // Null pointers in the list are passed over. Cost: linear in the number of items, but for
    // the look-up of names, whatever the depth.
    explicit CItemTree(const std::list<CItemDisp*>& items);

    const CNode& Node(size_t index) const { return m_Nodes[index]; }
    bool IsEmpty() const { return m_Nodes.size() == 1; }

    // The node after `index` in display order (a node before its children), NO_NODE after the last.
    // Starting at ROOT, this walks the whole tree without recursion.
    size_t Next(size_t index) const;

private:
    // A node whose branch is open.
    struct COpen {
        size_t node;
        std::vector<size_t>* sameName;  // the positions of those that have its name
    };

    void Add(const CItemDisp& item);
    size_t FindOpen(std::string_view name) const;
    void CloseAbove(size_t count);
    void Open(size_t node);
    size_t Append(size_t parent, const CItemDisp& item);

    std::vector<CNode> m_Nodes;
    std::vector<COpen> m_Open;  // the innermost last
    // The positions there of each name that was ever open. Ordered: names with the same hash are
    // easily made.
    std::map<std::string_view, std::vector<size_t>> m_OpenByName;
};

}  // namespace qorctl

#endif  // QORCTL_MODEL_ITEMTREE_H
