#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "comlib/CUniqueFd.h"
#include "comlib/ErrorText.h"
#include "plugin/ComLib.h"

namespace {

using comlib::CUniqueFd;
using comlib::TraceFailure;

constexpr const char* PCI_DEVICES = "/sys/bus/pci/devices";
constexpr const char* LIST_DIRECTORY = "/opt/tarmica/qor/kam/work";
constexpr const char* LIST_FILE = "/opt/tarmica/qor/kam/work/devices.tmp";

bool Fail(const char* action, const std::string& path) {
    TraceFailure(action, path.c_str());
    return false;
}

// The names of the kernel's devices, "DDDD:BB:DD.F". A domain of more than four digits sorts behind
// the others.
bool ListDevices(std::vector<std::string>& names) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(PCI_DEVICES), closedir);
    if (directory == nullptr) {
        return Fail("read", PCI_DEVICES);
    }
    errno = 0;
    while (const dirent* entry = readdir(directory.get())) {
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    if (errno != 0) {
        return Fail("read", PCI_DEVICES);
    }
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    return true;
}

// Reads a file that holds "0x", `digits` hexadecimal digits and a line end; a failure is traced.
std::optional<std::string> ReadId(const std::string& path, size_t digits) {
    const CUniqueFd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 16> text = {};
    const ssize_t size = fd.IsOpen() ? read(fd.Get(), text.data(), text.size()) : -1;
    if (size < 0) {
        Fail("read", path);
        return std::nullopt;
    }
    const std::string_view content(text.data(), static_cast<size_t>(size));
    const std::string_view id = content.substr(0, content.find('\n'));
    if (id.size() != digits + 2 || !id.starts_with("0x") ||
        id.find_first_not_of("0123456789abcdef", 2) != std::string_view::npos) {
        errno = EINVAL;
        Fail("understand", path);
        return std::nullopt;
    }
    return std::string(id.substr(2));
}

// Appends "BB:DD.F_VVVV:DDDD_SSSS_RR" for the device "SSSS:BB:DD.F".
bool AppendDevice(const std::string& name, std::string& list) {
    constexpr size_t SLOT_SIZE = sizeof("BB:DD.F") - 1;
    const std::string directory = std::string(PCI_DEVICES) + "/" + name;
    const size_t colon = name.find(':');
    if (colon == std::string::npos || name.size() != colon + 1 + SLOT_SIZE) {
        errno = EINVAL;
        return Fail("understand the name of", directory);
    }
    const std::optional<std::string> vendor = ReadId(directory + "/vendor", 4);
    const std::optional<std::string> device = ReadId(directory + "/device", 4);
    const std::optional<std::string> revision = ReadId(directory + "/revision", 2);
    if (!vendor || !device || !revision) {
        return false;
    }
    list += name.substr(colon + 1) + "_" + *vendor + ":" + *device;
    list += "_" + name.substr(0, colon) + "_" + *revision + "\n";
    return true;
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
    std::vector<std::string> names;
    std::string list;
    const auto append = [&list](const std::string& name) { return AppendDevice(name, list); };
    return ListDevices(names) && std::all_of(names.begin(), names.end(), append) &&
           MakeDirectories(LIST_DIRECTORY) && CReplacement(LIST_FILE).Write(list);
}
