// What every fuzz target is made of. A target is one file that defines LLVMFuzzerTestOneInput(): it
// feeds the input to one reader of the product and demands properties of what comes of it. The same
// file is linked twice: with libFuzzer, and with ReplayMain.cpp, which runs the stored corpus.
#ifndef QORFUZZ_FUZZ_H
#define QORFUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" {

// Returns 0 always: every input is worth keeping if it reaches new code.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Prepares the process once, before the first input. Defined in Server.cpp.
int LLVMFuzzerInitialize(int* argc, char*** argv);

}  // extern "C"

namespace qorfuzz {

// Aborts with `property` and what it was about where it does not hold, so that the fuzzer keeps the
// input.
void Demand(bool holds, const char* property, std::string_view detail = {});

inline std::string InputText(const uint8_t* data, size_t size) {
    return size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(data), size);
}

// The lines of a text without their line feeds; what stands behind the last one is a line too.
std::vector<std::string_view> LinesOf(std::string_view text);

// Lines that mean something to the reader under test. A target whose inputs are lines defines it
// for LineMutator.cpp, which is linked to it then.
std::vector<std::string_view> Vocabulary();

}  // namespace qorfuzz

#endif  // QORFUZZ_FUZZ_H
