// `qorctl xml`: the plug-in's XML document of a request's items, byte for byte.
#ifndef QORCTL_COMMANDS_XMLCOMMAND_H
#define QORCTL_COMMANDS_XMLCOMMAND_H

#include <CLI/CLI.hpp>
#include <string>

#include "host/Request.h"

namespace qorctl {

// Adds the sub-command; see AddRaidCommand() for `status`. With nothing to report nothing is
// written to standard output.
void AddXmlCommand(CLI::App& app, int& status);

// The plug-in's document of the items, without a line feed, in `document`. Returns false and sets
// `problem` when the plug-in refuses the items.
bool SerializeXml(CMngSrv_QorLibIF& object, CItemList& items, const std::string& component,
                  std::string& document, std::string& problem);

// What a result of the plug-in's XML operation other than 0 means, the number of the item that it
// is about included.
std::string ExplainXmlResult(unsigned int result);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_XMLCOMMAND_H
