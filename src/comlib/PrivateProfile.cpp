#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

#include "comlib/CIniCache.h"
#include "comlib/NumberText.h"
#include "plugin/ComLib.h"

int GetPrivateProfileIntA(const char* section, const char* key, int defaultValue,
                          const char* path) {
    const std::optional<std::string> value = comlib::CIniCache::Find(section, key, path);
    if (!value) {
        return defaultValue;
    }
    constexpr long SMALLEST = std::numeric_limits<int>::min();
    constexpr long LARGEST = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(comlib::LeadingNumber(*value), SMALLEST, LARGEST));
}

unsigned long GetPrivateProfileStringA(const char* section, const char* key,
                                       const char* defaultText, char* buffer, unsigned long size,
                                       const char* path) {
    if (size == 0) {
        return 0;
    }
    const std::optional<std::string> value = comlib::CIniCache::Find(section, key, path);
    const std::string_view text = value ? std::string_view(*value) : defaultText;
    const size_t length = std::min<size_t>(text.size(), size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return length;
}
