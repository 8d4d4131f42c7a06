#include "HelpText.h"

#include <charconv>
#include <vector>

namespace qorapps {
namespace {

constexpr size_t DESCRIPTION_COLUMN = 30;

bool TakesAnyNumber(const CLI::Option* option) {
    return option->get_expected_max() >= CLI::detail::expected_max_vector_size;
}

std::vector<const CLI::Option*> Positionals(const CLI::App* app) {
    return app->get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> Options(const CLI::App* app) {
    return app->get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

// Two columns; a name that is too long for the first has a line of its own.
std::string Line(const std::string& name, const std::string& description) {
    std::string line = "  " + name;
    line += line.size() < DESCRIPTION_COLUMN ? std::string(DESCRIPTION_COLUMN - line.size(), ' ')
                                             : "\n" + std::string(DESCRIPTION_COLUMN, ' ');
    return line + description + "\n";
}

std::string LineOf(const CLI::Option* option) {
    const bool isPositional = option->get_positional();
    std::string name = option->get_name(isPositional, !isPositional);
    if (option->get_type_size() != 0) {
        const std::string type = option->get_type_name();
        name += type.empty() ? "" : " " + type;
        name += TakesAnyNumber(option) ? " ..." : "";
        name += option->get_required() ? " REQUIRED" : "";
    }
    return Line(name, option->get_description());
}

std::string Section(const char* title, const std::vector<const CLI::Option*>& options) {
    std::string text;
    for (const CLI::Option* option : options) {
        text += LineOf(option);
    }
    return text.empty() ? "" : "\n" + std::string(title) + ":\n" + text;
}

std::vector<const CLI::App*> Subcommands(const CLI::App* app) {
    return app->get_subcommands([](const CLI::App* /*any*/) { return true; });
}

std::string Usage(const CLI::App* app, const std::string& name) {
    std::string text = "Usage: " + name + (Options(app).empty() ? "" : " [OPTIONS]");
    for (const CLI::Option* option : Positionals(app)) {
        const std::string word = option->get_name(true) + (TakesAnyNumber(option) ? "..." : "");
        text += option->get_required() ? " " + word : " [" + word + "]";
    }
    return text + (Subcommands(app).empty() ? "\n" : " SUBCOMMAND\n");
}

std::string SubcommandSection(const CLI::App* app) {
    std::string text;
    for (const CLI::App* command : Subcommands(app)) {
        text += Line(command->get_name(), command->get_description());
    }
    return text.empty() ? "" : "\nSubcommands:\n" + text;
}

}  // namespace

std::string CHelpText::make_help(const CLI::App* app, std::string name,
                                 CLI::AppFormatMode /*mode*/) const {
    const std::string footer = app->get_footer();
    return app->get_description() + "\n" + Usage(app, name) +
           Section("Positionals", Positionals(app)) + Section("Options", Options(app)) +
           SubcommandSection(app) + "\n" + footer + (footer.empty() ? "" : "\n");
}

CLI::Validator NumberFromTo(long long least, long long most) {
    const std::string limits = std::to_string(least) + " to " + std::to_string(most);
    const auto check = [=](std::string& text) {
        const char* const end = text.data() + text.size();
        long long number = 0;
        const auto result = std::from_chars(text.data(), end, number);
        const bool isFit =
            result.ec == std::errc() && result.ptr == end && number >= least && number <= most;
        if (!isFit) {
            return "must be a number from " + limits + ", is " + text;
        }
        text = std::to_string(number);
        return std::string();
    };
    return CLI::Validator(check,
                          "INT in [" + std::to_string(least) + " - " + std::to_string(most) + "]");
}

}  // namespace qorapps
