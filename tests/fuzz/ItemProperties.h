// What must hold for display items, whatever they were made of.
#ifndef QORFUZZ_ITEMPROPERTIES_H
#define QORFUZZ_ITEMPROPERTIES_H

#include <string>
#include <string_view>

#include "base/ItemList.h"

namespace qorfuzz {

// Of a getter: roots are named `root`, every item stands behind the one that it names as its
// parent, flags are "TRUE" or "FALSE", placeholders are empty. Items below a parent that begins
// with `retired` may lack it; empty for none.
void DemandItemTree(const ItemList& items, std::string_view root, std::string_view retired = {});

// Of any list: it becomes an XML document whose elements are the items, nested as their parent
// names say, or is refused with the number of the first item that is out of place. (Texts that hold
// a "<" are not escaped; such a document is not looked at.) Returns the result of XmlSerialize().
unsigned int DemandXml(ItemList& items);

// Of any list: the sizes of its service-processor form add up, and `qorctl svp --decode` finds the
// records in it that were put into it. (A form whose sizes or counts wrapped is not decoded.)
void DemandForm(const ItemList& items);

}  // namespace qorfuzz

#endif  // QORFUZZ_ITEMPROPERTIES_H
