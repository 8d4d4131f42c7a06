// The three numbers that address one physical drive.
#ifndef QORCTL_MODEL_DRIVEADDRESS_H
#define QORCTL_MODEL_DRIVEADDRESS_H

#include <optional>
#include <string>

namespace qorctl {

// "[enclosure:slot]" of a controller, each from 0 to MAX_ADDRESS_NUMBER.
struct CDriveAddress {
    long controller = 0;
    long enclosure = 0;
    long slot = 0;
};

// The RAID tool knows 32 bits with a sign.
inline constexpr long MAX_ADDRESS_NUMBER = 2'147'483'647;

// One number of an address: decimal digits and nothing else, so that "010" is ten. Nothing for
// another text or a number that is too large.
std::optional<long> ReadAddressNumber(const std::string& text);

// The address of the three texts; nothing when one of them is no number of an address.
std::optional<CDriveAddress> ReadDriveAddress(const std::string& controller,
                                              const std::string& enclosure,
                                              const std::string& slot);

}  // namespace qorctl

#endif  // QORCTL_MODEL_DRIVEADDRESS_H
