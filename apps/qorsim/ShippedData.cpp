#include "ShippedData.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "Files.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

constexpr const char* PROFILE_EXTENSION = ".json";
constexpr const char* SCHEMA_NAME = "host.schema";

}  // namespace

std::string DataDirectory() {
    return fs::path(OwnDirectory()).parent_path() / "share" / "qor";
}

std::vector<std::string> ShippedHosts() {
    std::vector<std::string> names;
    std::error_code failure;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(DataDirectory()) / "hosts", failure)) {
        const std::string name = entry.path().stem();
        if (entry.path().extension() == PROFILE_EXTENSION && name != SCHEMA_NAME) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string FindProfile(const std::string& reference, std::string& error) {
    if (reference.find('/') != std::string::npos || reference.ends_with(PROFILE_EXTENSION)) {
        return reference;
    }
    const std::vector<std::string> names = ShippedHosts();
    if (std::find(names.begin(), names.end(), reference) == names.end()) {
        error = fmt::format(
            "there is no host named \"{}\": the shipped ones are {}; write ./{} for a file",
            reference, names.empty() ? "none" : fmt::format("{}", fmt::join(names, ", ")),
            reference);
        return "";
    }
    return DataDirectory() + "/hosts/" + reference + PROFILE_EXTENSION;
}

}  // namespace qorsim
