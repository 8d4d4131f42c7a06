#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "comlib/CIniCache.h"
#include "comlib/Configuration.h"
#include "comlib/ErrorText.h"
#include "plugin/ComLib.h"
#include "util/Kernel.h"

std::string CFileUtility::GetInstallPath(int /*kind*/) {
    std::string path =
        comlib::CIniCache::Find("Install", "INSTALLPATH_CIM", comlib::CONFIGURATION_FILE)
            .value_or(comlib::DEFAULT_INSTALL_PATH);
    struct stat status = {};
    if (!path.starts_with('/') || !util::GetStatus(path.c_str(), status) ||
        !S_ISDIR(status.st_mode)) {
        return "";
    }
    path.erase(path.find_last_not_of('/') + 1);
    return path;
}

bool CFileUtility::IsFileExist(std::string path) {
    struct stat status = {};
    return util::GetStatus(path.c_str(), status);
}

int DeleteFileA(const char* path) {
    if (unlink(path) != 0) {
        comlib::TraceFailure("delete", path);
        return 0;
    }
    return 1;
}

namespace {

// Why files in the existing `path` could be another user's work; null if they could not. Files of
// others in a directory with the sticky bit stay theirs.
const char* DoubtAbout(const char* path) {
    struct stat status = {};
    if (!util::GetLinkStatus(path, status)) {
        return nullptr;
    }
    if (!S_ISDIR(status.st_mode)) {
        return S_ISLNK(status.st_mode) ? "it is a symbolic link" : "it is no directory";
    }
    if (status.st_uid != geteuid() && status.st_uid != 0) {
        return "it belongs to another user";
    }
    const bool isOpen = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    return isOpen && (status.st_mode & S_ISVTX) == 0 ? "other users may write in it" : nullptr;
}

void TraceDoubt(const char* path) {
    const char* doubt = DoubtAbout(path);
    if (doubt != nullptr) {
        CTraceUtility::WriteDebug(comlib::MODULE_NAME, CTraceUtility::TRACE_DBG_FAILURE,
                                  "directory \"%s\" is not safe: %s", path, doubt);
    }
}

}  // namespace

int _mkdir(const char* path) {
    constexpr mode_t OWNER_ONLY = 0700;  // result files are read back as trusted input
    const int result = mkdir(path, OWNER_ONLY);
    if (result != 0) {
        const int reason = errno;
        if (reason == EEXIST) {
            TraceDoubt(path);
        } else {
            comlib::TraceFailure("create directory", path);
        }
        errno = reason;
    }
    return result;
}
