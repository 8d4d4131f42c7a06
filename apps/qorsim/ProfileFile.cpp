#include "ProfileFile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "Files.h"
#include "Folder.h"
#include "HostProfile.h"
#include "JsonPatch.h"
#include "JsonText.h"
#include "ProfileReader.h"
#include "ShippedData.h"
#include "Timeline.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

using nlohmann::json;

constexpr size_t MAX_PROFILES = 16;

// The files of a profile, each of which extends the next, and what has been read of them.
struct CChain {
    std::vector<std::string> paths;
    std::string below;  // the last one's name below its predecessor's folder, if it has one there
    size_t size = 0;
};

// Appends what the last file of the chain extends. Whoever made that file may mean a shipped host
// or one beside it, nothing else of the reader's.
bool FindBase(const std::string& reference, CChain& chain, std::string& error) {
    const std::string found = FindProfile(reference, error);
    chain.below = found == reference ? found : "";
    if (!chain.below.empty() &&
        !IsPathBelow(chain.below.starts_with("./") ? chain.below.substr(2) : chain.below)) {
        error = fmt::format("must be a shipped host or a path below this profile, is \"{}\"",
                            reference);
        return false;
    }
    chain.paths.push_back(chain.below.empty()
                              ? found
                              : (fs::path(chain.paths.back()).parent_path() / found).string());
    return !found.empty();
}

// Reads the last of the files.
std::optional<std::string> ReadText(CChain& chain, std::string& error) {
    if (chain.paths.size() > MAX_PROFILES) {
        error = fmt::format("there are more than {} profiles", MAX_PROFILES);
        return std::nullopt;
    }
    std::optional<std::string> text =
        chain.below.empty()
            ? ReadFile(chain.paths.back(), error)
            : ReadBeneath(fs::path(*(chain.paths.end() - 2)).parent_path(), chain.below, error);
    chain.size += text.value_or("").size();
    if (chain.size > MAX_READ) {
        error = fmt::format("the profiles together are larger than {} MiB", MAX_READ >> 20U);
        return std::nullopt;
    }
    return text;
}

std::optional<json> ReadProfile(CChain& chain, std::string& error) {
    const std::vector<std::string>& paths = chain.paths;
    const std::optional<std::string> text = ReadText(chain, error);
    if (!text) {
        if (paths.size() > 1) {
            error = fmt::format("{}: /extends: {}", paths[paths.size() - 2], error);
        }
        return std::nullopt;
    }
    std::optional<json> profile = ParseProfile(*text, error);
    if (!profile) {
        error = fmt::format("{}: {}", paths.back(), error);
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

bool CheckProfile(const json& profile, CPatcher& patcher, std::string& problem) {
    if (ReadHostProfile(profile, problem)) {
        CheckEvents(profile, patcher, problem);
    }
    return problem.empty();
}

std::optional<json> LoadEffective(CChain chain, std::string& error);

// The profile that `profile`, the last of the files, extends with the profile merged into it.
std::optional<json> Extend(json profile, CChain chain, std::string& error) {
    const std::string path = chain.paths.back();
    std::string problem;
    const std::string reference = CProfileReader(profile, "", problem).Member("extends").Text();
    if (!problem.empty() || !FindBase(reference, chain, problem)) {
        error = fmt::format("{}: {}{}", path, problem.front() == '/' ? "" : "/extends: ", problem);
        return std::nullopt;
    }
    std::optional<json> effective = LoadEffective(std::move(chain), error);
    if (effective) {
        profile.erase("extends");
        profile.erase("patch");
        effective->merge_patch(profile);
    }
    return effective;
}

std::optional<json> LoadEffective(CChain chain, std::string& error) {
    const std::string path = chain.paths.back();
    if (!DemandNoCircle(chain.paths, error)) {
        return std::nullopt;
    }
    const std::optional<json> profile = ReadProfile(chain, error);
    if (!profile) {
        return std::nullopt;
    }
    std::optional<json> effective = profile;
    if (profile->contains("extends")) {
        effective = Extend(*profile, std::move(chain), error);
        if (!effective) {
            return std::nullopt;
        }
    }
    std::string problem;
    CPatcher patcher;
    if (profile->contains("patch")) {
        effective->erase("patch");
        patcher.Apply(CProfileReader(*profile, "", problem).Member("patch"), *effective);
    }
    if (!problem.empty() || !CheckProfile(*effective, patcher, problem)) {
        error = fmt::format("{}: {}", path, problem);
        return std::nullopt;
    }
    return effective;
}

}  // namespace

std::optional<json> ParseProfile(const std::string& text, std::string& error) {
    error = JsonExcess(text);
    if (!error.empty()) {
        return std::nullopt;
    }
    try {
        return json::parse(text);
    } catch (const json::exception& failure) {
        error = MessageOf(failure);
        return std::nullopt;
    }
}

std::optional<json> LoadProfile(const std::string& reference, std::string& error) {
    const std::string path = FindProfile(reference, error);
    return path.empty() ? std::nullopt : LoadEffective({.paths = {path}, .below = ""}, error);
}

}  // namespace qorsim
