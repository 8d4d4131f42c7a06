#include "OwnServer.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <utility>

#include "Files.h"
#include "HostProfile.h"
#include "ProfileFile.h"
#include "ServerPaths.h"
#include "Timeline.h"

namespace qorsim {
namespace {

// How long the server has been running; a clock that was set back gives 0.
std::optional<long> SecondsSinceStart(std::string& error) {
    const std::optional<std::string> text = ReadFile(START_TIME, error);
    if (!text) {
        return std::nullopt;
    }
    long start = 0;
    const char* end = text->data() + text->size();
    const auto [rest, failure] = std::from_chars(text->data(), end, start);
    if (failure != std::errc() || start < 0 || (rest != end && *rest != '\n')) {
        error = fmt::format("{}: must be a number of seconds since 1970", START_TIME);
        return std::nullopt;
    }
    return std::max<long>(0, std::time(nullptr) - start);
}

}  // namespace

std::optional<CHost> LoadOwnServer(std::string& error) {
    const std::optional<std::string> text = ReadFile(PROFILE_COPY, error);
    if (!text) {
        return std::nullopt;
    }
    std::optional<nlohmann::json> profile = ParseProfile(*text, error);
    const std::optional<long> seconds = profile ? SecondsSinceStart(error) : std::nullopt;
    if (!seconds) {
        return std::nullopt;
    }
    const std::optional<nlohmann::json> state = ProfileAt(std::move(*profile), *seconds, error);
    return state ? ReadHostProfile(*state, error) : std::nullopt;
}

}  // namespace qorsim
