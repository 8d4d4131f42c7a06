// Counts and fails allocations made with operator new. Only for test programs of their own: it
// replaces the operator for the whole program.
#ifndef QORTEST_ALLOCATIONFAULT_H
#define QORTEST_ALLOCATIONFAULT_H

namespace qortest {

// Blocks that are allocated and not freed yet.
long LiveAllocations();

// The allocation after `successes` more ones throws std::bad_alloc, once.
void FailAllocationAfter(long successes);

// Takes the order back; true if it was not carried out yet.
bool DisarmAllocationFault();

}  // namespace qortest

#endif  // QORTEST_ALLOCATIONFAULT_H
