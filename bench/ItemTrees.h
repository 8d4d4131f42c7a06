// Item lists as a request makes them, of any size, and where their levels end.
#ifndef QORBENCH_ITEMTREES_H
#define QORBENCH_ITEMTREES_H

#include <vector>

#include "base/ItemList.h"

namespace qorbench {

// Appends drives, each a root item with two sections, until there are `count` items.
void AddDriveItems(ItemList& items, std::size_t count);

// Appends `controllers` controllers with `drives` drives each, as the service-processor form wants
// them.
void AddServer(ItemList& items, unsigned controllers, unsigned drives);

// What follows an item in the XML document: is it a leaf, and how many levels end behind it?
struct CLevelEnd {
    bool isLeaf;
    unsigned char closed;
};
std::vector<CLevelEnd> LevelEnds(const ItemList& items);

}  // namespace qorbench

#endif  // QORBENCH_ITEMTREES_H
