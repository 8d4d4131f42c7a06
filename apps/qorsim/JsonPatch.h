// Changes of JSON documents.
#ifndef QORSIM_JSONPATCH_H
#define QORSIM_JSONPATCH_H

#include <nlohmann/json.hpp>
#include <string>

#include "ProfileReader.h"

namespace qorsim {

// What the JSON library says is wrong, without its own name and number in brackets.
std::string MessageOf(const nlohmann::json::exception& failure);

// Carries out the JSON patch (RFC 6902) that stands at `place`. The first operation that cannot be
// carried out is rejected at its own place; the document is then changed in part.
void ApplyPatch(const CProfileReader& place, nlohmann::json& document);

}  // namespace qorsim

#endif  // QORSIM_JSONPATCH_H
