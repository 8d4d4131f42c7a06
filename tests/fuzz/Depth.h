// How closely an input is looked at. Files of their own, the trace, and what is made of the items
// take ten times as long as the reader under test, so that one input of SAMPLE is looked at WHOLE,
// the others QUICKly. Which, depends on its bytes alone: an input is the same each time.
//
// All inputs are looked at both ways where the stored corpus is replayed and where a file is given
// to libFuzzer, as a finding is.
#ifndef QORFUZZ_DEPTH_H
#define QORFUZZ_DEPTH_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qorfuzz {

enum class EDepth {
    QUICK,  // what is put for the reader is in memory; no trace; the quick properties
    WHOLE,  // real files; every line of the trace; all properties
};

inline constexpr size_t SAMPLE = 64;

// The one of the input that is being looked at; WHOLE outside of FuzzInput().
EDepth Depth();

// Gives the input to `target`.
void FuzzInput(const uint8_t* data, size_t size, void (*target)(const std::string& input));

// From now on every input is looked at both ways.
void LookAtAllBothWays();

}  // namespace qorfuzz

#endif  // QORFUZZ_DEPTH_H
