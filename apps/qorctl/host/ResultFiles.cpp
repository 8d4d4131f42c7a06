#include "host/ResultFiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include "base/ServerPaths.h"
#include "plugin/ComLib.h"
#include "util/UniqueFd.h"

namespace fs = std::filesystem;

namespace qorctl {
namespace {

constexpr const char* ERROR_HEAD = "Error - ";

constexpr size_t MAX_READ = 4096;      // bytes of what the tool printed
constexpr size_t MAX_COMPLAINT = 400;  // and of those that are no report

// Lines become one, without the blanks at both ends.
std::string OnOneLine(std::string_view text) {
    std::string line;
    for (const char byte : text) {
        const bool isBlank = byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
        if (!isBlank) {
            line += byte;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::string_view ErrorLine(std::string_view text) {
    while (!text.empty() && !text.starts_with(ERROR_HEAD)) {
        const size_t end = text.find('\n');
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return text.substr(0, text.find('\n'));
}

std::string Complaint(std::string_view printed) {
    const std::string_view error = ErrorLine(printed);
    if (!error.empty()) {
        return OnOneLine(error.substr(0, MAX_COMPLAINT));
    }
    return printed.size() > MAX_COMPLAINT ? "" : OnOneLine(printed);
}

}  // namespace

std::string ResultDirectoryIn(const std::string& installPath) {
    return fmt::format("{}/{}/{}", installPath, PROVIDER_TMP_DIRECTORY, RESULT_DIRECTORY_NAME);
}

// The plug-in puts the number of its thread into the names.
std::vector<std::string> ResultFilesOf(pid_t worker) {
    const std::string head = fmt::format("{:08x}_", worker);
    std::vector<std::string> paths;
    std::error_code error;
    fs::directory_iterator entries(ResultDirectoryIn(CFileUtility::GetInstallPath(0)), error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const std::string name = entries->path().filename();
        if (name.starts_with(head) && name.ends_with(RESULT_FILE_END)) {
            paths.push_back(entries->path());
        }
    }
    return paths;
}

std::string WhatTheToolComplainedOf() {
    for (const std::string& path : ResultFilesOf(getpid())) {
        const util::CUniqueFd file(
            open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
        std::array<char, MAX_READ> beginning = {};
        const ssize_t size =
            file.IsOpen() ? pread(file.Get(), beginning.data(), beginning.size(), 0) : 0;
        if (size > 0) {
            return Complaint({beginning.data(), static_cast<size_t>(size)});
        }
    }
    return "";
}

}  // namespace qorctl
