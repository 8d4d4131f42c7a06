// What is wrong with a command line, in words that a person can act upon. The library that parses
// it says it in its own, whose versions differ.
#ifndef QOR_WRONGLINE_H
#define QOR_WRONGLINE_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qorapps {

struct CWrongLine {
    std::string problem;  // which word, why, and what is right there; a line without its end
    std::string hint;     // where more is told; another one
};

// `words` are those behind the program's name that `program` refused with `error`.
CWrongLine ExplainWrongLine(const CLI::App& program, const CLI::ParseError& error,
                            const std::vector<std::string>& words);

// "there is no command "storge"; did you mean "storage"?"
std::string NoSuchCommand(const CLI::App& program, const std::string& word);

}  // namespace qorapps

#endif  // QOR_WRONGLINE_H
