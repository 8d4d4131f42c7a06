// Profiles of hosts that nobody wants to write by hand.
#ifndef QORSIM_GENERATOR_H
#define QORSIM_GENERATOR_H

#include <cstdint>
#include <string>

namespace qorsim {

inline constexpr int MAX_CONTROLLERS = 127;
inline constexpr int MAX_DRIVES = 10000;

struct CHostSize {
    int controllers = 0;  // 0 to MAX_CONTROLLERS
    int drives = 0;       // of all controllers together, 0 to MAX_DRIVES; 0 without a controller
    std::uint64_t seed = 0;
};

// The text of a profile that extends the shipped host "large", whose drive models it uses. The same
// size gives the same bytes on every machine.
std::string GenerateProfile(const CHostSize& size);

}  // namespace qorsim

#endif  // QORSIM_GENERATOR_H
