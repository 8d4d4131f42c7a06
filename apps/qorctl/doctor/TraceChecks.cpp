// The trace: settings that are understood, and a sink that takes lines.
#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "comlib/CTraceSettings.h"
#include "doctor/Checks.h"
#include "host/PathTrouble.h"
#include "plugin/ComLib.h"

namespace qorctl::doctor {
namespace {

using comlib::CTraceSettings;
using comlib::ETraceSink;

constexpr const char* SYSLOG_SOCKET = "/dev/log";
constexpr const char* DESCRIBED = "docs/trace.md describes the settings";

std::string TraceValue(const char* key) {
    std::array<char, 4097> text = {};
    GetPrivateProfileStringA("Trace", key, "", text.data(), text.size(),
                             comlib::CONFIGURATION_FILE);
    return text.data();
}

bool IsSinkUnderstood(const std::string& value) {
    CTraceSettings settings;
    settings.ApplyIni(value, std::nullopt, std::nullopt);
    return settings.m_Sink != ETraceSink::SYSLOG ||
           CStringUtil::StringToUpperCase(value) == "SYSLOG";
}

bool AreLevelsUnderstood(const std::string& value) {
    CTraceSettings settings;
    settings.ApplyIni(std::nullopt, value, std::nullopt);
    return settings.m_Levels != CTraceSettings::DEFAULT_LEVELS ||
           value.substr(std::min(value.find_first_not_of('0'), value.size())) ==
               std::to_string(CTraceSettings::DEFAULT_LEVELS);
}

bool IsFileUnderstood(const std::string& value) {
    CTraceSettings settings;
    settings.ApplyIni(std::nullopt, std::nullopt, value);
    return settings.m_File == value;
}

bool IsEnvironmentUnderstood(const std::string& text) {
    // A text that is understood sets the sink at least, so that two different ones become equal.
    CTraceSettings one;
    CTraceSettings other;
    one.m_Sink = ETraceSink::SYSLOG;
    other.m_Sink = ETraceSink::NONE;
    one.ApplyEnvironment(text);
    other.ApplyEnvironment(text);
    return one.m_Sink == other.m_Sink;
}

struct CSetting {
    const char* key;
    bool (*isUnderstood)(const std::string& value);
};

constexpr std::array<CSetting, 3> SETTINGS = {{
    {"Sink", IsSinkUnderstood},
    {"Levels", AreLevelsUnderstood},
    {"File", IsFileUnderstood},
}};

std::vector<std::string> IgnoredSettings() {
    std::vector<std::string> ignored;
    for (const CSetting& setting : SETTINGS) {
        const std::string value = TraceValue(setting.key);
        if (!value.empty() && !setting.isUnderstood(value)) {
            ignored.push_back(fmt::format("{}={}", setting.key, value));
        }
    }
    const char* variable = secure_getenv("QOR_TRACE");
    if (variable != nullptr && !IsEnvironmentUnderstood(variable)) {
        ignored.push_back(fmt::format("QOR_TRACE={}", variable));
    }
    return ignored;
}

bool CanAppend(const std::string& path) {
    const int fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd >= 0) {
        close(fd);
        return true;
    }
    return errno == ENOENT &&
           access(std::filesystem::path(path).parent_path().c_str(), W_OK | X_OK) == 0;
}

CFinding JudgeFile(const std::string& path) {
    if (CanAppend(path)) {
        return Ok("file " + path);
    }
    return Fail(fmt::format("the file {} cannot be written: {}", path, std::strerror(errno)),
                "make its directory, or set another file in section [Trace] of "
                "/etc/opt/tarmica/qor/comlib.ini");
}

bool CanConnect(const std::string& path, int type) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const bool connected =
        fd >= 0 && connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    if (fd >= 0) {
        close(fd);
    }
    return connected;
}

}  // namespace

CFinding ExamineTraceSettings(CServerFacts&) {
    const CPathTrouble trouble = ExaminePath(comlib::CONFIGURATION_FILE, EPathKind::FILE, R_OK);
    if (!trouble.remedy.empty()) {
        return Fail(trouble.reason, trouble.remedy);
    }
    const std::vector<std::string> ignored = IgnoredSettings();
    if (!ignored.empty()) {
        return Warn(fmt::format("not understood, ignored: {}", fmt::join(ignored, ", ")),
                    DESCRIBED);
    }
    return Ok(fmt::format("levels {}", CTraceSettings::Read().m_Levels));
}

CFinding JudgeSyslog(const std::string& path) {
    return CanConnect(path, SOCK_DGRAM) || CanConnect(path, SOCK_STREAM)
               ? Ok("syslog")
               : Warn(fmt::format("syslog, but nobody listens at {}: lines are lost", path),
                      "start a syslog service, or set another sink");
}

CFinding ExamineTraceSink(CServerFacts&) {
    const CTraceSettings settings = CTraceSettings::Read();
    if (settings.m_Sink == ETraceSink::NONE || settings.m_Levels == 0) {
        return Warn("the trace is switched off: nobody will know why a request failed", DESCRIBED);
    }
    switch (settings.m_Sink) {
        case ETraceSink::FILE:
            return JudgeFile(settings.m_File);
        case ETraceSink::SYSLOG:
            return JudgeSyslog(SYSLOG_SOCKET);
        case ETraceSink::STDERR:
        case ETraceSink::NONE:
            break;
    }
    return Ok("standard error");
}

}  // namespace qorctl::doctor
