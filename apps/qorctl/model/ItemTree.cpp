#include "model/ItemTree.h"

namespace qorctl {
namespace {

constexpr std::string_view TITLE_BEGIN = "### ";
constexpr std::string_view TITLE_END = " ###";

}  // namespace

bool CItemTree::CNode::IsTitle() const {
    return item->ItemName().starts_with(TITLE_BEGIN);
}

std::string_view CItemTree::CNode::Title() const {
    std::string_view title = item->ItemName();
    if (IsTitle()) {
        title.remove_prefix(TITLE_BEGIN.size());
        if (title.ends_with(TITLE_END)) {
            title.remove_suffix(TITLE_END.size());
        }
    }
    return title;
}

CItemTree::CItemTree(const std::list<CItemDisp*>& items) {
    m_Nodes.reserve(items.size() + 1);
    m_Nodes.emplace_back();
    for (const CItemDisp* item : items) {
        if (item != nullptr) {
            Add(*item);
        }
    }
}

void CItemTree::Add(const CItemDisp& item) {
    if (item.ParentName().empty()) {
        CloseAbove(0);
        Open(Append(ROOT, item));
        return;
    }
    const size_t position = FindOpen(item.ParentName());
    if (position == NO_NODE) {
        const size_t node = Append(ROOT, item);
        m_Nodes[node].parentMissing = true;
        Open(node);
        return;
    }
    const size_t parent = m_Open[position].node;
    CloseAbove(position + 1);
    Open(Append(parent, item));
}

size_t CItemTree::FindOpen(std::string_view name) const {
    const auto found = m_OpenByName.find(name);
    return found == m_OpenByName.end() || found->second.empty() ? NO_NODE : found->second.back();
}

void CItemTree::CloseAbove(size_t count) {
    while (m_Open.size() > count) {
        m_Open.back().sameName->pop_back();
        m_Open.pop_back();
    }
}

void CItemTree::Open(size_t node) {
    std::vector<size_t>& sameName = m_OpenByName[m_Nodes[node].item->ItemName()];
    sameName.push_back(m_Open.size());
    m_Open.push_back({.node = node, .sameName = &sameName});
}

size_t CItemTree::Append(size_t parent, const CItemDisp& item) {
    const size_t index = m_Nodes.size();
    m_Nodes.push_back({.item = &item, .parent = parent, .depth = m_Nodes[parent].depth + 1});
    CNode& above = m_Nodes[parent];
    if (above.lastChild == NO_NODE) {
        above.firstChild = index;
    } else {
        m_Nodes[above.lastChild].nextSibling = index;
    }
    above.lastChild = index;
    return index;
}

size_t CItemTree::Next(size_t index) const {
    if (m_Nodes[index].firstChild != NO_NODE) {
        return m_Nodes[index].firstChild;
    }
    while (index != ROOT && m_Nodes[index].nextSibling == NO_NODE) {
        index = m_Nodes[index].parent;
    }
    return index == ROOT ? NO_NODE : m_Nodes[index].nextSibling;
}

}  // namespace qorctl
