#include "AllocationFault.h"

#include <cstdlib>
#include <new>

namespace {

constexpr long DISARMED = -1;

long liveAllocations = 0;
long remainingSuccesses = DISARMED;

}  // namespace

namespace qortest {

long LiveAllocations() {
    return liveAllocations;
}

void FailAllocationAfter(long successes) {
    remainingSuccesses = successes;
}

bool DisarmAllocationFault() {
    const bool armed = remainingSuccesses != DISARMED;
    remainingSuccesses = DISARMED;
    return armed;
}

}  // namespace qortest

void* operator new(std::size_t size) {
    if (remainingSuccesses != DISARMED && remainingSuccesses-- == 0) {
        throw std::bad_alloc();
    }
    void* block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++liveAllocations;
    return block;
}

void operator delete(void* block) noexcept {
    liveAllocations -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
