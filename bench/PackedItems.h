// The texts of an item list one behind the other, to make the same items again at the least cost.
#ifndef QORBENCH_PACKEDITEMS_H
#define QORBENCH_PACKEDITEMS_H

#include <cstring>
#include <string>

#include "base/ItemList.h"

namespace qorbench {

class CPackedItems {
public:
    explicit CPackedItems(const ItemList& items) : m_Count(items.size()) {
        for (const CItemDisp* item : items) {
            for (const std::string* text :
                 {&item->ParentName(), &item->ItemName(), &item->ItemValue(), &item->Enable()}) {
                m_Texts.append(*text).push_back('\0');
            }
        }
        m_Texts.shrink_to_fit();
    }

    std::size_t Count() const { return m_Count; }
    const char* Begin() const { return m_Texts.data(); }

    // Makes the item at `place` and moves on to the next one.
    static void AddNext(const char*& place, ItemList& items) {
        const char* texts[4] = {};
        for (const char*& text : texts) {
            text = place;
            place += std::strlen(place) + 1;
        }
        items.push_back(CreateItemDisp(texts[0], texts[1], texts[2], texts[3]));
    }

private:
    std::size_t m_Count;
    std::string m_Texts;
};

}  // namespace qorbench

#endif  // QORBENCH_PACKEDITEMS_H
