// "qorsim install": a simulated server on disk, for a container or a chroot.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "Commands.h"
#include "Files.h"
#include "Layout.h"
#include "Options.h"

namespace fs = std::filesystem;

namespace qorsim {
namespace {

struct CInstallOptions {
    std::string directory;
    std::string host;
    long startAt = 0;
};

// Makes the directory unless it is there. Everything that is later found in it is thus this
// program's own.
bool PrepareTarget(const std::string& directory, bool& made, std::string& error) {
    std::error_code failure;
    made = fs::create_directory(directory, failure);
    if (failure) {
        error = fmt::format("cannot create {}: {}", directory, failure.message());
        return false;
    }
    const bool empty = fs::is_empty(directory, failure);
    if (failure) {
        error = fmt::format("cannot read {}: {}", directory, failure.message());
        return false;
    }
    if (!empty) {
        error =
            fmt::format("{} is not empty; name a directory that is, or is to be made", directory);
    }
    return empty;
}

void ClearTarget(const std::string& directory, bool made) {
    std::error_code ignored;
    for (const char* entry : {"opt", "etc"}) {
        fs::remove_all(fs::path(directory) / entry, ignored);
    }
    if (made) {
        fs::remove(directory, ignored);
    }
}

int Install(const CInstallOptions& options) {
    std::string error;
    const std::optional<CServerSource> source = LoadServer(options.host, error);
    bool made = false;
    if (!source || !PrepareTarget(options.directory, made, error)) {
        return ReportFailure(error);
    }
    if (!LayOutServer(*source, options.startAt, options.directory, error)) {
        ClearTarget(options.directory, made);
        return ReportFailure(error);
    }
    return 0;
}

}  // namespace

void AddInstallCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CInstallOptions>();
    CLI::App* install = app.add_subcommand(
        "install", "Lay a simulated server out on disk, for a container or a chroot");
    install
        ->add_option("dir", options->directory,
                     "An empty directory, or one to be made; becomes the root of the server")
        ->required();
    install
        ->add_option("--host", options->host,
                     "The server: the name of a shipped host, or the path of a host profile")
        ->required();
    AddStartAtOption(*install, options->startAt);
    install->callback([options, &status] { status = Install(*options); });
    install->footer(
        "Makes DIR/opt/tarmica and DIR/etc/opt/tarmica, or nothing when it fails. The server's\n"
        "time begins with the installation.\n"
        "\n"
        "Example:\n"
        "  qorsim install ./root --host degraded");
}

}  // namespace qorsim
