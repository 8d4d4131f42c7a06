#include "ProfileFile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "Files.h"
#include "HostProfile.h"
#include "JsonPatch.h"
#include "ProfileReader.h"
#include "ShippedData.h"
#include "Timeline.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

using nlohmann::json;

constexpr int MAX_DEPTH = 64;

// A reference in a profile is relative to that profile, unless it is a shipped name.
std::string FindBase(const std::string& path, const std::string& reference, std::string& error) {
    const std::string found = FindProfile(reference, error);
    return found == reference ? (fs::path(path).parent_path() / reference).string() : found;
}

// Reads the last of the files, which each one before it extends.
std::optional<json> ReadProfile(const std::vector<std::string>& paths, std::string& error) {
    const std::string& path = paths.back();
    const std::optional<std::string> text = ReadFile(path, error);
    if (!text) {
        if (paths.size() > 1) {
            error = fmt::format("{}: /extends: {}", paths[paths.size() - 2], error);
        }
        return std::nullopt;
    }
    std::optional<json> profile = ParseProfile(*text, error);
    if (!profile) {
        error = fmt::format("{}: {}", path, error);
    }
    return profile;
}

// Whether the files that lead to `path`, which is the last of them, hold it once only.
bool DemandNoCircle(const std::vector<std::string>& paths, std::string& error) {
    std::error_code failure;
    for (size_t i = 0; i + 1 < paths.size(); ++i) {
        if (fs::equivalent(paths[i], paths.back(), failure)) {
            error = fmt::format("{}: /extends: goes in a circle: {}", paths[paths.size() - 2],
                                fmt::join(paths.begin() + static_cast<long>(i), paths.end(), ", "));
            return false;
        }
    }
    return true;
}

bool CheckProfile(const json& profile, std::string& problem) {
    if (ReadHostProfile(profile, problem)) {
        CheckEvents(profile, problem);
    }
    return problem.empty();
}

std::optional<json> LoadEffective(std::vector<std::string> paths, std::string& error);

// The profile that `profile`, the last of the files, extends with the profile merged into it.
std::optional<json> Extend(json profile, std::vector<std::string> paths, std::string& error) {
    const std::string path = paths.back();
    std::string problem;
    const std::string reference = CProfileReader(profile, "", problem).Member("extends").Text();
    const std::string base = problem.empty() ? FindBase(path, reference, problem) : "";
    if (base.empty()) {
        error = fmt::format("{}: {}{}", path, problem.front() == '/' ? "" : "/extends: ", problem);
        return std::nullopt;
    }
    paths.push_back(base);
    std::optional<json> effective = LoadEffective(std::move(paths), error);
    if (effective) {
        profile.erase("extends");
        profile.erase("patch");
        effective->merge_patch(profile);
    }
    return effective;
}

std::optional<json> LoadEffective(std::vector<std::string> paths, std::string& error) {
    const std::string path = paths.back();
    if (!DemandNoCircle(paths, error)) {
        return std::nullopt;
    }
    const std::optional<json> profile = ReadProfile(paths, error);
    if (!profile) {
        return std::nullopt;
    }
    std::optional<json> effective = profile;
    if (profile->contains("extends")) {
        effective = Extend(*profile, std::move(paths), error);
        if (!effective) {
            return std::nullopt;
        }
    }
    std::string problem;
    if (profile->contains("patch")) {
        effective->erase("patch");
        ApplyPatch(CProfileReader(*profile, "", problem).Member("patch"), *effective);
    }
    if (!problem.empty() || !CheckProfile(*effective, problem)) {
        error = fmt::format("{}: {}", path, problem);
        return std::nullopt;
    }
    return effective;
}

}  // namespace

std::optional<json> ParseProfile(const std::string& text, std::string& error) {
    bool tooDeep = false;
    const auto watchDepth = [&](int depth, json::parse_event_t, const json&) {
        tooDeep = tooDeep || depth > MAX_DEPTH;
        return !tooDeep;
    };
    std::optional<json> profile;
    try {
        profile = json::parse(text, watchDepth);
    } catch (const json::exception& failure) {
        error = MessageOf(failure);
    }
    if (tooDeep) {
        error = fmt::format("must not be nested deeper than {} levels", MAX_DEPTH);
        return std::nullopt;
    }
    return profile;
}

std::optional<json> LoadProfile(const std::string& reference, std::string& error) {
    const std::string path = FindProfile(reference, error);
    return path.empty() ? std::nullopt : LoadEffective({path}, error);
}

}  // namespace qorsim
