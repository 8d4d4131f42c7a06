#include "cli/ProductVersion.h"

namespace {

constexpr const char* VERSION_KEY = "Product Version";

std::string VersionOfLine(const std::string& line) {
    const size_t colon = line.find(':');
    if (colon == std::string::npos) {
        return "";
    }
    // The colon and the blank behind it, whatever stands there.
    const std::string version = line.substr(colon + 2);
    return version.substr(0, version.find_last_not_of(" \t\r\n") + 1);
}

}  // namespace

std::string ReadProductVersion(std::istream& output) {
    for (std::string line; std::getline(output, line);) {
        if (line.find(VERSION_KEY) != std::string::npos) {
            return VersionOfLine(line);
        }
    }
    return "";
}
