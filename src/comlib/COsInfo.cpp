#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "base/ServerPaths.h"
#include "comlib/ErrorText.h"
#include "comlib/PciDevices.h"
#include "plugin/ComLib.h"
#include "util/UniqueFd.h"

namespace {

using comlib::TraceFailure;
using util::CUniqueFd;

bool Fail(const char* action, const std::string& path) {
    TraceFailure(action, path.c_str());
    return false;
}

bool MakeDirectories(const std::string& path) {
    for (size_t end = path.find('/', 1); true; end = path.find('/', end + 1)) {
        const std::string level = path.substr(0, end);
        if (mkdir(level.c_str(), 0700) != 0 && errno != EEXIST) {
            return Fail("create directory", level);
        }
        if (end == std::string::npos) {
            return true;
        }
    }
}

// A file under a name of its own that takes its place under `target` as a whole, or vanishes.
class CReplacement {
public:
    // The file gets mode 0600: the list is read by the server that made it.
    explicit CReplacement(const std::string& target)
        : m_Target(target),
          m_Path(target + ".XXXXXX"),
          m_Fd(mkostemp(m_Path.data(), O_CLOEXEC)),
          m_Exists(m_Fd.IsOpen()) {}
    CReplacement(const CReplacement&) = delete;  // one file has one owner
    CReplacement& operator=(const CReplacement&) = delete;
    ~CReplacement() {
        if (m_Exists) {
            unlink(m_Path.c_str());
        }
    }

    // Writes the whole content and puts it into place; a failure is traced.
    bool Write(std::string_view text) {
        if (!m_Exists) {
            return Fail("create", m_Path);
        }
        // Flushed before it takes the name: the list is made once, an empty one left by a power
        // failure would stay for good.
        if (!WriteAll(text) || fsync(m_Fd.Get()) != 0) {
            return Fail("write", m_Path);
        }
        if (rename(m_Path.c_str(), m_Target.c_str()) != 0) {
            return Fail("replace", m_Target);
        }
        m_Exists = false;
        return true;
    }

private:
    bool WriteAll(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = write(m_Fd.Get(), text.data(), text.size());
            if (count < 0 && errno != EINTR) {
                return false;
            }
            text.remove_prefix(static_cast<size_t>(std::max<ssize_t>(count, 0)));
        }
        return true;
    }

    std::string m_Target;
    std::string m_Path;
    CUniqueFd m_Fd;
    bool m_Exists;
};

}  // namespace

COsInfo::COsInfo() = default;

COsInfo::~COsInfo() = default;

bool COsInfo::makeDeviceInfo() {
    const std::optional<std::string> list = comlib::ReadPciDevices();
    return list && MakeDirectories(DEVICE_LIST_DIRECTORY) &&
           CReplacement(DEVICE_LIST_PATH).Write(*list);
}
