#include "comlib/CTraceSettings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "comlib/CIniCache.h"
#include "plugin/ComLib.h"

namespace comlib {
namespace {

constexpr std::array<std::pair<std::string_view, ETraceSink>, 4> SINKS = {{
    {"SYSLOG", ETraceSink::SYSLOG},
    {"FILE", ETraceSink::FILE},
    {"STDERR", ETraceSink::STDERR},
    {"NONE", ETraceSink::NONE},
}};

std::optional<ETraceSink> ParseSink(std::string_view text) {
    const std::string name = CStringUtil::StringToUpperCase(std::string(text));
    const auto* const found = std::find_if(SINKS.begin(), SINKS.end(),
                                           [&](const auto& sink) { return sink.first == name; });
    return found != SINKS.end() ? std::optional(found->second) : std::nullopt;
}

// The whole of `text` has to be a number: half a mask would show an arbitrary choice of lines.
std::optional<unsigned> ParseLevels(std::string_view text) {
    unsigned levels = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), levels);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || levels > INT_MAX) {
        return std::nullopt;
    }
    return levels;
}

bool IsUsablePath(std::string_view path) {
    return path.starts_with('/') && path.size() < PATH_MAX;
}

// Cuts a number behind the last colon off `text`, colon included; nothing if there is none.
std::optional<unsigned> TakeLevels(std::string_view& text) {
    const size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<unsigned> levels = ParseLevels(text.substr(colon + 1));
    if (levels) {
        text = text.substr(0, colon);
    }
    return levels;
}

}  // namespace

void CTraceSettings::ApplyIni(const std::optional<std::string>& sink,
                              const std::optional<std::string>& levels,
                              const std::optional<std::string>& file) {
    if (sink) {
        m_Sink = ParseSink(*sink).value_or(ETraceSink::SYSLOG);
    }
    if (levels) {
        m_Levels = ParseLevels(*levels).value_or(DEFAULT_LEVELS);
    }
    if (file) {
        m_File = IsUsablePath(*file) ? *file : DEFAULT_TRACE_FILE;
    }
}

void CTraceSettings::ApplyEnvironment(std::string_view text) {
    const std::optional<unsigned> levels = TakeLevels(text);
    const size_t colon = text.find(':');
    const std::optional<ETraceSink> sink = ParseSink(text.substr(0, colon));
    if (!sink) {
        return;
    }
    if (colon != std::string_view::npos) {
        const std::string_view path = text.substr(colon + 1);
        if (*sink != ETraceSink::FILE || !IsUsablePath(path)) {
            return;
        }
        m_File = path;
    }
    m_Sink = *sink;
    m_Levels = levels.value_or(m_Levels);
}

CTraceSettings CTraceSettings::Read() {
    const auto find = [](const char* key) {
        return CIniCache::Find("Trace", key, CONFIGURATION_FILE);
    };
    CTraceSettings settings;
    settings.ApplyIni(find("Sink"), find("Levels"), find("File"));
    if (const char* text = secure_getenv("QOR_TRACE"); text != nullptr) {
        settings.ApplyEnvironment(text);
    }
    return settings;
}

}  // namespace comlib
