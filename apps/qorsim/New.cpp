// "qorsim new": a profile of a generated host.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <string>

#include "Commands.h"
#include "Files.h"
#include "Generator.h"
#include "HelpText.h"
#include "Quoted.h"
#include "VisibleText.h"

namespace qorsim {
namespace {

struct CNewOptions {
    CHostSize size;
    std::string output;
};

// In decimal, whatever zeros it begins with. Returns what is wrong.
std::string ReadSeed(std::string& text) {
    const char* const end = text.data() + text.size();
    std::uint64_t seed = 0;
    const auto result = std::from_chars(text.data(), end, seed);
    if (result.ec != std::errc() || result.ptr != end) {
        return "must be a number from 0 to 18446744073709551615, is " + qorapps::Shown(text);
    }
    text = std::to_string(seed);
    return "";
}

// Without one that was given, a number that is easily typed again.
std::uint64_t DrawSeed() {
    std::random_device device;
    return std::uniform_int_distribution<std::uint64_t>(1, 999999)(device);
}

int New(const CNewOptions& options) {
    if (options.size.controllers == 0 && options.size.drives != 0) {
        return ReportFailure("drives need a controller: give --controllers 1 or more");
    }
    const std::string text = GenerateProfile(options.size);
    if (options.output.empty()) {
        std::fputs(text.c_str(), stdout);
        return 0;
    }
    std::string error;
    return WriteFile(options.output, text, error) ? 0 : ReportFailure(error);
}

}  // namespace

void AddNewCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CNewOptions>();
    CLI::App* command = app.add_subcommand("new", "Generate a profile of a large host");
    command->add_option("--controllers", options->size.controllers, "RAID controllers")
        ->required()
        ->type_name("N")
        ->transform(qorapps::NumberFromTo(0, MAX_CONTROLLERS));
    command->add_option("--drives", options->size.drives, "Physical drives of all controllers")
        ->required()
        ->type_name("N")
        ->transform(qorapps::NumberFromTo(0, MAX_DRIVES));
    const CLI::Option* seed =
        command
            ->add_option(
                "--seed", options->size.seed,
                "A number; another one gives another host. Without it one is drawn, and told "
                "on standard error")
            ->type_name("S")
            ->transform(CLI::Validator(ReadSeed, ""));
    command->add_option("--output", options->output, "The file to write; without it, the output")
        ->type_name("FILE");
    command->callback([options, seed, &status] {
        if (seed->count() == 0) {
            options->size.seed = DrawSeed();
        }
        status = New(*options);
        if (seed->count() == 0 && status == 0) {
            Complain("qorsim", fmt::format("the seed is {0}: --seed {0} makes the same host again",
                                           options->size.seed));
        }
    });
    command->footer(
        "Same numbers, same profile, byte for byte. The drives are shared out among the\n"
        "controllers; most are in RAID groups, some are spares or in stock, a few have failed.\n"
        "\n"
        "Example:\n"
        "  qorsim new --controllers 8 --drives 960 --seed 1 --output big.json\n"
        "  qorsim run --host ./big.json -- qorctl raid");
}

}  // namespace qorsim
