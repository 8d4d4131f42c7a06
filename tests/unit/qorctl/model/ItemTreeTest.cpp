#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model/ItemTree.h"

namespace {

struct CItemRow {
    std::string parent;
    std::string name;
};

// Items of a test, and the list of pointers to them that the tree is made from.
class CItems {
public:
    explicit CItems(const std::vector<CItemRow>& rows) {
        for (const CItemRow& row : rows) {
            m_Items.push_back(
                std::make_unique<CItemDisp>(row.parent.c_str(), row.name.c_str(), "", "TRUE"));
            m_List.push_back(m_Items.back().get());
        }
    }
    std::list<CItemDisp*>& List() { return m_List; }

private:
    std::vector<std::unique_ptr<CItemDisp>> m_Items;
    std::list<CItemDisp*> m_List;
};

// One "DEPTH NAME" a node in display order, with a "?" for a missing parent.
std::vector<std::string> Walk(const qorctl::CItemTree& tree) {
    std::vector<std::string> lines;
    for (size_t index = tree.Next(qorctl::CItemTree::ROOT); index != qorctl::CItemTree::NO_NODE;
         index = tree.Next(index)) {
        const auto& node = tree.Node(index);
        lines.push_back(std::to_string(node.depth) + (node.parentMissing ? "? " : " ") +
                        node.item->ItemName());
    }
    return lines;
}

std::vector<std::string> WalkRows(const std::vector<CItemRow>& rows) {
    CItems items(rows);
    return Walk(qorctl::CItemTree(items.List()));
}

using CLines = std::vector<std::string>;

TEST(ItemTreeTest, EmptyListIsAnEmptyTree) {
    CItems items({});
    const qorctl::CItemTree tree(items.List());
    EXPECT_TRUE(tree.IsEmpty());
    EXPECT_EQ(Walk(tree), CLines());
}

TEST(ItemTreeTest, RootTitleAndKeyNestBelowEachOther) {
    EXPECT_EQ(WalkRows({{"", "Root"}, {"Root", "### A ###"}, {"### A ###", "Key"}}),
              (CLines{"1 Root", "2 ### A ###", "3 Key"}));
}

TEST(ItemTreeTest, RepeatedNamesBelongToTheNearestOpenBranch) {
    EXPECT_EQ(WalkRows({{"", "Root"},
                        {"Root", "### A ###"},
                        {"### A ###", "Key 1"},
                        {"", "Root"},
                        {"Root", "### A ###"},
                        {"### A ###", "Key 2"}}),
              (CLines{"1 Root", "2 ### A ###", "3 Key 1", "1 Root", "2 ### A ###", "3 Key 2"}));
}

TEST(ItemTreeTest, GroupInsideASectionEndsWithTheNextSection) {
    EXPECT_EQ(
        WalkRows({{"", "Root"},
                  {"Root", "### A ###"},
                  {"### A ###", "Group"},
                  {"Group", "Key"},
                  {"### A ###", "Group"},
                  {"Group", "Key"},
                  {"Root", "### B ###"}}),
        (CLines{"1 Root", "2 ### A ###", "3 Group", "4 Key", "3 Group", "4 Key", "2 ### B ###"}));
}

TEST(ItemTreeTest, ItemWithTheNameOfItsParentOpensABranchOfItsOwn) {
    EXPECT_EQ(WalkRows({{"", "X"}, {"X", "X"}, {"X", "X"}}), (CLines{"1 X", "2 X", "3 X"}));
}

TEST(ItemTreeTest, ClosedBranchIsNoParentAnyMore) {
    EXPECT_EQ(WalkRows({{"", "Root 1"}, {"Root 1", "A"}, {"", "Root 2"}, {"A", "Key"}}),
              (CLines{"1 Root 1", "2 A", "1 Root 2", "1? Key"}));
}

TEST(ItemTreeTest, MissingParentShowsTheItemAtTheTopAndKeepsTheOpenBranches) {
    EXPECT_EQ(WalkRows({{"", "Root"}, {"Root", "A"}, {"Lost", "Orphan"}, {"A", "Key"}}),
              (CLines{"1 Root", "2 A", "3 Key", "1? Orphan"}));
}

TEST(ItemTreeTest, OrphanCanHaveChildren) {
    EXPECT_EQ(WalkRows({{"Lost", "Orphan"}, {"Orphan", "Key"}}), (CLines{"1? Orphan", "2 Key"}));
}

TEST(ItemTreeTest, ChildBeforeItsParentIsAnOrphan) {
    EXPECT_EQ(WalkRows({{"Root", "Key"}, {"", "Root"}}), (CLines{"1? Key", "1 Root"}));
}

TEST(ItemTreeTest, NullPointersArePassedOver) {
    CItems items({{"", "Root"}, {"Root", "A"}});
    items.List().insert(std::next(items.List().begin()), nullptr);
    items.List().push_back(nullptr);
    EXPECT_EQ(Walk(qorctl::CItemTree(items.List())), (CLines{"1 Root", "2 A"}));
}

TEST(ItemTreeTest, HundredThousandLevelsNeedNoRecursion) {
    std::vector<CItemRow> rows = {{"", "0"}};
    for (int i = 1; i < 100'000; ++i) {
        rows.push_back({std::to_string(i - 1), std::to_string(i)});
    }
    const CLines lines = WalkRows(rows);
    ASSERT_EQ(lines.size(), 100'000U);
    EXPECT_EQ(lines.back(), "100000 99999");
}

// A search through the open branches for each would take minutes here.
TEST(ItemTreeTest, OrphansBelowADeepBranchStayCheap) {
    std::vector<CItemRow> rows = {{"", "0"}};
    for (int i = 1; i < 50'000; ++i) {
        rows.push_back({std::to_string(i - 1), std::to_string(i)});
    }
    rows.insert(rows.end(), 50'000, {"Lost", "Orphan"});
    const CLines lines = WalkRows(rows);
    ASSERT_EQ(lines.size(), 100'000U);
    EXPECT_EQ(lines.back(), "1? Orphan");
}

}  // namespace
