// Item lists as inputs: one item a line, "parent | name | value | flag", the form of the golden
// files tests/golden/*/*.items (without their escapes). What is missing at the end of a line is
// empty, but for the flag, which is "TRUE" then.
#ifndef QORFUZZ_ITEMLISTINPUT_H
#define QORFUZZ_ITEMLISTINPUT_H

#include <string_view>

#include "base/ItemList.h"

namespace qorfuzz {

void ReadItems(std::string_view text, ItemList& items);

}  // namespace qorfuzz

#endif  // QORFUZZ_ITEMLISTINPUT_H
