#include "doctor/SupportedList.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "plugin/ComLib.h"

namespace qorctl::doctor {
namespace {

constexpr std::string_view UPPER_CASE_DIGITS = "0123456789ABCDEF";
constexpr int MOST_ENTRIES = 100'000;  // a mistyped count must not keep the doctor for hours

std::string ReadValue(const std::string& key, const CSupportedList& list) {
    std::array<char, INI_VALUE_SIZE> text = {};
    GetPrivateProfileStringA(INI_SECTION, key.c_str(), "", text.data(), text.size(),
                             list.path.c_str());
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
    const std::string vendor = ReadValue(vendorKey, list);
    const std::string device = ReadValue(deviceKey, list);
    if (vendor.empty() || device.empty()) {
        list.oddities.push_back(fmt::format("entry {} is skipped: {} is missing", number,
                                            vendor.empty() ? vendorKey : deviceKey));
        return;
    }
    const bool vendorFits = ExamineValue(vendorKey, vendor, "VEN_", list);
    const bool deviceFits = ExamineValue(deviceKey, device, "DEV_", list);
    list.matching += vendorFits && deviceFits ? 1 : 0;
}

// `getDevices` is the plug-in's own; it asks for as many entries as the file promises.
CSupportedList ReadList(const char* name, bool (*getDevices)(std::list<DevicePCIID>*)) {
    CSupportedList list;
    list.path = CFileUtility::GetInstallPath(0) + "/" + name;
    list.trouble = ExaminePath(list.path, EPathKind::FILE, R_OK);
    const int count = GetPrivateProfileIntA(INI_SECTION, INI_COUNT_KEY, 0, list.path.c_str());
    if (count > MOST_ENTRIES) {
        list.oddities.push_back(fmt::format(
            "{}={}: every request reads so many entries, which takes long", INI_COUNT_KEY, count));
        return list;
    }
    getDevices(&list.devices);
    for (int number = 1; number <= count; ++number) {
        ReadEntry(number, list);
    }
    const int next = std::max(count, 0) + 1;
    if (!ReadValue(fmt::format("Vendor{}", next), list).empty()) {
        list.oddities.push_back(
            fmt::format("entry {} stands behind the count of {} and is not read", next, count));
    }
    return list;
}

}  // namespace

CSupportedList ReadRaidList() {
    return ReadList(RAID_INI_NAME, CMSRAID_PCICard::GetSupportRAIDList);
}

CSupportedList ReadSsdList() {
    return ReadList(SSD_INI_NAME, CMSRAID_PCICard::GetSupportPCIeSSDList);
}

}  // namespace qorctl::doctor
