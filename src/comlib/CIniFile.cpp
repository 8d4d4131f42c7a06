#include "comlib/CIniFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include <exception>
#include <string_view>

#include "util/FileIo.h"
#include "util/Kernel.h"
#include "util/UniqueFd.h"

// Bytes pass through unchanged: no character set, no wide characters. Debian's header leaves the
// code out unless it is asked for; its shared library would bring ICU along.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

namespace comlib {
namespace {

// A file system's clock may stand still for as long as a timer tick (10 ms at 100 Hz). A file that
// changed less than this before it was read may change once more and keep its stamp.
constexpr long long CLOCK_RESOLUTION_NS = 20'000'000;

long long Nanoseconds(const timespec& time) {
    return static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

std::optional<CFileStamp> StampOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return CFileStamp{status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
                      Nanoseconds(status.st_ctim)};
}

// A clock that was set back must not switch the cache off: a change in the future counts as long
// ago.
bool IsLongAgo(long long changedNs) {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const long long ageNs = Nanoseconds(now) - changedNs;
    return ageNs < 0 || ageNs > CLOCK_RESOLUTION_NS;
}

// SimpleIni's converter, which does not convert. It is told the buffer that the parser will own
// once it is through; when memory runs out before, the parser forgets the buffer, and it is freed
// here.
class CTextKeeper : public SI_ConvertA<char> {
public:
    explicit CTextKeeper(bool isUtf8) : SI_ConvertA<char>(isUtf8) {}
    CTextKeeper(const CTextKeeper&) = delete;  // one owner of the buffer
    CTextKeeper& operator=(const CTextKeeper&) = delete;
    // Out of line: g++ 12 otherwise takes what the parser frees without an exception for freed
    // twice.
    __attribute__((noinline)) ~CTextKeeper() {
        if (std::uncaught_exceptions() > m_Exceptions) {
            // The analyzer takes an exception for possible behind the parser's last step.
            delete[] m_Text;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
        }
    }

    bool ConvertFromStore(const char* input, size_t inputSize, char* text, size_t size) {
        m_Text = text;
        return SI_ConvertA<char>::ConvertFromStore(input, inputSize, text, size);
    }

private:
    const int m_Exceptions = std::uncaught_exceptions();
    char* m_Text = nullptr;
};

std::string_view WithoutQuotes(std::string_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

struct CIniFile::CParsed {
    CSimpleIniTempl<char, SI_NoCase<char>, CTextKeeper> m_Ini;
};

std::optional<CFileStamp> CFileStamp::Of(const char* path) {
    struct stat status = {};
    return util::GetStatus(path, status) ? StampOf(status) : std::nullopt;
}

CIniFile::CIniFile(const char* path) : m_Path(path), m_Parsed(std::make_unique<CParsed>()) {}

CIniFile::~CIniFile() = default;

std::unique_ptr<CIniFile> CIniFile::Load(const char* path) {
    // Not blocking: opening a named pipe must not wait for its writer.
    const util::CUniqueFd fd(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status = {};
    if (!fd.IsOpen() || !util::GetStatus(fd.Get(), status)) {
        return nullptr;
    }
    const std::optional<CFileStamp> stamp = StampOf(status);
    if (!stamp) {
        return nullptr;
    }
    std::unique_ptr<CIniFile> file(new CIniFile(path));
    file->m_Stamp = *stamp;
    file->m_Settled = IsLongAgo(stamp->m_ChangedNs);
    std::string text;
    if (!util::ReadAll(fd.Get(), text.max_size(), text) ||
        file->m_Parsed->m_Ini.LoadData(text) != SI_OK) {
        return nullptr;
    }
    return file;
}

std::optional<std::string> CIniFile::Find(const char* section, const char* key) const {
    const char* value = m_Parsed->m_Ini.GetValue(section, key);
    if (value == nullptr) {
        return std::nullopt;
    }
    return std::string(WithoutQuotes(value));
}

bool CIniFile::IsCurrent(const std::string& path, const CFileStamp& stamp) const {
    return m_Settled && m_Path == path && m_Stamp == stamp;
}

}  // namespace comlib
