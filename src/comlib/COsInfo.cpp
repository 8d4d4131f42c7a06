#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

#include "base/ServerPaths.h"
#include "comlib/ErrorText.h"
#include "comlib/PciDevices.h"
#include "plugin/ComLib.h"
#include "util/ReplaceFile.h"

namespace {

using comlib::TraceFailure;

bool Fail(const char* action, const std::string& path) {
    TraceFailure(action, path.c_str());
    return false;
}

// The folder of the list is its owner's only. Those above it hold what others need, too.
constexpr mode_t LIST_FOLDER = 0700;
constexpr mode_t FOLDER_ABOVE = 0755;

bool MakeDirectories(const std::string& path) {
    for (size_t end = path.find('/', 1); true; end = path.find('/', end + 1)) {
        const std::string level = path.substr(0, end);
        const mode_t mode = end == std::string::npos ? LIST_FOLDER : FOLDER_ABOVE;
        if (mkdir(level.c_str(), mode) != 0 && errno != EEXIST) {
            return Fail("create directory", level);
        }
        if (end == std::string::npos) {
            return true;
        }
    }
}

// The file gets mode 0600: the list is read by the server that made it.
bool ReplaceList(std::string_view text) {
    util::CReplacement file(AT_FDCWD, std::string(DEVICE_LIST_PATH) + ".", S_IRUSR | S_IWUSR);
    if (!file.IsOpen()) {
        return Fail("create", file.Name());
    }
    if (!file.Write(text)) {
        return Fail("write", file.Name());
    }
    return file.TakePlace(DEVICE_LIST_PATH) || Fail("replace", DEVICE_LIST_PATH);
}

}  // namespace

COsInfo::COsInfo() = default;

COsInfo::~COsInfo() = default;

bool COsInfo::makeDeviceInfo() {
    const std::optional<std::string> list = comlib::ReadPciDevices();
    return list && MakeDirectories(DEVICE_LIST_DIRECTORY) && ReplaceList(*list);
}
