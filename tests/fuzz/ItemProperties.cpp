#include "ItemProperties.h"

#include <algorithm>
#include <set>

#include "Fuzz.h"

namespace qorfuzz {
namespace {

// One item under its parent.
void DemandItem(const CItemDisp& item, const std::set<std::string>& names, std::string_view root,
                std::string_view retired) {
    const std::string& parent = item.ParentName();
    Demand(!parent.empty() || item.ItemName() == root, "roots have the report's name",
           item.ItemName());
    Demand(!parent.empty() || item.ItemValue().empty(), "roots have no value", item.ItemValue());
    Demand(parent.empty() || names.contains(parent) ||
               (!retired.empty() && parent.starts_with(retired)),
           "the parent stands before its children", parent);
    Demand(item.Enable() == "TRUE" || item.Enable() == "FALSE", "the flag is TRUE or FALSE",
           item.Enable());
    Demand(item.Enable() == "TRUE" || item.ItemValue().empty(), "placeholders are empty",
           item.ItemValue());
}

}  // namespace

void DemandItemTree(const ItemList& items, std::string_view root, std::string_view retired) {
    Demand(items.empty() || items.front()->ParentName().empty(), "a root comes first");
    std::set<std::string> names;
    for (const CItemDisp* item : items) {
        DemandItem(*item, names, root, retired);
        names.insert(item->ItemName());
    }
}

}  // namespace qorfuzz
