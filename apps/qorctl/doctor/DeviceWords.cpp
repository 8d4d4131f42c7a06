#include "doctor/DeviceWords.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/ServerPaths.h"
#include "comlib/PciDevices.h"
#include "plugin/ComLib.h"

namespace qorctl::doctor {
namespace {

constexpr size_t VENDOR_POSITION = 8;
constexpr size_t DEVICE_POSITION = 13;
constexpr size_t ID_SIZE = 4;
constexpr size_t PLACE_SIZE = DEVICE_POSITION + ID_SIZE;

}  // namespace

std::vector<CDeviceWord> ReadDeviceWords(const std::string& text) {
    std::vector<CDeviceWord> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        if (word.size() >= PLACE_SIZE) {
            const std::string upper = CStringUtil::StringToUpperCase(word);
            words.push_back({upper.substr(0, PLACE_SIZE),
                             "VEN_" + upper.substr(VENDOR_POSITION, ID_SIZE) + "&DEV_" +
                                 upper.substr(DEVICE_POSITION, ID_SIZE)});
        }
    }
    return words;
}

std::optional<std::vector<CDeviceWord>> ReadDeviceList() {
    std::error_code error;
    if (!std::filesystem::is_regular_file(DEVICE_LIST_PATH, error)) {
        return std::nullopt;  // a pipe would be waited for
    }
    std::ifstream file(DEVICE_LIST_PATH, std::ios::binary);
    std::string text;
    std::getline(file, text, '\0');
    const bool wasRead = file.is_open() && !file.bad();
    return wasRead ? std::make_optional(ReadDeviceWords(text)) : std::nullopt;
}

std::optional<std::vector<CDeviceWord>> ReadLiveBus() {
    const std::optional<std::string> text = comlib::ReadPciDevices();
    return text ? std::make_optional(ReadDeviceWords(*text)) : std::nullopt;
}

}  // namespace qorctl::doctor
