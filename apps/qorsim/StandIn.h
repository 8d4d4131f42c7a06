// This program under the name of a server's tool: it prints the tool's report on the simulated
// host.
#ifndef QORSIM_STANDIN_H
#define QORSIM_STANDIN_H

#include <optional>
#include <string>
#include <vector>

#include "Host.h"

namespace qorsim {

// What a tool prints on its standard output and ends with.
struct CToolAnswer {
    std::string out;
    int status = 0;
};

// The tools, by the arguments behind their name.
CToolAnswer AnswerKrzcli(const CHost& host, const std::vector<std::string>& arguments);
CToolAnswer AnswerMegaCli(const CHost& host, const std::vector<std::string>& arguments);
CToolAnswer AnswerStorcli(const CHost& host, const std::vector<std::string>& arguments);

// The answer to a command line that begins with a tool's name; nothing when the host has no such
// tool.
std::optional<CToolAnswer> AnswerTool(const CHost& host,
                                      const std::vector<std::string>& commandLine);

// The answer to a command line that the tool does not know.
CToolAnswer RefuseToken(const std::string& token);

// Plays the tool that `arguments` begin with (a path or a name) and returns its exit status;
// nothing when that is none of the tools.
std::optional<int> PlayTool(const std::vector<std::string>& arguments);

}  // namespace qorsim

#endif  // QORSIM_STANDIN_H
