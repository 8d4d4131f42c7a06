// `qorctl xml`: the plug-in's XML document of a request's items, byte for byte.
#ifndef QORCTL_COMMANDS_XMLCOMMAND_H
#define QORCTL_COMMANDS_XMLCOMMAND_H

#include <CLI/CLI.hpp>
#include <string>

#include "host/Answer.h"
#include "host/Request.h"

namespace qorctl {

// Adds the sub-command; see AddRaidCommand() for `status`. With nothing to report nothing is
// written to standard output.
void AddXmlCommand(CLI::App& app, int& status);

// The request, whose reply has the plug-in's document of the items, too.
CRequest WithXml(CRequest request, std::string component);

// Why an answer to such a request has no document; empty when it has one, or has no items.
std::string XmlProblem(const CAnswer& answer);

// What a result of the plug-in's XML operation other than 0 means, the number of the item that it
// is about included.
std::string ExplainXmlResult(unsigned int result);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_XMLCOMMAND_H
