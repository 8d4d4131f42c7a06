// Item lists inside the plug-in: adding items without a leak, freeing them, and lists that own.
#ifndef QOR_BASE_ITEMLIST_H
#define QOR_BASE_ITEMLIST_H

#include <list>
#include <string>

#include "plugin/ItemDisp.h"

using ItemList = std::list<CItemDisp*>;
using ItemPosition = ItemList::iterator;

// Whether an item shows what the tool printed, or stands in for what it did not print.
enum class EItemFlag { SHOWN, PLACEHOLDER };

// Makes an item and puts it before `position`; returns its position. Nothing leaks if memory runs
// out. Texts are cut at an embedded NUL.
ItemPosition InsertItem(ItemList& items, ItemPosition position, const std::string& parentName,
                        const std::string& itemName, const std::string& itemValue,
                        EItemFlag flag = EItemFlag::SHOWN);

// The same at the end of the list.
ItemPosition AddItem(ItemList& items, const std::string& parentName, const std::string& itemName,
                     const std::string& itemValue, EItemFlag flag = EItemFlag::SHOWN);

// Destroys every item with DeleteItemDisp() and empties the list.
void DeleteItems(ItemList& items);

// A list whose items are destroyed with it.
class CItemListOwner : public ItemList {
public:
    CItemListOwner() = default;
    ~CItemListOwner() { DeleteItems(*this); }
    CItemListOwner(const CItemListOwner&) = delete;  // two owners would free twice
    CItemListOwner& operator=(const CItemListOwner&) = delete;
};

// Empties somebody's list, items included, on the way out of a scope that fails.
class CItemListGuard {
public:
    explicit CItemListGuard(ItemList& items) : m_Items(&items) {}
    ~CItemListGuard() {
        if (m_Items != nullptr) {
            DeleteItems(*m_Items);
        }
    }
    CItemListGuard(const CItemListGuard&) = delete;  // one scope, one guard
    CItemListGuard& operator=(const CItemListGuard&) = delete;

    void Dismiss() { m_Items = nullptr; }

private:
    ItemList* m_Items;
};

#endif  // QOR_BASE_ITEMLIST_H
