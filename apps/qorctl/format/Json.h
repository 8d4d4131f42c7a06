// The answer of a request as a JSON document, the form that docs/formats/qorctl-json.md and
// data/qorctl.schema.json describe.
#ifndef QORCTL_FORMAT_JSON_H
#define QORCTL_FORMAT_JSON_H

#include <string>

#include "health/Verdict.h"
#include "host/Answer.h"

namespace qorctl {

// The document of the sub-command `command`, with the verdict on the answer: UTF-8, indented, with
// a line feed at its end. Bytes of the plug-in that are not UTF-8 become U+FFFD. Cost: linear in
// the size of the answer.
std::string FormatJson(const CAnswer& answer, const CVerdict& verdict, const std::string& command);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_JSON_H
