// The services that the plug-in takes from its host through libqor_ComLib.so: trace, files,
// ini files, threads, strings and the PCI device list.
//
// A host may bring its own libqor_ComLib. It then has to offer exactly the operations declared
// here; the plug-in calls no others. The names that look like another system's API
// (GetPrivateProfileStringA, DeleteFileA, Sleep ...) are ordinary functions with C linkage.
//
// Owner: no operation keeps a pointer that it was given, and none hands out memory to be freed.
// Null: no pointer argument may be null unless its operation says so.
// Errors: no operation throws, except std::bad_alloc where a std::string or std::list is made.
// Threads: the operations of our library may be called from any thread at any time. The plug-in
// itself needs less: it makes one call at a time.
//
// Compiles alone as C++11 and later.
#ifndef QOR_PLUGIN_COMLIB_H
#define QOR_PLUGIN_COMLIB_H

#include <list>
#include <string>

#define QOR_COMLIB_API __attribute__((visibility("default")))

class QOR_COMLIB_API CTraceUtility {
public:
    // One bit a level, so that a mask can select any of them.
    enum TRACE_DBG_LEVEL {
        TRACE_DBG_RESULT = 1,   // notable facts and results
        TRACE_DBG_FAILURE = 2,  // failures
        TRACE_DBG_FLOW = 4,     // "[START]" and "[END]" of operations
        TRACE_DBG_DETAIL = 8,   // not used by the plug-in
        TRACE_DBG_SKIP = 16     // something was left out, and why
    };

    // Writes one line for `module` at `level`, formatted as printf does. Never fails towards the
    // caller: a line that cannot be written is dropped. A level that is switched off costs no
    // formatting. errno is left as it was.
    static void WriteDebug(const char* module, TRACE_DBG_LEVEL level, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
};

class QOR_COMLIB_API CFileUtility {
public:
    // The provider's install directory, absolute and without a trailing "/"; empty when it is not
    // known. `kind` is always 0.
    static std::string GetInstallPath(int kind);

    // True if something exists at `path` (symbolic links followed).
    static bool IsFileExist(std::string path);
};

class QOR_COMLIB_API CStringUtil {
public:
    // Decimal text, with a sign only for a negative number and without leading zeros.
    static std::string NumberToTString(long number);

    // The leading decimal number of `text`: white space, a sign and digits; what follows is
    // ignored. No number gives 0; one beyond the range of long gives LONG_MAX or LONG_MIN.
    static long TStringToNumber(std::string text);

    // a to z become A to Z; every other byte stays, whatever the locale.
    static std::string StringToUpperCase(std::string text);

    // The texts between the dots, in order, empty ones included: "4.5" gives "4" and "5", "4."
    // gives "4" and "", a text without a dot gives itself, an empty text gives one empty text.
    static std::list<std::string> SplitByDot(const std::string& text);

    // Replaces every occurrence of `what` in `text`, from left to right, by `with`; what was put in
    // is not looked at again. An empty `what` changes nothing.
    static void strReplace(std::string& text, const std::string& what, const std::string& with);
};

class QOR_COMLIB_API COsInfo {
public:
    COsInfo();
    ~COsInfo();
    COsInfo(const COsInfo&) = delete;  // keeps nothing worth copying
    COsInfo& operator=(const COsInfo&) = delete;

    // Writes the list of the host's PCI devices to "/opt/tarmica/qor/kam/work/devices.tmp", whole
    // or not at all: one word a device and line, "BB:DD.F_VVVV:DDDD_SSSS_RR" in lower-case
    // hexadecimal (bus, device, function, vendor ID at position 8, device ID at position 13,
    // domain, revision). Returns false when the list could not be read or written.
    bool makeDeviceInfo();
};

extern "C" {

// Removes the file `path`. Non-zero on success, 0 on failure (errno tells why).
QOR_COMLIB_API int DeleteFileA(const char* path);

// Creates the one directory level `path` with mode 0700. 0 on success, -1 on failure (errno tells
// why); a directory that exists already is a failure that harms nothing. What exists and is a
// symbolic link, no directory, another user's or open to other users is traced as a failure.
QOR_COMLIB_API int _mkdir(const char* path);

// The integer at `key` of `section` in the ini file `path`, read as TStringToNumber reads and
// clamped to the range of int. `defaultValue` when the file, the section or the key is missing.
QOR_COMLIB_API int GetPrivateProfileIntA(const char* section, const char* key, int defaultValue,
                                         const char* path);

// Copies the text at `key` of `section` in the ini file `path`, or `defaultText` when the file, the
// section or the key is missing, into `buffer`, cut to size - 1 bytes and always zero-terminated.
// `size` 0 writes nothing. Returns the number of bytes copied, without the zero.
QOR_COMLIB_API unsigned long GetPrivateProfileStringA(const char* section, const char* key,
                                                      const char* defaultText, char* buffer,
                                                      unsigned long size, const char* path);

// The kernel's id of the calling thread.
QOR_COMLIB_API unsigned long GetCurrentThreadId();

// The error number (errno) of the calling thread's last failed system call.
QOR_COMLIB_API unsigned long GetLastError();

// Blocks the calling thread for at least `milliseconds`, signals notwithstanding.
QOR_COMLIB_API void Sleep(unsigned long milliseconds);

}  // extern "C"

#endif  // QOR_PLUGIN_COMLIB_H
