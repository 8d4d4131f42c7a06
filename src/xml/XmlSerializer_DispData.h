// Turns a list of display items into the display-data document.
//
// The list is flat; an item names its parent by the parent's name and stands behind it, depth
// first. Each item becomes one element, its children's elements inside it:
//
//     item   := "<item>" name val enbl ( item... | "<item/>" ) "</item>"
//     name   := "<name>" TEXT "</name>" | "<name/>"        val and enbl alike
//
// The empty "<item/>" marks an item without children; readers of the document rely on it.
//
// The nesting is followed with a stack, `openParents`: the parent names of the levels that are
// open, innermost at the back. Time and memory are linear in the list, however deep the tree is.
//
// Owner: the serializer only reads the items. Null: no item pointer of a list may be null.
// Thread rule: one thread at a time.
#ifndef QOR_XML_XMLSERIALIZER_DISPDATA_H
#define QOR_XML_XMLSERIALIZER_DISPDATA_H

#include <list>
#include <string>

#include "plugin/ItemDisp.h"
#include "xml/XmlSerializer.h"

class CXmlSerializer_DispData : public CXmlSerializer {
public:
    // What CheckInputData() finds wrong with an item.
    static constexpr unsigned int CHECK_OK = 0;
    static constexpr unsigned int CHECK_OUT_OF_ORDER = 1;  // its parent is not open at this place
    static constexpr unsigned int CHECK_OWN_PARENT = 2;    // it names itself as its parent
    static constexpr unsigned int CHECK_ENABLE_FLAG = 3;   // neither "TRUE" nor "FALSE"

    CXmlSerializer_DispData(std::string rootName, std::string component);
    ~CXmlSerializer_DispData() override;

    // Writes the items, ends the document and hands out its text.
    //   data  a std::list<CItemDisp*>*; the list is not changed
    //   out   as in the base class
    // Returns
    //   RESULT_OK
    //   RESULT_INVALID_ARGUMENT  `data` null, `*out` not null or the list empty; nothing is written
    //   RESULT_MALFORMED_LIST | check << 20 | number of the item, counted from 1 (a number of
    //       0x100000 or more runs into the check's bits)
    //   RESULT_TOO_LARGE
    // On failure `*out` is left as it was and the document stays unfinished.
    unsigned int XmlSerialize(void* data, char** out) override;

    // One of CHECK_...: may `item` stand here? `previous` is null for the list's first item.
    unsigned int CheckInputData(const CItemDisp* item, const CItemDisp* previous,
                                const std::list<std::string>* openParents) const;

    // The item's opening tag and its three fields.
    std::string CreateItem(CItemDisp item) const;

    // What follows the fields of the item at `position`: nothing if the next item is its child,
    // else the leaf mark and the closing tags up to the level at which the next item goes on.
    // Closed levels leave `openParents`. The list has ended where the pointer at `position` is the
    // one at the list's back, also for a pointer that the list holds twice.
    std::string AddItemTag(CItemDisp item, std::list<CItemDisp*>::iterator position,
                           std::list<CItemDisp*>* items, std::list<std::string>* openParents) const;

private:
    unsigned int AddItem(std::list<CItemDisp*>::iterator position, std::list<CItemDisp*>* items,
                         std::list<std::string>* openParents, bool* isNextLevelOpen);
    static void AppendItem(std::string& text, const CItemDisp& item);
    // Whether the level of the next item is the innermost open one.
    static bool AppendItemTag(std::string& text, const CItemDisp& item,
                              std::list<CItemDisp*>::iterator position,
                              std::list<CItemDisp*>* items, std::list<std::string>* openParents);
    static void CloseEveryLevel(std::string& text, std::list<std::string>* openParents);
    static void CloseLevelsUpTo(std::string& text, const std::string& parentName,
                                std::list<std::string>* openParents);
};

#endif  // QOR_XML_XMLSERIALIZER_DISPDATA_H
