#include "format/Tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "health/Advice.h"
#include "health/Health.h"

namespace qorctl {
namespace {

using CNode = CItemTree::CNode;

bool IsNotReported(const CNode& node) {
    return node.item->Enable() == "FALSE";
}

// A heading is shown without a colon: a section title, or a name that only stands above others.
bool IsHeading(const CNode& node) {
    return node.item->ItemValue().empty() &&
           (node.IsTitle() || node.HasChildren() || node.item->ParentName().empty());
}

class CTreeView {
public:
    CTreeView(const CItemTree& tree, const CTextStyle& style)
        : m_Tree(tree), m_Style(style), m_Marks(BranchMarks(style)) {}

    std::string Format(const CBranchFilter& isShown);

private:
    void SeparateTrees(const CNode& node);
    void EnterNode(const CNode& node);
    size_t MeasureKeys(const CNode& parent) const;
    void AppendBranches(const CNode& node);
    void AppendOuterBranches(std::string& text, size_t depth) const;
    std::string BranchesBelow(const CNode& node) const;
    void AppendLabel(const CNode& node);
    std::string LabelText(const CNode& node) const;
    std::string KeyAndValue(const CNode& node) const;
    std::string Name(const CNode& node) const;

    const CItemTree& m_Tree;
    const CTextStyle m_Style;
    const CBranchMarks& m_Marks;
    std::string m_Text;
    std::vector<bool> m_GoesOn;      // by depth, for the current line: siblings follow
    std::vector<size_t> m_KeyWidth;  // by depth, for the current branch: column of the colons
};

std::string CTreeView::Format(const CBranchFilter& isShown) {
    bool isBranchShown = true;
    EnterNode(m_Tree.Node(CItemTree::ROOT));
    for (size_t index = m_Tree.Next(CItemTree::ROOT); index != CItemTree::NO_NODE;
         index = m_Tree.Next(index)) {
        const CNode& node = m_Tree.Node(index);
        isBranchShown = node.depth == 1 ? !isShown || isShown(index) : isBranchShown;
        if (!isBranchShown) {
            continue;
        }
        SeparateTrees(node);
        EnterNode(node);
        AppendBranches(node);
        AppendLabel(node);
        m_Text += '\n';
    }
    return std::move(m_Text);
}

// An empty line before and after each tree; single lines of the top level stay together. To be
// called while the state is still that of the line before.
void CTreeView::SeparateTrees(const CNode& node) {
    const size_t lastDepth = m_GoesOn.size() - 1;
    if (node.depth == 1 && !m_Text.empty() && (lastDepth > 1 || node.HasChildren())) {
        m_Text += '\n';
    }
}

void CTreeView::EnterNode(const CNode& node) {
    m_GoesOn.resize(node.depth);
    m_GoesOn.push_back(node.nextSibling != CItemTree::NO_NODE);
    m_KeyWidth.resize(node.depth + 1);
    m_KeyWidth.push_back(MeasureKeys(node));
}

// The column of the colons among the children of `parent`.
size_t CTreeView::MeasureKeys(const CNode& parent) const {
    size_t widest = 0;
    for (size_t index = parent.firstChild; index != CItemTree::NO_NODE;
         index = m_Tree.Node(index).nextSibling) {
        const CNode& node = m_Tree.Node(index);
        const size_t width = IsHeading(node) ? 0 : CountColumns(Name(node));
        widest = width > MAX_ALIGNED_KEY ? widest : std::max(widest, width);
    }
    return widest;
}

// Those above `depth`.
void CTreeView::AppendOuterBranches(std::string& text, size_t depth) const {
    for (size_t outer = 2; outer < depth; ++outer) {
        text += m_GoesOn[outer] ? m_Marks.through : m_Marks.none;
    }
}

// What stands in front of the second line of a node.
std::string CTreeView::BranchesBelow(const CNode& node) const {
    std::string text;
    AppendOuterBranches(text, std::min(node.depth, MAX_DRAWN_DEPTH) + 1);
    return text;
}

void CTreeView::AppendBranches(const CNode& node) {
    if (node.depth == 1) {
        return;
    }
    AppendOuterBranches(m_Text, std::min(node.depth, MAX_DRAWN_DEPTH));
    m_Text += node.nextSibling != CItemTree::NO_NODE ? m_Marks.fork : m_Marks.last;
    if (node.depth > MAX_DRAWN_DEPTH) {
        fmt::format_to(std::back_inserter(m_Text), "(level {}) ", node.depth);
    }
}

void CTreeView::AppendLabel(const CNode& node) {
    const std::string_view heading = IsHeading(node) ? BOLD : std::string_view();
    m_Text += Coloured(LabelText(node), IsNotReported(node) ? DIM : heading, m_Style);
    if (node.parentMissing) {
        m_Text += " (its parent is missing: " +
                  MakeVisible(CutText(node.item->ParentName(), MAX_NAME), m_Style) + ")";
    }
}

std::string CTreeView::LabelText(const CNode& node) const {
    std::string label = IsHeading(node) ? Name(node) : KeyAndValue(node);
    if (IsNotReported(node)) {
        label += " (not reported)";
    }
    return label;
}

std::string CTreeView::KeyAndValue(const CNode& node) const {
    std::string text = Name(node);
    const size_t width = CountColumns(text);
    text.append(std::max(m_KeyWidth[node.depth], width) - width, ' ');
    text += " :";
    if (!node.item->ItemValue().empty()) {
        const std::string below = BranchesBelow(node);
        const size_t used = CountColumns(below) + CountColumns(text) + 1;
        const std::string value = MakeVisible(CutText(node.item->ItemValue(), MAX_VALUE), m_Style);
        const EHealth health = JudgeState(node.item->ItemName(), node.item->ItemValue());
        text += ' ' + Coloured(WrapText(value, m_Style.width, used,
                                        below + std::string(used - CountColumns(below), ' ')),
                               ColourOf(health), m_Style);
    }
    return text;
}

std::string CTreeView::Name(const CNode& node) const {
    const std::string name = MakeVisible(CutText(node.Title(), MAX_NAME), m_Style);
    return node.IsTitle() ? "[" + name + "]" : name;
}

}  // namespace

std::string FormatTree(const CItemTree& tree, const CTextStyle& style,
                       const CBranchFilter& isShown) {
    return CTreeView(tree, style).Format(isShown);
}

}  // namespace qorctl
