// One trace line on its way from the caller's format to the sink.
//
// Layout for files and standard error, one line a message:
//
//   2026-11-20T10:06:11.123Z 4711/4712 Lib_MngSrv FAILURE Failed to delete file(/tmp/x).
//   time (UTC)               process/  module     level   message
//                            thread
//
// Thread rule: a line belongs to one thread. Memory: small texts live on the stack, large ones on
// the heap; without memory a line is dropped.
#ifndef QOR_COMLIB_CTRACELINE_H
#define QOR_COMLIB_CTRACELINE_H

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string_view>

#include "plugin/ComLib.h"

namespace comlib {

// Room for a text: 1 KiB on the stack, so that a host's thread with a small stack survives a trace,
// or the heap.
class CTextRoom {
public:
    CTextRoom() = default;
    CTextRoom(const CTextRoom&) = delete;  // its text points into itself
    CTextRoom& operator=(const CTextRoom&) = delete;
    ~CTextRoom();

    // Room for `size` bytes, what it held before is lost; null without memory. Never throws.
    char* Reserve(size_t size);

    static constexpr size_t SMALL = 1024;

private:
    std::array<char, SMALL> m_Small;
    char* m_Large = nullptr;
};

class CTraceLine {
public:
    // Keeps `module`, which stays the caller's; at most 64 bytes of it are shown in a file.
    CTraceLine(const char* module, CTraceUtility::TRACE_DBG_LEVEL level)
        : m_Module(module), m_Level(level) {}

    // Formats the message as printf does ("%m" included: errno must still be the caller's). A
    // format that printf refuses is shown as it is.
    __attribute__((format(printf, 2, 0))) void Format(const char* format, va_list arguments);

    // The formatted message, a zero behind it. Valid after Format().
    std::string_view Message() const { return m_Message; }

    // Write the line; at the end of a file, to a descriptor, or to syslog at the priority of the
    // level. Failures are ignored.
    void WriteToFile(const char* path) const;
    void WriteToDescriptor(int fd) const;
    void WriteToSyslog() const;

private:
    CTextRoom m_Room;
    std::string_view m_Message;
    const char* m_Module;
    CTraceUtility::TRACE_DBG_LEVEL m_Level;
};

}  // namespace comlib

#endif  // QOR_COMLIB_CTRACELINE_H
