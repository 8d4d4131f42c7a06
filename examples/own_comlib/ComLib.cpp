// A host's own libqor_ComLib: the least that does. <qor/ComLib.h> says what each service has to do.
#include <qor/ComLib.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <limits>

namespace {

// Looks for "key=value" below "[section]", names letter for letter. False if there is none.
bool FindIniText(const char* section, const char* key, const char* path, std::string& text) {
    const std::string head = std::string("[") + section + "]";
    const std::string begin = std::string(key) + "=";
    std::ifstream file(path);
    bool isInSection = false;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] == '[') {
            isInSection = line.compare(0, head.size(), head) == 0;
        } else if (isInSection && line.compare(0, begin.size(), begin) == 0) {
            text = line.substr(begin.size());
            return true;
        }
    }
    return false;
}

}  // namespace

// With HOST_TRACE in the environment a line on standard error. The host's own trace would be called
// here; errno has to be what it was, and nothing may be thrown.
void CTraceUtility::WriteDebug(const char* module, TRACE_DBG_LEVEL, const char* format, ...) {
    const int error = errno;
    if (std::getenv("HOST_TRACE") != nullptr) {
        char text[512];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        std::fprintf(stderr, "host: %s: %s\n", module, text);
    }
    errno = error;
}

std::string CFileUtility::GetInstallPath(int) {
    return "/opt/tarmica/qor/provider";
}

bool CFileUtility::IsFileExist(std::string path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

std::string CStringUtil::NumberToTString(long number) {
    return std::to_string(number);
}

long CStringUtil::TStringToNumber(std::string text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

std::string CStringUtil::StringToUpperCase(std::string text) {
    for (char& letter : text) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return text;
}

std::list<std::string> CStringUtil::SplitByDot(const std::string& text) {
    std::list<std::string> parts(1);
    for (char letter : text) {
        if (letter == '.') {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

void CStringUtil::strReplace(std::string& text, const std::string& what, const std::string& with) {
    if (what.empty()) {
        return;
    }
    size_t place = 0;
    while ((place = text.find(what, place)) != std::string::npos) {
        text.replace(place, what.size(), with);
        place += with.size();
    }
}

COsInfo::COsInfo() {}

COsInfo::~COsInfo() {}

// This host writes the list of PCI devices when it starts. One that does not has to do it here.
bool COsInfo::makeDeviceInfo() {
    return false;
}

int DeleteFileA(const char* path) {
    return unlink(path) == 0 ? 1 : 0;
}

int _mkdir(const char* path) {
    return mkdir(path, S_IRWXU);
}

int GetPrivateProfileIntA(const char* section, const char* key, int defaultValue,
                          const char* path) {
    std::string text;
    if (!FindIniText(section, key, path, text)) {
        return defaultValue;
    }
    const long least = std::numeric_limits<int>::min();
    const long most = std::numeric_limits<int>::max();
    return static_cast<int>(std::max(least, std::min(most, CStringUtil::TStringToNumber(text))));
}

unsigned long GetPrivateProfileStringA(const char* section, const char* key,
                                       const char* defaultText, char* buffer, unsigned long size,
                                       const char* path) {
    if (size == 0) {
        return 0;
    }
    std::string text;
    if (!FindIniText(section, key, path, text)) {
        text = defaultText;
    }
    text.resize(std::min<size_t>(text.size(), size - 1));
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return text.size();
}

unsigned long GetCurrentThreadId() {
    return static_cast<unsigned long>(syscall(SYS_gettid));
}

unsigned long GetLastError() {
    return static_cast<unsigned long>(errno);
}

void Sleep(unsigned long milliseconds) {
    struct timespec left;
    left.tv_sec = static_cast<time_t>(milliseconds / 1000);
    left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}
