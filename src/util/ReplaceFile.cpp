#include "util/ReplaceFile.h"

#include <fcntl.h>
#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "util/FileIo.h"

namespace util {
namespace {

constexpr int NEW_FILE_FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
constexpr int MAX_NAMES = 100;  // tries for a name that is not taken
constexpr int DIGITS = 16;

// False, with errno set, where the kernel has no random numbers yet.
bool MakeRandomDigits(std::string& digits) {
    unsigned long long number = 0;
    if (getrandom(&number, sizeof(number), GRND_NONBLOCK) != static_cast<ssize_t>(sizeof(number))) {
        return false;
    }
    std::array<char, DIGITS + 1> text = {};
    std::snprintf(text.data(), text.size(), "%0*llx", DIGITS, number);
    digits = text.data();
    return true;
}

}  // namespace

CReplacement::CReplacement(int directory, const std::string& head, mode_t mode)
    : m_Directory(directory) {
    std::string digits;
    for (int i = 0; i < MAX_NAMES && (i == 0 || errno == EEXIST); ++i) {
        if (!MakeRandomDigits(digits)) {
            return;
        }
        m_Name = head + digits;
        m_Fd = CUniqueFd(openat(m_Directory, m_Name.c_str(), NEW_FILE_FLAGS, mode));
        if (m_Fd.IsOpen()) {
            m_Exists = true;
            return;
        }
    }
}

CReplacement::~CReplacement() {
    if (m_Exists) {
        const int error = errno;
        unlinkat(m_Directory, m_Name.c_str(), 0);
        errno = error;
    }
}

bool CReplacement::Append(std::string_view text) {
    return WriteAll(m_Fd.Get(), text);
}

bool CReplacement::Finish() {
    return fsync(m_Fd.Get()) == 0 && m_Fd.Close();
}

bool CReplacement::TakePlace(const std::string& name) {
    m_Exists = renameat(m_Directory, m_Name.c_str(), m_Directory, name.c_str()) != 0;
    return !m_Exists;
}

}  // namespace util
