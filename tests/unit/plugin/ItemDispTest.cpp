#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <type_traits>

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

TEST(ItemDisp, CreatedItemKeepsEmptyTexts) {
    const std::unique_ptr<CItemDisp, void (*)(CItemDisp*)> item(CreateItemDisp("", "", "", ""),
                                                                DeleteItemDisp);
    EXPECT_EQ(item->ParentName() + item->ItemName() + item->ItemValue() + item->Enable(), "");
}

TEST(ItemDisp, RenamingChangesOneText) {
    CItemDisp item("parent", "name", "value", "TRUE");
    item.SetParentName("other parent");
    EXPECT_EQ(item.ParentName(), "other parent");
    EXPECT_EQ(item.ItemName(), "name");
    item.SetItemName("other name");
    EXPECT_EQ(item.ParentName(), "other parent");
    EXPECT_EQ(item.ItemName(), "other name");
    EXPECT_EQ(item.ItemValue(), "value");
    EXPECT_EQ(item.Enable(), "TRUE");
}

// Hosts read the four texts at their places.
TEST(ItemDisp, IsARecordOfFourTexts) {
    using Record = std::array<std::string, 4>;
    static_assert(sizeof(CItemDisp) == sizeof(Record));
    static_assert(!std::is_polymorphic_v<CItemDisp>);
    const CItemDisp item("parent", "name", "value", "FALSE");
    EXPECT_EQ(reinterpret_cast<const Record&>(item), (Record{"parent", "name", "value", "FALSE"}));
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
