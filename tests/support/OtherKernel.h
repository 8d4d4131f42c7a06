// The kernels that a program may find on its user's machine.
#ifndef QORTEST_OTHERKERNEL_H
#define QORTEST_OTHERKERNEL_H

namespace qortest {

// One that opens files beneath a folder by itself, an older one, or one whose filter of system
// calls does not know that call.
enum class EKernel { WHOLE, WITHOUT_OPENAT2, FORBIDS_OPENAT2 };

// Puts this process on such a kernel for good; false if that cannot be.
bool Enter(EKernel kernel);

}  // namespace qortest

#endif  // QORTEST_OTHERKERNEL_H
