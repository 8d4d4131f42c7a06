// The text of --help. Completion, manual pages and scripts read it, so its form is the programs'
// own and not that of the library that parses command lines, whose versions differ.
#ifndef QOR_HELPTEXT_H
#define QOR_HELPTEXT_H

#include <CLI/CLI.hpp>
#include <string>

namespace qorapps {

// To be given to the program before its sub-commands are added: they take it over.
class CHelpText : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
};

// A whole number of an option's, with a message of our own. To be given to transform(): the library
// takes a number with a zero in front for an octal one, so that its text becomes one without.
CLI::Validator NumberFromTo(long long least, long long most);

}  // namespace qorapps

#endif  // QOR_HELPTEXT_H
