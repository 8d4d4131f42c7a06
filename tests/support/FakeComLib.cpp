#include "FakeComLib.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "plugin/ComLib.h"

namespace qortest {

std::ostream& operator<<(std::ostream& out, const CTraceLine& line) {
    return out << line.level << ": " << line.text;
}

std::vector<std::string> CFakeComLib::Traces(int level) const {
    std::vector<std::string> texts;
    for (const CTraceLine& line : traces) {
        if (line.level == level) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

std::vector<CTraceLine> CFakeComLib::TracesWithoutFlow() const {
    std::vector<CTraceLine> lines;
    std::copy_if(
        traces.begin(), traces.end(), std::back_inserter(lines),
        [](const CTraceLine& line) { return line.level != CTraceUtility::TRACE_DBG_FLOW; });
    return lines;
}

CFakeComLib& FakeComLib() {
    static CFakeComLib instance;
    return instance;
}

void ResetFakeComLib() {
    FakeComLib() = CFakeComLib();
}

namespace {

// The value of a key in a plain "key=value" ini file, exact names, or null.
const std::string* FindIniValue(const char* section, const char* key, const char* path) {
    static std::string value;
    std::ifstream file(path);
    bool inSection = false;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.front() == '[') {
            inSection = line == "[" + std::string(section) + "]";
        } else if (inSection &&
                   line.compare(0, std::strlen(key) + 1, std::string(key) + "=") == 0) {
            value = line.substr(std::strlen(key) + 1);
            return &value;
        }
    }
    return nullptr;
}

}  // namespace
}  // namespace qortest

using qortest::FakeComLib;

void CTraceUtility::WriteDebug(const char* module, TRACE_DBG_LEVEL level, const char* format, ...) {
    const int savedErrno = errno;
    va_list arguments;
    va_start(arguments, format);
    std::array<char, 65536> text = {};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    const bool ours = std::strcmp(module, "Lib_MngSrv") == 0;
    FakeComLib().traces.push_back(
        {level, ours ? text.data() : "wrong module name: " + std::string(module)});
    errno = savedErrno;
}

std::string CFileUtility::GetInstallPath(int kind) {
    return kind == 0 ? FakeComLib().installPath : "wrong kind";
}

bool CFileUtility::IsFileExist(std::string path) {
    return access(path.c_str(), F_OK) == 0;
}

std::string CStringUtil::NumberToTString(long number) {
    return std::to_string(number);
}

long CStringUtil::TStringToNumber(std::string text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

std::string CStringUtil::StringToUpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

std::list<std::string> CStringUtil::SplitByDot(const std::string& text) {
    std::list<std::string> parts(1);
    for (const char c : text) {
        if (c == '.') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

void CStringUtil::strReplace(std::string& text, const std::string& what, const std::string& with) {
    for (size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

COsInfo::COsInfo() = default;
COsInfo::~COsInfo() = default;

bool COsInfo::makeDeviceInfo() {
    ++FakeComLib().deviceListsMade;
    if (!FakeComLib().deviceListToMake.empty()) {
        std::ofstream("/opt/tarmica/qor/kam/work/devices.tmp") << FakeComLib().deviceListToMake;
    }
    return true;
}

int DeleteFileA(const char* path) {
    constexpr int SUCCESS = 2;  // any number but 0
    return unlink(path) == 0 ? SUCCESS : 0;
}

int _mkdir(const char* path) {
    return mkdir(path, 0700);
}

int GetPrivateProfileIntA(const char* section, const char* key, int defaultValue,
                          const char* path) {
    const std::string* value = qortest::FindIniValue(section, key, path);
    return value != nullptr ? std::atoi(value->c_str()) : defaultValue;
}

unsigned long GetPrivateProfileStringA(const char* section, const char* key,
                                       const char* defaultText, char* buffer, unsigned long size,
                                       const char* path) {
    const std::string* value = qortest::FindIniValue(section, key, path);
    const int length =
        std::snprintf(buffer, size, "%s", value != nullptr ? value->c_str() : defaultText);
    return std::min(static_cast<unsigned long>(length), size - 1);
}

unsigned long GetCurrentThreadId() {
    return static_cast<unsigned long>(syscall(SYS_gettid));
}

unsigned long GetLastError() {
    return static_cast<unsigned long>(errno);
}

void Sleep(unsigned long milliseconds) {
    FakeComLib().sleeps.push_back(milliseconds);
    if (FakeComLib().onSleep) {
        FakeComLib().onSleep();
    }
}
