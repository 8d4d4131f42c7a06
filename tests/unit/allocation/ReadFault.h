// Fails read(). Only for test programs of their own: it replaces the function for the whole
// program.
#ifndef QORTEST_READFAULT_H
#define QORTEST_READFAULT_H

namespace qortest {

// The call of read() after `successes` more ones fails with EIO, and all calls after it.
void FailReadAfter(long successes);

// Takes the order back.
void DisarmReadFault();

}  // namespace qortest

#endif  // QORTEST_READFAULT_H
