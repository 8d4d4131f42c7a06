#include "plugin/ItemDisp.h"

CItemDisp::CItemDisp(const char* parentName, const char* itemName, const char* itemValue,
                     const char* enable)
    : m_ParentName(parentName), m_ItemName(itemName), m_ItemValue(itemValue), m_Enable(enable) {}

CItemDisp* CreateItemDisp(const char* parentName, const char* itemName, const char* itemValue,
                          const char* enable) {
    return new CItemDisp(parentName, itemName, itemValue, enable);
}

void DeleteItemDisp(CItemDisp* item) {
    delete item;
}
