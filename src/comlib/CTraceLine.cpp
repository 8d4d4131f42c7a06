#include "comlib/CTraceLine.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/uio.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <numeric>

#include "comlib/ForkLock.h"
#include "util/Kernel.h"
#include "util/Printable.h"
#include "util/UniqueFd.h"

namespace comlib {
namespace {

struct CLevelInfo {
    int m_Level;
    const char* m_Name;
    int m_Priority;
};

constexpr CLevelInfo OTHER_LEVEL = {0, "OTHER", LOG_DEBUG};

constexpr std::array<CLevelInfo, 5> LEVELS = {{
    {CTraceUtility::TRACE_DBG_RESULT, "RESULT", LOG_NOTICE},
    {CTraceUtility::TRACE_DBG_FAILURE, "FAILURE", LOG_ERR},
    {CTraceUtility::TRACE_DBG_FLOW, "FLOW", LOG_DEBUG},
    {CTraceUtility::TRACE_DBG_DETAIL, "DETAIL", LOG_DEBUG},
    {CTraceUtility::TRACE_DBG_SKIP, "SKIP", LOG_INFO},
}};

const CLevelInfo& InfoOf(int level) {
    const auto* const found =
        std::find_if(LEVELS.begin(), LEVELS.end(),
                     [level](const CLevelInfo& info) { return info.m_Level == level; });
    return found != LEVELS.end() ? *found : OTHER_LEVEL;
}

bool IsBetween(char c, int first, int last) {
    const int byte = static_cast<unsigned char>(c);
    return first <= byte && byte <= last;
}

bool IsControl(char c) {
    return IsBetween(c, 0, 0x1f) || c == 0x7f || IsBetween(c, 0x80, 0x9f);
}

// The first character of `text` in UTF-8; its first byte if that begins none.
std::string_view FirstCharacter(std::string_view text) {
    size_t size = 1;
    if (IsBetween(text[0], 0xc2, 0xdf)) {
        size = 2;
    } else if (IsBetween(text[0], 0xe0, 0xef)) {
        size = 3;
    } else if (IsBetween(text[0], 0xf0, 0xf4)) {
        size = 4;
    }
    const std::string_view character = text.substr(0, size);
    const bool isWhole =
        character.size() == size && std::all_of(character.begin() + 1, character.end(),
                                                [](char c) { return IsBetween(c, 0x80, 0xbf); });
    return isWhole ? character : text.substr(0, 1);
}

// The number of a character of two bytes or more.
std::uint32_t CodeOf(std::string_view character) {
    std::uint32_t code = static_cast<unsigned char>(character[0]) & (0x7FU >> character.size());
    for (const char c : character.substr(1)) {
        code = (code << 6U) | (static_cast<unsigned char>(c) & 0x3FU);
    }
    return code;
}

// What must not reach a terminal: controls, and what hides others.
bool NeedsEscapes(std::string_view character) {
    return character.size() == 1 ? IsControl(character[0]) : !util::IsPrintable(CodeOf(character));
}

// Writes the visible form of one byte: "\n", "\r", "\t" or "\x1b".
char* PutEscape(char* out, char c) {
    constexpr std::string_view HEX = "0123456789abcdef";
    *out++ = '\\';
    switch (c) {
        case '\n':
            *out++ = 'n';
            return out;
        case '\r':
            *out++ = 'r';
            return out;
        case '\t':
            *out++ = 't';
            return out;
        default:
            *out++ = 'x';
            *out++ = HEX[static_cast<unsigned char>(c) / 16];
            *out++ = HEX[static_cast<unsigned char>(c) % 16];
            return out;
    }
}

char* PutEscapes(char* out, std::string_view character) {
    return std::accumulate(character.begin(), character.end(), out, PutEscape);
}

constexpr size_t LONGEST_ESCAPE = 4;

bool IsPlain(char c) {
    return IsBetween(c, 0x20, 0x7e);
}

size_t VisibleSizeLimit(std::string_view text) {
    const auto plain = std::count_if(text.begin(), text.end(), IsPlain);
    return text.size() * LONGEST_ESCAPE - static_cast<size_t>(plain) * (LONGEST_ESCAPE - 1);
}

char* PutVisible(char* out, std::string_view text) {
    while (!text.empty()) {
        if (IsPlain(text.front())) {
            *out++ = text.front();
            text.remove_prefix(1);
            continue;
        }
        const std::string_view character = FirstCharacter(text);
        out = NeedsEscapes(character) ? PutEscapes(out, character)
                                      : std::copy(character.begin(), character.end(), out);
        text.remove_prefix(character.size());
    }
    return out;
}

constexpr size_t TIME_ROOM = 64;  // "2026-11-20T10:06:11.123Z", and numbers of any size

// gmtime_r() would lock and set up the C library's time zone, which belongs to the host.
void PutTime(char* out, size_t size) {
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(now - day);
    std::snprintf(out, size, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()),
                  static_cast<int>(time.subseconds().count()));
}

// Keeps the signals of a failing write away from the host: SIGPIPE when the reader of a pipe is
// gone, SIGXFSZ when the file has reached the process's limit. Both come to the writing thread.
//
// On Linux, sigprocmask() too is about the calling thread only; pthread_sigmask() is another
// function in the C libraries before glibc 2.32.
class CWriteSignals {
public:
    CWriteSignals() {
        sigemptyset(&m_Signals);
        sigaddset(&m_Signals, SIGPIPE);
        sigaddset(&m_Signals, SIGXFSZ);
        sigpending(&m_PendingBefore);
        sigprocmask(SIG_BLOCK, &m_Signals, &m_MaskBefore);
    }
    CWriteSignals(const CWriteSignals&) = delete;  // stands for the state of one thread
    CWriteSignals& operator=(const CWriteSignals&) = delete;
    ~CWriteSignals() { sigprocmask(SIG_SETMASK, &m_MaskBefore, nullptr); }

    // To be called after a write that failed with `error`.
    void Discard(int error) const {
        Discard(error == EPIPE, SIGPIPE);
        Discard(error == EFBIG, SIGXFSZ);
    }

private:
    void Discard(bool raised, int number) const {
        if (!raised || sigismember(&m_PendingBefore, number) == 1) {
            return;
        }
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, number);
        constexpr timespec AT_ONCE = {0, 0};
        while (sigtimedwait(&one, nullptr, &AT_ONCE) < 0 && errno == EINTR) {
        }
    }

    sigset_t m_Signals;
    sigset_t m_PendingBefore;
    sigset_t m_MaskBefore;
};

// One write a line: the lines of several processes never mix in a file opened for appending.
void WriteOnce(int fd, std::string_view line) {
    const CWriteSignals signals;
    ssize_t written = 0;
    do {
        written = write(fd, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    if (written < 0) {
        signals.Discard(errno);
    }
}

// Around syslog(), whose own lock would stay taken in the child of a host that forks meanwhile.
constinit std::mutex s_SyslogMutex;

__attribute__((constructor)) void PrepareTraceForForks() {
    KeepFreeInForks<s_SyslogMutex>();
}

// Whether nobody else could have prepared the open file: a regular one with no second name, a pipe
// or a character device, root's or the host's user's.
bool IsOwn(int fd) {
    struct stat status = {};
    if (!util::GetStatus(fd, status) || (status.st_uid != 0 && status.st_uid != geteuid())) {
        return false;
    }
    return S_ISREG(status.st_mode) ? status.st_nlink <= 1
                                   : S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode);
}

}  // namespace

CTextRoom::~CTextRoom() {
    std::free(m_Large);
}

char* CTextRoom::Reserve(size_t size) {
    std::free(m_Large);
    m_Large = nullptr;
    if (size <= m_Small.size()) {
        return m_Small.data();
    }
    m_Large = static_cast<char*>(std::malloc(size));
    return m_Large;
}

void CTraceLine::Format(const char* format, va_list arguments) {
    const int callerErrno = errno;
    va_list again;
    va_copy(again, arguments);
    char* text = m_Room.Reserve(CTextRoom::SMALL);
    int length = std::vsnprintf(text, CTextRoom::SMALL, format, arguments);
    if (length >= static_cast<int>(CTextRoom::SMALL)) {
        const size_t size = static_cast<size_t>(length) + 1;
        text = m_Room.Reserve(size);
        errno = callerErrno;
        length = text != nullptr ? std::vsnprintf(text, size, format, again) : -1;
    }
    va_end(again);
    m_Message = length >= 0 ? std::string_view(text, static_cast<size_t>(length)) : format;
}

void CTraceLine::WriteToFile(const char* path) const {
    // Opened for every line: a file that was rotated away is left at once, a directory that appears
    // later is used, and no descriptor outlives the call. Not blocking: a named pipe without a
    // reader drops the line. No link is followed: in a directory like /tmp it could be anybody's.
    constexpr int FLAGS =
        O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;
    constexpr mode_t MODE = 0640;
    const util::CUniqueFd fd(open(path, FLAGS, MODE));
    if (fd.IsOpen() && IsOwn(fd.Get())) {
        WriteToDescriptor(fd.Get());
    }
}

void CTraceLine::WriteToDescriptor(int fd) const {
    std::array<char, TIME_ROOM> time;
    PutTime(time.data(), time.size());
    std::array<char, 256> head;
    std::snprintf(head.data(), head.size(), "%s %d/%d %.64s %s ", time.data(), getpid(),
                  util::ThreadId(), m_Module, InfoOf(m_Level).m_Name);
    const std::string_view headText = head.data();
    CTextRoom room;
    char* const line = room.Reserve(VisibleSizeLimit(headText) + VisibleSizeLimit(m_Message) + 1);
    if (line == nullptr) {
        return;
    }
    char* end = PutVisible(PutVisible(line, headText), m_Message);
    *end++ = '\n';
    WriteOnce(fd, {line, static_cast<size_t>(end - line)});
}

void CTraceLine::WriteToSyslog() const {
    CTextRoom room;
    char* const text = room.Reserve(VisibleSizeLimit(m_Message) + 1);
    if (text == nullptr) {
        return;
    }
    *PutVisible(text, m_Message) = '\0';
    const std::lock_guard<std::mutex> lock(s_SyslogMutex);
    // No openlog() and no facility: identity, facility and options stay the host's.
    syslog(InfoOf(m_Level).m_Priority, "%s: %s", m_Module, text);
}

}  // namespace comlib
