// "qorsim validate": whether profiles are without a mistake.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "ProfileFile.h"
#include "VisibleText.h"

namespace qorsim {
namespace {

int Validate(const std::vector<std::string>& references) {
    int status = 0;
    for (const std::string& reference : references) {
        std::string error;
        if (LoadProfile(reference, error)) {
            std::printf("%s: valid\n", Visible(reference).c_str());
        } else {
            status = ReportFailure(error);
        }
    }
    return status;
}

}  // namespace

void AddValidateCommand(CLI::App& app, int& status) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* validate =
        app.add_subcommand("validate", "Check profiles, with what they extend and their events");
    validate
        ->add_option("file", *files,
                     "Profiles: paths that hold a / or end in .json, or names of shipped hosts")
        ->required()
        ->type_name("");
    validate->callback([files, &status] { status = Validate(*files); });
    validate->footer(
        "The first mistake of each profile is reported with its file, its place as a JSON\n"
        "pointer and the reason. Ends with 0 when all profiles are valid, else with 1.\n"
        "\n"
        "Example:\n"
        "  qorsim validate my-server.json ./others/*.json");
}

}  // namespace qorsim
