#include "WrongLine.h"

#include <algorithm>
#include <map>
#include <optional>

#include "HelpText.h"
#include "Quoted.h"

namespace qorapps {
namespace {

constexpr const char* ONLY_WORDS = "--";  // behind it nothing is an option

bool IsOption(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && word != ONLY_WORDS;
}

// "--name" of "--name=value"
std::string NameOf(const std::string& word) {
    return word.substr(0, word.find('='));
}

std::vector<std::string> NamesOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : OptionsOf(&app)) {
        for (const std::string& name : option->get_snames()) {
            names.push_back("-" + name);
        }
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::vector<std::string> CommandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(&program)) {
        names.push_back(command->get_name());
    }
    return names;
}

const CLI::App* CommandNamed(const CLI::App& program, const std::string& name) {
    for (const CLI::App* command : CommandsOf(&program)) {
        if (command->get_name() == name) {
            return command;
        }
    }
    return nullptr;
}

const CLI::Option* OptionNamed(const CLI::App& app, const std::string& word) {
    const std::string name = NameOf(word);
    for (const CLI::Option* option : OptionsOf(&app)) {
        if (name.starts_with("--") ? option->check_lname(name.substr(2))
                                   : option->check_sname(name.substr(1))) {
            return option;
        }
    }
    return nullptr;
}

// The commands that have the option.
std::vector<std::string> CommandsWith(const CLI::App& program, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(&program)) {
        if (OptionNamed(*command, word) != nullptr) {
            names.push_back(command->get_name());
        }
    }
    return names;
}

std::string NearOrAll(const std::string& word, const std::vector<std::string>& names,
                      const std::string& all) {
    const std::string near = NearestName(word, names);
    return near.empty() ? "; " + all + " " + Listed(names) : "; did you mean " + Quoted(near) + "?";
}

// Reads a command line as the library does, up to the first mistake.
class CMistakeFinder {
public:
    CMistakeFinder(const CLI::App& program, const std::vector<std::string>& words)
        : m_Program(program), m_Words(words) {}

    // Empty when nothing is found to be wrong.
    std::string Find();
    // None while it was not read.
    const CLI::App* Command() const { return m_Command; }

private:
    bool IsAtEnd() const { return m_Next == m_Words.size(); }
    std::string ReadToCommand();
    std::string ReadWord();
    std::string ReadOption(const CLI::Option& option, const std::string& word);
    std::string TakeWord(const std::string& word);
    std::string OptionInFront(const std::string& word) const;
    std::string UnknownOption(const std::string& word) const;
    std::string Missing() const;

    const CLI::App& m_Program;
    const std::vector<std::string>& m_Words;
    const CLI::App* m_Command = nullptr;
    size_t m_Next = 0;
    bool m_OnlyWords = false;
    int m_Positionals = 0;
    std::map<const CLI::Option*, int> m_Given;
};

std::string CMistakeFinder::Find() {
    std::string mistake = ReadToCommand();
    while (mistake.empty() && !IsAtEnd()) {
        mistake = ReadWord();
    }
    return mistake.empty() ? Missing() : mistake;
}

std::string CMistakeFinder::ReadToCommand() {
    for (; !IsAtEnd(); ++m_Next) {
        const std::string& word = m_Words[m_Next];
        if (!IsOption(word)) {
            ++m_Next;
            m_Command = CommandNamed(m_Program, word);
            return m_Command == nullptr ? NoSuchCommand(m_Program, word) : "";
        }
        if (OptionNamed(m_Program, word) == nullptr) {
            return OptionInFront(word);
        }
    }
    return "a command is missing; the commands are " + Listed(CommandNames(m_Program));
}

std::string CMistakeFinder::OptionInFront(const std::string& word) const {
    const std::vector<std::string> having = CommandsWith(m_Program, word);
    if (having.empty()) {
        std::vector<std::string> names = NamesOf(m_Program);
        const std::vector<std::string> own = names;
        for (const CLI::App* command : CommandsOf(&m_Program)) {
            const std::vector<std::string> more = NamesOf(*command);
            names.insert(names.end(), more.begin(), more.end());
        }
        const std::string near = NearestName(NameOf(word), names);
        return "there is no option " + Quoted(NameOf(word)) +
               NearOrAll(near.empty() ? NameOf(word) : near,
                         near.empty() ? own : std::vector<std::string>{near}, "in front are");
    }
    const auto meant = std::find_if(having.begin(), having.end(), [this](const auto& name) {
        return std::find(m_Words.begin(), m_Words.end(), name) != m_Words.end();
    });
    return Quoted(NameOf(word)) +
           " stands behind the command that it is for: " + m_Program.get_name() + " " +
           (meant == having.end() ? having.front() : *meant) + " " + NameOf(word);
}

std::string CMistakeFinder::ReadWord() {
    const std::string& word = m_Words[m_Next++];
    if (m_OnlyWords || !IsOption(word)) {
        const bool isMark = !m_OnlyWords && word == ONLY_WORDS;
        m_OnlyWords = m_OnlyWords || isMark;
        return isMark ? "" : TakeWord(word);
    }
    const CLI::Option* option = OptionNamed(*m_Command, word);
    return option == nullptr ? UnknownOption(word) : ReadOption(*option, word);
}

std::string CMistakeFinder::TakeWord(const std::string& word) {
    int room = 0;
    for (const CLI::Option* positional : PositionalsOf(m_Command)) {
        room += TakesAnyNumber(positional) ? static_cast<int>(m_Words.size())
                                           : positional->get_items_expected_max();
    }
    return ++m_Positionals <= room
               ? ""
               : Quoted(word) + " is one word too many for: " + UsageOf(m_Command, m_Program);
}

std::string CMistakeFinder::ReadOption(const CLI::Option& option, const std::string& word) {
    const std::string name = option.get_name();
    const size_t assignment = word.find('=');
    const int most = option.get_items_expected_max();
    if (++m_Given[&option] > 1 && most == 1) {
        return name + " is given twice";
    }
    if (most == 0) {
        return assignment == std::string::npos ? "" : name + " takes no value";
    }
    const int least = option.get_items_expected_min();
    const int room = TakesAnyNumber(&option) && !option.get_allow_extra_args() ? least : most;
    int taken = assignment == std::string::npos || assignment + 1 == word.size() ? 0 : 1;
    for (; taken < least; ++taken, ++m_Next) {
        if (IsAtEnd()) {
            return name + ": its value is missing: " + option.get_type_name();
        }
    }
    for (; taken < room && !IsAtEnd() && !m_Words[m_Next].starts_with('-'); ++taken) {
        ++m_Next;
    }
    return "";
}

std::string CMistakeFinder::UnknownOption(const std::string& word) const {
    const std::string name = NameOf(word);
    const std::string none = m_Command->get_name() + " has no option " + Quoted(name);
    if (m_Positionals > 0 && TakesCommand(m_Command)) {
        return none + "; what belongs to the command stands behind --";
    }
    const std::vector<std::string> having = CommandsWith(m_Program, word);
    return none + (having.empty()
                       ? NearOrAll(name, NamesOf(*m_Command), "its options are")
                       : ", but " + Listed(having) + (having.size() > 1 ? " have" : " has"));
}

std::string CMistakeFinder::Missing() const {
    const auto missing = [](const std::string& name, const CLI::Option* option) {
        return name + " is missing: " + option->get_description();
    };
    for (const CLI::Option* option : OptionsOf(m_Command)) {
        if (option->get_required() && m_Given.count(option) == 0) {
            return missing(option->get_name() + " " + option->get_type_name(), option);
        }
    }
    int words = m_Positionals;
    for (const CLI::Option* positional : PositionalsOf(m_Command)) {
        words -= positional->get_items_expected_min();
        if (positional->get_required() && words < 0) {
            return missing(positional->get_name(), positional);
        }
    }
    return "";
}

}  // namespace

std::string NoSuchCommand(const CLI::App& program, const std::string& word) {
    return "there is no command " + Quoted(word) +
           NearOrAll(word, CommandNames(program), "the commands are");
}

CWrongLine ExplainWrongLine(const CLI::App& program, const CLI::ParseError& error,
                            const std::vector<std::string>& words) {
    CMistakeFinder finder(program, words);
    const std::string found = finder.Find();
    // A value's mistake is told by the check of the value, which is this project's own.
    const bool isValue = error.get_name() == "ValidationError";
    const CLI::App* command = finder.Command();
    const bool isOnCommand = command != nullptr && command->get_name() != HELP_COMMAND;
    return {isValue || found.empty() ? error.what() : found,
            "\"" + program.get_name() + (isOnCommand ? " " + command->get_name() : "") +
                " --help\" tells what is right."};
}

}  // namespace qorapps
