// `qorctl xml`: the plug-in's XML document of a request's items, byte for byte.
#ifndef QORCTL_COMMANDS_XMLCOMMAND_H
#define QORCTL_COMMANDS_XMLCOMMAND_H

#include <string>

#include "host/PluginRequest.h"

namespace qorctl {

// Asks the plug-in `request` and writes its document of the items, whose component element holds
// `component`, and a line feed to standard output. With nothing to report nothing is written
// there: the plug-in makes no document of an empty list. Exit status as RunRaidCommand(); 1 also
// when the plug-in refuses the items.
int RunXmlCommand(const std::string& pluginPath, const CItemRequest& request,
                  const std::string& component);

// The plug-in's document of the items, without a line feed, in `document`. Returns false and sets
// `problem` when the plug-in refuses the items.
bool SerializeXml(CMngSrv_QorLibIF& object, CItemList& items, const std::string& component,
                  std::string& document, std::string& problem);

// What a result of the plug-in's XML operation other than 0 means, the number of the item that it
// is about included.
std::string ExplainXmlResult(unsigned int result);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_XMLCOMMAND_H
