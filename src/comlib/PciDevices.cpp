#include "comlib/PciDevices.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string_view>
#include <vector>

#include "comlib/ErrorText.h"
#include "util/UniqueFd.h"

namespace comlib {
namespace {

constexpr const char* PCI_DEVICES = "/sys/bus/pci/devices";

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
    const util::CUniqueFd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
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

}  // namespace

std::optional<std::string> ReadPciDevices() {
    std::vector<std::string> names;
    std::string list;
    const auto append = [&list](const std::string& name) { return AppendDevice(name, list); };
    if (!ListDevices(names) || !std::all_of(names.begin(), names.end(), append)) {
        return std::nullopt;
    }
    return list;
}

}  // namespace comlib
