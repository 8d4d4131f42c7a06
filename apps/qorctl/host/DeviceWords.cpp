#include "host/DeviceWords.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "base/ServerPaths.h"
#include "cli/ResultFile.h"
#include "comlib/PciDevices.h"
#include "plugin/ComLib.h"

namespace qorctl {
namespace {

constexpr std::string_view PLACE_FORM = "BB:DD.F_VVVV:DDDD";

std::vector<CDeviceWord> ReadWords(std::istream& list) {
    std::vector<CDeviceWord> words;
    for (std::string word; ReadDeviceWord(list, word);) {
        CDeviceWord& device = words.emplace_back();
        device.place = CStringUtil::StringToUpperCase(word.substr(0, PLACE_FORM.size()));
        GetWindowsDeviceID(word, device.identifier);
    }
    return words;
}

}  // namespace

std::optional<std::vector<CDeviceWord>> ReadDeviceList() {
    std::error_code error;
    // A pipe would be waited for.
    if (!std::filesystem::is_regular_file(DEVICE_LIST_PATH, error) ||
        std::filesystem::file_size(DEVICE_LIST_PATH, error) > size_t{FILE_SIZE_LIMIT}) {
        return std::nullopt;
    }
    std::ifstream file(DEVICE_LIST_PATH, std::ios::binary);
    std::vector<CDeviceWord> words = ReadWords(file);
    return file.is_open() && !file.bad() ? std::make_optional(std::move(words)) : std::nullopt;
}

std::optional<std::vector<CDeviceWord>> ReadLiveBus() {
    const std::optional<std::string> text = comlib::ReadPciDevices();
    if (!text) {
        return std::nullopt;
    }
    std::istringstream list(*text);
    return ReadWords(list);
}

std::list<DevicePCIID> SupportedOf(const std::list<DevicePCIID>& supported,
                                   const std::vector<CDeviceWord>& words) {
    std::list<DevicePCIID> found;
    for (const CDeviceWord& word : words) {
        std::copy_if(
            supported.begin(), supported.end(), std::back_inserter(found),
            [&word](const DevicePCIID& device) { return Matches(word.identifier, device); });
    }
    return found;
}

}  // namespace qorctl
