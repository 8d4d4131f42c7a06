// Item lists as readable text, for golden files and for comparisons that show what differs:
//
//     parent | name | value | flag        one item a line, each line ended
//
// A backslash, a line feed, a carriage return, a tab or another control character in a text is
// shown as an escape (\\ \n \r \t \x1b), so that a line stays one item.
#ifndef QORTEST_ITEMTEXT_H
#define QORTEST_ITEMTEXT_H

#include <list>
#include <string>

#include "base/ItemList.h"
#include "plugin/ItemDisp.h"

namespace qortest {

std::string ItemText(const CItemDisp& item);
std::string ItemText(const std::list<CItemDisp*>& items);

// The caller's list of a test: frees its items when the test ends.
class CItems : public CItemListOwner {
public:
    std::string Text() const { return ItemText(*this); }
};

// Compares `items` with the golden file tests/FILE ("golden/ctrl/NAME.items").
void ExpectGoldenItems(const std::string& file, const std::list<CItemDisp*>& items);

}  // namespace qortest

#endif  // QORTEST_ITEMTEXT_H
