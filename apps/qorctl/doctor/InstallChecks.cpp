// The provider's install directory.
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"

namespace qorctl::doctor {

CFinding ExamineInstallPath(CServerFacts& facts) {
    const std::string& path = facts.InstallPath();
    struct stat status = {};
    if (path.empty() || stat(path.c_str(), &status) != 0) {
        return Fail(
            "not known: INSTALLPATH_CIM, or its default /opt/tarmica/qor/provider, is not "
            "the absolute path of an existing directory",
            "make the directory, or set INSTALLPATH_CIM in section [Install] of "
            "/etc/opt/tarmica/qor/comlib.ini");
    }
    const std::string text = fmt::format("{}, mode {:04o}", path, status.st_mode & 07777U);
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return Warn(
            text + ": others may write into it",
            fmt::format("chmod go-w {}: the lists and result files below are trusted", path));
    }
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        return Warn(fmt::format("{}: belongs to user {}", text, status.st_uid),
                    fmt::format("chown root {}", path));
    }
    return Ok(text);
}

}  // namespace qorctl::doctor
