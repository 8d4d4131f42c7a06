#include "doctor/DeviceWords.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/ServerPaths.h"
#include "comlib/PciDevices.h"
#include "plugin/ComLib.h"
#include "presence/CMSRAID_PCICard.h"

namespace qorctl::doctor {
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
    if (!std::filesystem::is_regular_file(DEVICE_LIST_PATH, error)) {
        return std::nullopt;  // a pipe would be waited for
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

}  // namespace qorctl::doctor
