#include "HelpText.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "Quoted.h"
#include "WrongLine.h"

namespace qorapps {
namespace {

constexpr size_t DESCRIPTION_COLUMN = 30;

// How the descriptions of other programs' command lines end.
constexpr const char* BEHIND_MARK = "behind --";

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

std::string Usage(const CLI::App* app, const std::string& name) {
    std::string text = name + (OptionsOf(app).empty() ? "" : " [OPTIONS]");
    for (const CLI::Option* option : PositionalsOf(app)) {
        const std::string word = option->get_name(true) + (TakesAnyNumber(option) ? "..." : "");
        text += option->get_required() ? " " + word : " [" + word + "]";
    }
    return text + (CommandsOf(app).empty() ? "" : " SUBCOMMAND");
}

std::string SubcommandSection(const CLI::App* app) {
    std::string text;
    for (const CLI::App* command : CommandsOf(app)) {
        text += Line(command->get_name(), command->get_description());
    }
    return text.empty() ? "" : "\nSubcommands:\n" + text;
}

int WriteHelp(const CLI::App& program, const std::string& name) {
    const CLI::App* shown = &program;
    for (const CLI::App* command : CommandsOf(&program)) {
        shown = command->get_name() == name ? command : shown;
    }
    if (shown == &program && !name.empty()) {
        throw CLI::ValidationError(NoSuchCommand(program, name));
    }
    const std::string title = program.get_name() + (name.empty() ? "" : " " + name);
    const std::string text = CHelpText().make_help(shown, title, CLI::AppFormatMode::Normal);
    const bool isWritten = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

std::vector<const CLI::App*> CommandsOf(const CLI::App* app) {
    return app->get_subcommands([](const CLI::App* /*any*/) { return true; });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App* app) {
    return app->get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::vector<const CLI::Option*> PositionalsOf(const CLI::App* app) {
    return app->get_options([](const CLI::Option* option) { return option->get_positional(); });
}

bool TakesAnyNumber(const CLI::Option* option) {
    return option->get_expected_max() >= CLI::detail::expected_max_vector_size;
}

bool TakesCommand(const CLI::App* command) {
    const std::vector<const CLI::Option*> words = PositionalsOf(command);
    return !words.empty() && TakesAnyNumber(words.back()) &&
           words.back()->get_description().ends_with(BEHIND_MARK);
}

std::string UsageOf(const CLI::App* command, const CLI::App& program) {
    return Usage(command, program.get_name() + " " + command->get_name());
}

void AddHelpCommand(CLI::App& program, int& status) {
    const auto name = std::make_shared<std::string>();
    CLI::App* help = program.add_subcommand(HELP_COMMAND, "This text, or that of a command");
    help->add_option("COMMAND", *name, "One of the commands")->type_name("");
    help->footer("Example:\n  " + program.get_name() + " help " +
                 CommandsOf(&program).front()->get_name());
    help->callback([&program, name, &status] { status = WriteHelp(program, *name); });
}

std::string CHelpText::make_help(const CLI::App* app, std::string name,
                                 CLI::AppFormatMode /*mode*/) const {
    const std::string footer = app->get_footer();
    return app->get_description() + "\nUsage: " + Usage(app, name) + "\n" +
           Section("Positionals", PositionalsOf(app)) + Section("Options", OptionsOf(app)) +
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
            return "must be a number from " + limits + ", is " + Shown(text);
        }
        text = std::to_string(number);
        return std::string();
    };
    return CLI::Validator(check, "");
}

CLI::Validator OneOf(const std::vector<std::string>& words) {
    return CLI::Validator(
        [words](const std::string& text) {
            const bool isOne = std::find(words.begin(), words.end(), text) != words.end();
            return isOne ? "" : Quoted(text) + " is none of: " + Listed(words);
        },
        "");
}

std::string WordsText(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : "|") + word;
    }
    return text;
}

}  // namespace qorapps
