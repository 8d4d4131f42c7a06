// Whether a guest leaves something behind in the process.
#ifndef QORTEST_FOOTPRINT_H
#define QORTEST_FOOTPRINT_H

#include <functional>

namespace qortest {

// Lets a guest come and go, `times` times after a few for the C library and the loader to get what
// they keep. Demands that no descriptor, thread, child or library of ours is left, and no
// memory but for 4 KiB of chance. (A sanitizer has its own allocator, and looks for leaks itself.)
void ExpectVisitsLeaveNothing(const std::function<void()>& visit, int times);

}  // namespace qortest

#endif  // QORTEST_FOOTPRINT_H
