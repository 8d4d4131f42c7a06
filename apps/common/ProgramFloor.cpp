// What a C++ library that is linked into a program asks of a C library newer than that of 2021
// (glibc 2.34): scripts/release says which one the programs of its archive need.
#include <sys/random.h>

#include <cstdint>
#include <cstdlib>

// Four random bytes, for std::random_device; glibc has it since 2.36. A kernel without random bytes
// lets nobody guess: the program ends.
extern "C" __attribute__((visibility("hidden"))) std::uint32_t arc4random() noexcept {
    std::uint32_t bytes = 0;
    // As few as these come whole, and no signal interrupts it once the kernel is up.
    if (getrandom(&bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        std::abort();
    }
    return bytes;
}
