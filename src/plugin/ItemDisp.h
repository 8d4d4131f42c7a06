// The display item: the one unit of information that the plug-in hands out.
//
// Every information request appends items to a std::list<CItemDisp*>. The list is flat and in
// display order; the tree lives in the texts only: an item names its parent by the parent's item
// name, and a parent stands before its children.
//
//     root item      parent ""                               "Controller Information"
//     section title  parent "Controller Information"         "### General Information ###"
//     key and value  parent "### General Information ###"    "Product Name" = "..."
//
// Owner: whoever holds the list destroys each item with DeleteItemDisp() before dropping it, or
// hands the whole list to the plug-in object's FreeItemList().
// Thread rule: an item is a plain record; one thread at a time.
//
// Compiles alone as C++11 and later.
#ifndef QOR_PLUGIN_ITEMDISP_H
#define QOR_PLUGIN_ITEMDISP_H

#include <string>

// One display item of four texts, never null, possibly empty. The texts are bytes as the tool
// printed them: no character set, no conversion. The order of the fields is part of the binary
// interface; the class has no virtual operations and must not get any.
class CItemDisp {
public:
    // Copies the four zero-terminated texts. None may be null. Throws std::bad_alloc only.
    CItemDisp(const char* parentName, const char* itemName, const char* itemValue,
              const char* enable);

    // Name of the item under which this one is shown; empty for a root item.
    const std::string& ParentName() const { return m_ParentName; }
    const std::string& ItemName() const { return m_ItemName; }
    // Empty for root items, section titles and placeholders.
    const std::string& ItemValue() const { return m_ItemValue; }
    // "TRUE", or "FALSE" for a placeholder: a value that the tool did not print.
    const std::string& Enable() const { return m_Enable; }

    // For the getters, which rename an item after they have classified it.
    void SetParentName(const std::string& parentName) { m_ParentName = parentName; }
    void SetItemName(const std::string& itemName) { m_ItemName = itemName; }

private:
    std::string m_ParentName;
    std::string m_ItemName;
    std::string m_ItemValue;
    std::string m_Enable;
};

extern "C" {

// Allocates one item and copies the four zero-terminated texts (none may be null) into it. The
// caller owns the result and ends it with DeleteItemDisp(). Never returns null; on lack of memory
// nothing is left allocated and std::bad_alloc propagates.
__attribute__((visibility("default"))) CItemDisp* CreateItemDisp(const char* parentName,
                                                                 const char* itemName,
                                                                 const char* itemValue,
                                                                 const char* enable);

// Destroys and frees an item made by CreateItemDisp(). Null is harmless.
__attribute__((visibility("default"))) void DeleteItemDisp(CItemDisp* item);

}  // extern "C"

#endif  // QOR_PLUGIN_ITEMDISP_H
