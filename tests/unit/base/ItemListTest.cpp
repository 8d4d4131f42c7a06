#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>

#include "base/ItemList.h"

namespace {

using namespace std::string_literals;

TEST(ItemList, AddedItemStandsAtTheEnd) {
    CItemListOwner items;
    AddItem(items, "", "root", "");
    const ItemPosition added = AddItem(items, "root", "key", "value");
    EXPECT_EQ(items.size(), 2U);
    EXPECT_EQ(added, std::prev(items.end()));
    EXPECT_EQ((*added)->ParentName(), "root");
    EXPECT_EQ((*added)->ItemName(), "key");
    EXPECT_EQ((*added)->ItemValue(), "value");
    EXPECT_EQ((*added)->Enable(), "TRUE");
}

TEST(ItemList, InsertedItemStandsBeforeThePosition) {
    CItemListOwner items;
    const ItemPosition last = AddItem(items, "", "last", "");
    const ItemPosition inserted = InsertItem(items, last, "", "first", "");
    EXPECT_EQ(inserted, items.begin());
    EXPECT_EQ(std::next(inserted), last);
    EXPECT_EQ((*inserted)->Enable(), "TRUE");
}

TEST(ItemList, PlaceholderIsNotShown) {
    CItemListOwner items;
    EXPECT_EQ((*AddItem(items, "p", "n", "", EItemFlag::PLACEHOLDER))->Enable(), "FALSE");
    EXPECT_EQ((*InsertItem(items, items.end(), "p", "n", "", EItemFlag::PLACEHOLDER))->Enable(),
              "FALSE");
}

TEST(ItemList, TextsAreCutAtANul) {
    CItemListOwner items;
    const CItemDisp& item = **AddItem(items, "a\0b"s, "c\0d"s, "\0e"s);
    EXPECT_EQ(item.ParentName(), "a");
    EXPECT_EQ(item.ItemName(), "c");
    EXPECT_EQ(item.ItemValue(), "");
}

TEST(ItemList, DeleteItemsEmptiesTheList) {
    ItemList items;
    AddItem(items, "", "a name too long for a small buffer, so that a leak shows", "");
    items.push_back(nullptr);
    DeleteItems(items);
    EXPECT_TRUE(items.empty());
    DeleteItems(items);
    EXPECT_TRUE(items.empty());
}

TEST(ItemListGuard, EmptiesTheListOnTheWayOut) {
    ItemList items;
    AddItem(items, "", "a name too long for a small buffer, so that a leak shows", "");
    { const CItemListGuard guard(items); }
    EXPECT_TRUE(items.empty());
}

TEST(ItemListGuard, EmptiesTheListWhenAnExceptionPasses) {
    ItemList items;
    EXPECT_THROW(
        {
            const CItemListGuard guard(items);
            AddItem(items, "", "a name too long for a small buffer, so that a leak shows", "");
            throw std::runtime_error("passes");
        },
        std::runtime_error);
    EXPECT_TRUE(items.empty());
}

TEST(ItemListGuard, DismissedGuardLeavesTheList) {
    CItemListOwner items;
    {
        CItemListGuard guard(items);
        AddItem(items, "", "kept", "");
        guard.Dismiss();
    }
    EXPECT_EQ(items.size(), 1U);
}

}  // namespace
