#include "presence/CMSRAID_PCICard.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <locale>
#include <string_view>
#include <vector>

#include "base/ServerPaths.h"
#include "base/Trace.h"
#include "cli/ResultFile.h"
#include "util/Kernel.h"

namespace {

constexpr size_t LONGEST_IGNORED_WORD = 16;
constexpr size_t VENDOR_POSITION = 8;
constexpr size_t DEVICE_POSITION = 13;
constexpr size_t ID_LENGTH = 4;

// Supported whatever the ini file holds.
constexpr const char* BUILT_IN_SSD_VENDOR = "VEN_1AED";
constexpr const char* BUILT_IN_SSD_DEVICE = "DEV_2001";

// What is read: an open of a pipe would wait, a device may have no end.
bool IsBoundedFile(const char* path) {
    struct stat status = {};
    return util::GetStatus(path, status) && S_ISREG(status.st_mode) &&
           status.st_size <= FILE_SIZE_LIMIT;
}

std::string ReadIniValue(const std::string& path, const std::string& key) {
    std::array<char, INI_VALUE_SIZE> value = {};
    GetPrivateProfileStringA(INI_SECTION, key.c_str(), "", value.data(), value.size(),
                             path.c_str());
    return value.data();
}

std::string IniPath(const char* name) {
    return CFileUtility::GetInstallPath(0) + "/" + name;
}

// The characters of a text, 64 told apart. What has one that the other has not is no part of it:
// that tells nearly all of many entries from many identifiers.
std::uint64_t CharactersOf(std::string_view text) {
    std::uint64_t characters = 0;
    for (const char character : text) {
        characters |= std::uint64_t{1} << (static_cast<unsigned char>(character) & 0x3FU);
    }
    return characters;
}

std::vector<std::uint64_t> DeviceCharactersOf(const std::list<DevicePCIID>& entries) {
    std::vector<std::uint64_t> characters;
    for (const DevicePCIID& entry : entries) {
        characters.push_back(CharactersOf(entry.device));
    }
    return characters;
}

}  // namespace

void GetWindowsDeviceID(std::string word, std::string& id) {
    word = CStringUtil::StringToUpperCase(word);
    id = "VEN_" + word.substr(VENDOR_POSITION, ID_LENGTH) + "&DEV_" +
         word.substr(DEVICE_POSITION, ID_LENGTH);
}

bool ReadDeviceWord(std::istream& list, std::string& word) {
    while (list >> word) {
        if (word.size() > LONGEST_IGNORED_WORD) {
            return true;
        }
    }
    return false;
}

bool Matches(const std::string& id, const DevicePCIID& entry) {
    return !id.empty() && id.find(entry.device) != std::string::npos &&
           id.find(entry.vendor) != std::string::npos;
}

bool CMSRAID_PCICard::GetPresentPCIList(std::list<std::string>* list) {
    if (list == nullptr) {
        return false;
    }
    list->clear();
    if (!CFileUtility::IsFileExist(DEVICE_LIST_PATH)) {
        COsInfo().makeDeviceInfo();
    }
    if (!IsBoundedFile(DEVICE_LIST_PATH)) {
        return true;
    }
    std::ifstream file(DEVICE_LIST_PATH);
    file.imbue(std::locale::classic());  // what a word is must not be the host's choice
    for (std::string word; ReadDeviceWord(file, word);) {
        GetWindowsDeviceID(word, list->emplace_back());
    }
    return true;
}

bool CMSRAID_PCICard::GetSupportPCIListFromIniFile(std::string& path,
                                                   std::list<DevicePCIID>* list) {
    list->clear();
    const int count = GetPrivateProfileIntA(INI_SECTION, INI_COUNT_KEY, 0, path.c_str());
    for (long i = 1; i <= count; ++i) {
        const std::string number = CStringUtil::NumberToTString(i);
        DevicePCIID entry = {ReadIniValue(path, "Vendor" + number),
                             ReadIniValue(path, "Device" + number)};
        if (!entry.vendor.empty() && !entry.device.empty()) {
            list->push_back(std::move(entry));
        }
    }
    if (list->empty()) {
        // Traced under the orchestrator's name: support tools know it so.
        QOR_TRACE(SKIP,
                  "CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. "
                  "iniFile=%s",
                  path.c_str());
    }
    return true;
}

bool CMSRAID_PCICard::GetSupportRAIDList(std::list<DevicePCIID>* list) {
    std::string path = IniPath(RAID_INI_NAME);
    return GetSupportPCIListFromIniFile(path, list);
}

bool CMSRAID_PCICard::GetSupportPCIeSSDList(std::list<DevicePCIID>* list) {
    std::string path = IniPath(SSD_INI_NAME);
    const bool result = GetSupportPCIListFromIniFile(path, list);
    if (result) {
        list->push_back({BUILT_IN_SSD_VENDOR, BUILT_IN_SSD_DEVICE});
    }
    return result;
}

bool CMSRAID_PCICard::IsPresentSupportDevice(const std::list<DevicePCIID>& supported,
                                             std::list<DevicePCIID>* found) {
    if (found != nullptr) {
        found->clear();
    }
    std::list<std::string> present;
    GetPresentPCIList(&present);
    const std::vector<std::uint64_t> deviceCharacters = DeviceCharactersOf(supported);
    bool result = false;
    for (const std::string& id : present) {
        const std::uint64_t missing = ~CharactersOf(id);
        auto needed = deviceCharacters.begin();
        for (const DevicePCIID& entry : supported) {
            if ((*needed++ & missing) != 0 || !Matches(id, entry)) {
                continue;
            }
            if (found != nullptr) {
                found->push_back(entry);
            }
            QOR_TRACE(RESULT, "Support PCI Device(RAID/SSD) found.(vendor=%s,device=%s)",
                      entry.vendor.c_str(), entry.device.c_str());
            result = true;
        }
    }
    return result;
}

bool CMSRAID_PCICard::IsPresentRAID(std::list<DevicePCIID>* found) {
    const CTraceScope trace("CMSRAID_PCICard::IsPresentRAID");
    std::list<DevicePCIID> supported;
    if (!GetSupportRAIDList(&supported)) {
        QOR_TRACE(FAILURE, "CMSRAID_PCICard::IsPresentRAID() GetSupportRAIDList is FAILED.");
        return false;
    }
    const bool result = IsPresentSupportDevice(supported, found);
    if (!result) {
        QOR_TRACE(RESULT, "RAID Card is not present.");
    }
    return result;
}

bool CMSRAID_PCICard::IsPresentPCIeSSD(std::list<DevicePCIID>* found) {
    const CTraceScope trace("CMSRAID_PCICard::IsPresentPCIeSSD");
    std::list<DevicePCIID> supported;
    if (!GetSupportPCIeSSDList(&supported)) {
        QOR_TRACE(FAILURE, "CMSRAID_PCICard::IsPresentPCIeSSD() GetSupportPCIeSSDList is FAILED.");
        return false;
    }
    const bool result = IsPresentSupportDevice(supported, found);
    if (!result) {
        QOR_TRACE(RESULT, "PCIe SSD is not present.");
    }
    return result;
}
