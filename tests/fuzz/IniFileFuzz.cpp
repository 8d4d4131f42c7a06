// Ini files as libqor_ComLib reads them, and the list of supported devices in one.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Depth.h"
#include "Fuzz.h"
#include "Server.h"
#include "comlib/CIniFile.h"
#include "plugin/ComLib.h"
#include "presence/CMSRAID_PCICard.h"

namespace {

using namespace qorfuzz;
using comlib::CIniFile;

constexpr const char* PATH = "/opt/tarmica/fuzz.ini";
constexpr const char* SECTION = "SuportDevice";
constexpr const char* COUNT_KEY = "SuportDeviceNum";
constexpr long MOST_DEVICES = 12;  // each is asked for: a count of millions takes minutes
constexpr size_t PLUGIN_VALUE_SIZE = 255;
// Lines "[" without an end cost the parser the square of the file, which is root's.
constexpr size_t MOST_TEXT = 32768;

std::string OtherCase(std::string text) {
    for (char& c : text) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        c = isLetter ? static_cast<char>(c ^ 0x20) : c;
    }
    return text;
}

// A text copied into buffers of every size that matters.
void DemandCopies(const char* key, const std::string& value) {
    for (const size_t size : {size_t{1}, value.size(), value.size() + 1, value.size() + 2}) {
        std::vector<char> buffer(std::max<size_t>(size, 1), 'x');
        const unsigned long copied =
            GetPrivateProfileStringA(SECTION, key, "default", buffer.data(), size, PATH);
        const std::string expected = value.substr(0, size == 0 ? 0 : size - 1);
        Demand(copied == expected.size(), "the length is that of the copy", value);
        Demand(size == 0 || buffer.data() == expected, "the copy is cut to the buffer", value);
    }
}

void DemandNumber(const char* key, const std::string& value) {
    const long number = std::clamp<long>(std::strtol(value.c_str(), nullptr, 10), INT_MIN, INT_MAX);
    Demand(GetPrivateProfileIntA(SECTION, key, 7, PATH) == number, "a number is that of its digits",
           value);
}

void DemandKey(const CIniFile& file, const char* key) {
    const std::optional<std::string> value = file.Find(SECTION, key);
    Demand(value == file.Find(OtherCase(SECTION).c_str(), OtherCase(key).c_str()),
           "names are found in every case", key);
    if (value) {
        Demand(value->find('\n') == std::string::npos, "a value is one line", *value);
        DemandCopies(key, *value);
        DemandNumber(key, *value);
    } else {
        Demand(GetPrivateProfileIntA(SECTION, key, 7, PATH) == 7, "a missing key has the default");
    }
}

void DemandDevices(const CIniFile& file, long count) {
    std::list<DevicePCIID> devices;
    std::string path = PATH;
    Demand(CMSRAID_PCICard::GetSupportPCIListFromIniFile(path, &devices), "the list can be read");
    const auto valueOf = [&](const std::string& key) {
        return file.Find(SECTION, key.c_str()).value_or("").substr(0, PLUGIN_VALUE_SIZE);
    };
    auto device = devices.begin();
    for (long i = 1; i <= count; ++i) {
        const std::string vendor = valueOf("Vendor" + std::to_string(i));
        const std::string name = valueOf("Device" + std::to_string(i));
        if (vendor.empty() || name.empty()) {
            continue;
        }
        Demand(device != devices.end() && device->vendor == vendor && device->device == name,
               "every whole entry is in the list", vendor + " " + name);
        ++device;
    }
    Demand(device == devices.end(), "nothing else is in the list");
}

void Fuzz(const std::string& input) {
    const std::string text = input.substr(0, MOST_TEXT);
    WriteServerFile(PATH, text);
    const CLeavesNothing check;
    const std::unique_ptr<CIniFile> file = CIniFile::Load(PATH);
    if (file == nullptr) {
        return;
    }
    for (const char* key : {COUNT_KEY, "Vendor1", "Device2"}) {
        DemandKey(*file, key);
    }
    const long count = GetPrivateProfileIntA(SECTION, COUNT_KEY, 0, PATH);
    if (count <= MOST_DEVICES) {
        DemandDevices(*file, count);
    }
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {"[SuportDevice]",
            "[suportdevice]",
            "[Other]",
            "[",
            "SuportDeviceNum=2",
            "SuportDeviceNum=-1",
            "SuportDeviceNum=2x",
            "Vendor1=VEN_1000",
            "Device1=DEV_005D",
            "VENDOR1 = \"VEN_8086\"",
            "Vendor2='VEN_1000'",
            "Device2=\"DEV_005D",
            "Device2=",
            "; comment",
            "# comment",
            "=",
            "Vendor1",
            "Vendor1=<<<END",
            "END",
            "\xEF\xBB\xBF",
            ""};
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
