#include "doctor/SupportedList.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "plugin/ComLib.h"

namespace fs = std::filesystem;

namespace qorctl::doctor {
namespace {

constexpr const char* SECTION = "SuportDevice";
constexpr std::string_view UPPER_CASE_DIGITS = "0123456789ABCDEF";
constexpr int MOST_ENTRIES = 100'000;  // a mistyped count must not keep the doctor for hours

std::string ReadValue(const std::string& key, const CSupportedList& list) {
    std::array<char, 256> text = {};  // as much as the plug-in reads
    GetPrivateProfileStringA(SECTION, key.c_str(), "", text.data(), text.size(), list.path.c_str());
    return text.data();
}

bool IsWellFormed(const std::string& value, std::string_view head) {
    return value.size() == head.size() + 4 && value.starts_with(head) &&
           value.find_first_not_of(UPPER_CASE_DIGITS, head.size()) == std::string::npos;
}

bool HasLowerCase(const std::string& value) {
    return std::any_of(value.begin(), value.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

// True if the value can occur in an identifier.
bool ExamineValue(const std::string& key, const std::string& value, std::string_view head,
                  CSupportedList& list) {
    if (IsWellFormed(value, head)) {
        return true;
    }
    if (HasLowerCase(value)) {
        list.oddities.push_back(
            fmt::format("{}={} never matches: it holds lower-case letters", key, value));
        return false;
    }
    list.oddities.push_back(
        fmt::format("{}={} is not {} and four upper-case hexadecimal digits", key, value, head));
    return true;
}

void ReadEntry(int number, CSupportedList& list) {
    const std::string vendorKey = fmt::format("Vendor{}", number);
    const std::string deviceKey = fmt::format("Device{}", number);
    const CSupportedDevice entry = {ReadValue(vendorKey, list), ReadValue(deviceKey, list)};
    if (entry.vendor.empty() || entry.device.empty()) {
        list.oddities.push_back(fmt::format("entry {} is skipped: {} is missing", number,
                                            entry.vendor.empty() ? vendorKey : deviceKey));
        return;
    }
    const bool vendorFits = ExamineValue(vendorKey, entry.vendor, "VEN_", list);
    const bool deviceFits = ExamineValue(deviceKey, entry.device, "DEV_", list);
    list.matching += vendorFits && deviceFits ? 1 : 0;
    list.devices.push_back(entry);
}

}  // namespace

CSupportedList ReadSupportedList(const std::string& path) {
    CSupportedList list;
    list.path = path;
    std::error_code error;
    list.exists = fs::exists(path, error);
    list.readable = fs::is_regular_file(path, error) && access(path.c_str(), R_OK) == 0;
    const int count = GetPrivateProfileIntA(SECTION, "SuportDeviceNum", 0, path.c_str());
    for (int number = 1; number <= std::min(count, MOST_ENTRIES); ++number) {
        ReadEntry(number, list);
    }
    const int next = std::clamp(count, 0, MOST_ENTRIES) + 1;
    if (!ReadValue(fmt::format("Vendor{}", next), list).empty()) {
        list.oddities.push_back(
            fmt::format("entry {} stands behind the count of {} and is not read", next, count));
    }
    return list;
}

bool Matches(const CSupportedDevice& device, const std::string& identifier) {
    return identifier.find(device.vendor) != std::string::npos &&
           identifier.find(device.device) != std::string::npos;
}

}  // namespace qorctl::doctor
