// Changes of JSON documents.
#ifndef QORSIM_JSONPATCH_H
#define QORSIM_JSONPATCH_H

#include <nlohmann/json.hpp>
#include <string>

#include "ProfileReader.h"

namespace qorsim {

// What the JSON library says is wrong, without its own name and number in brackets.
std::string MessageOf(const nlohmann::json::exception& failure);

// Carries out JSON patches (RFC 6902) that somebody else may have written: a few operations that
// copy would fill any memory, and some that nest would use up the stack. The bounds hold for all
// patches of one object together.
class CPatcher {
public:
    // Carries out the patch that stands at `place`. The first operation that cannot be carried out
    // is rejected at its own place; the document is then changed in part.
    void Apply(const CProfileReader& place, nlohmann::json& document);

private:
    std::string ExcessOf(const nlohmann::json& operation, const nlohmann::json& document);

    size_t m_Operations = 0;
    size_t m_Copied = 0;
};

}  // namespace qorsim

#endif  // QORSIM_JSONPATCH_H
