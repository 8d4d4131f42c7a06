#include "model/DriveAddress.h"

#include <charconv>
#include <system_error>

namespace qorctl {

std::optional<long> ReadAddressNumber(const std::string& text) {
    long number = -1;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || text.starts_with('-') ||
        number > MAX_ADDRESS_NUMBER) {
        return std::nullopt;
    }
    return number;
}

std::optional<CDriveAddress> ReadDriveAddress(const std::string& controller,
                                              const std::string& enclosure,
                                              const std::string& slot) {
    const std::optional<long> controllerNumber = ReadAddressNumber(controller);
    const std::optional<long> enclosureNumber = ReadAddressNumber(enclosure);
    const std::optional<long> slotNumber = ReadAddressNumber(slot);
    if (!controllerNumber || !enclosureNumber || !slotNumber) {
        return std::nullopt;
    }
    return CDriveAddress{
        .controller = *controllerNumber, .enclosure = *enclosureNumber, .slot = *slotNumber};
}

}  // namespace qorctl
