#include <gtest/gtest.h>

#include <memory>

#include "plugin/ItemDisp.h"

namespace {

TEST(ItemDisp, KeepsTheFourTextsInOrder) {
    const std::unique_ptr<CItemDisp, void (*)(CItemDisp*)> item(
        CreateItemDisp("parent", "name", "value", "FALSE"), DeleteItemDisp);
    EXPECT_EQ(item->ParentName(), "parent");
    EXPECT_EQ(item->ItemName(), "name");
    EXPECT_EQ(item->ItemValue(), "value");
    EXPECT_EQ(item->Enable(), "FALSE");
}

TEST(ItemDisp, KeepsEmptyTexts) {
    const CItemDisp item("", "", "", "");
    EXPECT_EQ(item.ParentName(), "");
    EXPECT_EQ(item.ItemName(), "");
    EXPECT_EQ(item.ItemValue(), "");
    EXPECT_EQ(item.Enable(), "");
}

TEST(ItemDisp, DeleteOfNullIsHarmless) {
    DeleteItemDisp(nullptr);
}

TEST(ItemDisp, CopyOutlivesItsSource) {
    CItemDisp* source =
        CreateItemDisp("a parent name too long for a small buffer", "n", "v", "TRUE");
    const CItemDisp copy = *source;
    CItemDisp assigned("", "", "", "");
    assigned = *source;
    DeleteItemDisp(source);
    EXPECT_EQ(copy.ParentName(), "a parent name too long for a small buffer");
    EXPECT_EQ(assigned.ParentName(), "a parent name too long for a small buffer");
    EXPECT_EQ(assigned.Enable(), "TRUE");
}

}  // namespace
