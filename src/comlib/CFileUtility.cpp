#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "comlib/CIniCache.h"
#include "comlib/Configuration.h"
#include "comlib/ErrorText.h"
#include "plugin/ComLib.h"

std::string CFileUtility::GetInstallPath(int /*kind*/) {
    std::string path =
        comlib::CIniCache::Find("Install", "INSTALLPATH_CIM", comlib::CONFIGURATION_FILE)
            .value_or(comlib::DEFAULT_INSTALL_PATH);
    struct stat status = {};
    if (!path.starts_with('/') || stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return "";
    }
    path.erase(path.find_last_not_of('/') + 1);
    return path;
}

bool CFileUtility::IsFileExist(std::string path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0;
}

int DeleteFileA(const char* path) {
    if (unlink(path) != 0) {
        comlib::TraceFailure("delete", path);
        return 0;
    }
    return 1;
}

int _mkdir(const char* path) {
    constexpr mode_t OWNER_ONLY = 0700;  // result files are read back as trusted input
    const int result = mkdir(path, OWNER_ONLY);
    if (result != 0 && errno != EEXIST) {
        comlib::TraceFailure("create directory", path);
    }
    return result;
}
