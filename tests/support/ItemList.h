// A display item list that owns its items, for tests.
#ifndef QORTEST_ITEMLIST_H
#define QORTEST_ITEMLIST_H

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "plugin/ItemDisp.h"

namespace qortest {

class CItemList {
public:
    // Appends an item and returns it.
    CItemDisp* Add(const std::string& parent, const std::string& name,
                   const std::string& value = "", const char* enable = "TRUE") {
        m_Owned.push_back(std::make_unique<CItemDisp>("", "", value.c_str(), enable));
        m_Owned.back()->SetParentName(parent);
        m_Owned.back()->SetItemName(name);
        items.push_back(m_Owned.back().get());
        return items.back();
    }

    std::list<CItemDisp*> items;

private:
    std::vector<std::unique_ptr<CItemDisp>> m_Owned;
};

}  // namespace qortest

#endif  // QORTEST_ITEMLIST_H
