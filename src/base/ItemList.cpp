#include "base/ItemList.h"

#include <memory>

namespace {

constexpr const char* ENABLE_TRUE = "TRUE";
constexpr const char* ENABLE_FALSE = "FALSE";

struct CItemDeleter {
    void operator()(CItemDisp* item) const { DeleteItemDisp(item); }
};

}  // namespace

ItemPosition InsertItem(ItemList& items, ItemPosition position, const std::string& parentName,
                        const std::string& itemName, const std::string& itemValue, EItemFlag flag) {
    std::unique_ptr<CItemDisp, CItemDeleter> item(
        CreateItemDisp(parentName.c_str(), itemName.c_str(), itemValue.c_str(),
                       flag == EItemFlag::SHOWN ? ENABLE_TRUE : ENABLE_FALSE));
    const ItemPosition inserted = items.insert(position, item.get());
    static_cast<void>(item.release());
    return inserted;
}

ItemPosition AddItem(ItemList& items, const std::string& parentName, const std::string& itemName,
                     const std::string& itemValue, EItemFlag flag) {
    return InsertItem(items, items.end(), parentName, itemName, itemValue, flag);
}

void DeleteItems(ItemList& items) {
    for (CItemDisp* item : items) {
        DeleteItemDisp(item);
    }
    items.clear();
}
