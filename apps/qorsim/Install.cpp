// "qorsim install": a simulated server on disk, for a container or a chroot.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "Commands.h"
#include "Folder.h"
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

// Removes what was made in the working directory, and that directory if it was made, too.
void ClearTarget(const std::string& directory, bool made) {
    std::error_code ignored;
    for (const char* entry : {"opt", "etc"}) {
        fs::remove_all(entry, ignored);
    }
    if (made) {
        fs::remove(directory, ignored);
    }
}

// Everything is laid out from within the folder, so that its name may lead elsewhere meanwhile.
int Install(const CInstallOptions& options) {
    std::string error;
    const std::optional<CServerSource> source = LoadServer(options.host, error);
    if (!source) {
        return ReportFailure(error);
    }
    std::error_code failure;
    const fs::path directory = fs::absolute(options.directory, failure);
    const bool made = !fs::exists(directory, failure);
    const std::optional<CNewFolder> folder = CNewFolder::Make(options.directory, error);
    if (!folder || !folder->Enter(error)) {
        return ReportFailure(error);
    }
    if (!LayOutServer(*source, options.startAt, ".", error)) {
        ClearTarget(directory, made);
        return ReportFailure(options.directory + ": " + error);
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
        ->required()
        ->type_name("");
    install
        ->add_option("--host", options->host,
                     "The server: the name of a shipped host, or the path of a host profile")
        ->type_name("HOST")
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
