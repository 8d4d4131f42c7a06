// The text of --help, and the parts of a command line that it names. Completion, manual pages and
// scripts read it, so its form is the programs' own and not that of the library that parses command
// lines, whose versions differ.
#ifndef QOR_HELPTEXT_H
#define QOR_HELPTEXT_H

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qorapps {

// To be given to the program before its sub-commands are added: they take it over.
class CHelpText : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
};

inline constexpr const char* HELP_COMMAND = "help";

// Adds the sub-command "help": the text of --help, also that of a sub-command. The others must be
// there; `status` becomes that of writing it.
void AddHelpCommand(CLI::App& program, int& status);

std::vector<const CLI::App*> CommandsOf(const CLI::App* app);
std::vector<const CLI::Option*> OptionsOf(const CLI::App* app);
std::vector<const CLI::Option*> PositionalsOf(const CLI::App* app);
bool TakesAnyNumber(const CLI::Option* option);
// Whether a command line of another program ends that of `command`, behind "--".
bool TakesCommand(const CLI::App* command);
// "qorctl drive [OPTIONS] DRIVE"
std::string UsageOf(const CLI::App* command, const CLI::App& program);

// A whole number of an option's, with a message of our own. To be given to transform(): the library
// takes a number with a zero in front for an octal one, so that its text becomes one without.
CLI::Validator NumberFromTo(long long least, long long most);

// Refuses all but `words`, and names them.
CLI::Validator OneOf(const std::vector<std::string>& words);
// "tree|json", by which completion knows them
std::string WordsText(const std::vector<std::string>& words);

// An option whose value is one of `words`, in the order in which they are told.
template <typename VALUE>
void AddWordOption(CLI::App* command, const std::string& name, VALUE& value,
                   const std::string& description,
                   const std::vector<std::pair<std::string, VALUE>>& words) {
    std::vector<std::string> names;
    names.reserve(words.size());
    for (const auto& word : words) {
        names.push_back(word.first);
    }
    command
        ->add_option_function<std::string>(
            name,
            [&value, meanings = std::map<std::string, VALUE>(words.begin(), words.end())](
                const std::string& word) { value = meanings.at(word); },
            description)
        ->check(OneOf(names))
        ->type_name(WordsText(names));
}

}  // namespace qorapps

#endif  // QOR_HELPTEXT_H
