// Where a virtual operation stands in its class's table: hosts and derived classes rely on it.
#ifndef QORTEST_SLOTOF_H
#define QORTEST_SLOTOF_H

#include <cstddef>
#include <cstring>

namespace qortest {

// The slot of `operation`, counted from 0; the destructor takes two. As the C++ ABI of Linux keeps
// a pointer to a virtual member: its first word is the place in the table in bytes, on most
// machines plus 1.
template <class Operation>
std::size_t SlotOf(Operation operation) {
    static_assert(sizeof operation == 2 * sizeof(std::size_t), "a pointer to a member");
    std::size_t place = 0;
    std::memcpy(&place, &operation, sizeof place);
    return place / sizeof(void*);
}

}  // namespace qortest

#endif  // QORTEST_SLOTOF_H
