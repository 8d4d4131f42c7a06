// Findings in JSON documents.
#ifndef QORCTL_FORMAT_HEALTHJSON_H
#define QORCTL_FORMAT_HEALTHJSON_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "format/JsonDocument.h"
#include "health/Advice.h"

namespace qorctl {

// An array: "severity", "rule", "object", "physical_drive" of a physical drive, "message", and
// "sentence", which says what to do as well.
CJson FindingsJson(const std::vector<CHealthFinding>& findings);

// For the record of an object in the document: "status", the worst severity of the object and its
// parts, and "findings" without what names the object.
CJson ObjectHealthJson(const CProblemMarks& marks, const std::vector<std::string>& objects);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_HEALTHJSON_H
