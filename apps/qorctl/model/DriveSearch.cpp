#include "model/DriveSearch.h"

#include <algorithm>
#include <string_view>

namespace qorctl {
namespace {

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

std::string WithoutPrefix(std::string text, std::string_view prefix) {
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

bool IsPlace(const CPhysicalDrive& drive, const std::string& word) {
    const size_t colon = word.find(':');
    if (colon == std::string::npos || !drive.place.enclosure || !drive.place.slot) {
        return false;
    }
    return ReadCount(word.substr(0, colon)) == drive.place.enclosure &&
           ReadCount(word.substr(colon + 1)) == drive.place.slot;
}

// `word` in lower case.
bool IsMeant(const CPhysicalDrive& drive, const std::string& word) {
    return IsPlace(drive, word) ||
           (drive.number && ReadCount(WithoutPrefix(word, "pd")) == drive.number) ||
           (drive.serial && Lower(*drive.serial) == word) ||
           (drive.wwn &&
            WithoutPrefix(Lower(*drive.wwn), "0x") == WithoutPrefix(std::string(word), "0x"));
}

bool IsAddressNumber(const CNumber& number) {
    return number && *number >= 0 && *number <= MAX_ADDRESS_NUMBER;
}

}  // namespace

std::vector<const CPhysicalDrive*> FindDrives(const CInventory& inventory,
                                              const std::string& word) {
    const std::string lower = Lower(word);
    std::vector<const CPhysicalDrive*> found;
    for (const CPhysicalDrive& drive : inventory.physicalDrives) {
        if (IsMeant(drive, lower)) {
            found.push_back(&drive);
        }
    }
    return found;
}

std::optional<CDriveAddress> AddressOf(const CPhysicalDrive& drive) {
    if (!IsAddressNumber(drive.controller) || !IsAddressNumber(drive.place.enclosure) ||
        !IsAddressNumber(drive.place.slot)) {
        return std::nullopt;
    }
    return CDriveAddress{.controller = static_cast<long>(*drive.controller),
                         .enclosure = static_cast<long>(*drive.place.enclosure),
                         .slot = static_cast<long>(*drive.place.slot)};
}

}  // namespace qorctl
