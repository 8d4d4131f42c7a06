// The files that the RAID tool's reports are in while a request runs.
#ifndef QORCTL_HOST_RESULTFILES_H
#define QORCTL_HOST_RESULTFILES_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace qorctl {

// The directory that they are in, below the provider's install directory.
std::string ResultDirectoryIn(const std::string& installPath);

// Those of the plug-in in that process.
std::vector<std::string> ResultFilesOf(pid_t worker);

// The error that the tool printed last for the plug-in in this process, or all that it printed
// where that is no report; one line, empty when there is none.
std::string WhatTheToolComplainedOf();

}  // namespace qorctl

#endif  // QORCTL_HOST_RESULTFILES_H
