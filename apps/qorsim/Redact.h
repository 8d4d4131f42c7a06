// Taking out of reports what identifies a single device.
#ifndef QORSIM_REDACT_H
#define QORSIM_REDACT_H

#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>

namespace qorsim {

// Replaces serial numbers, WWNs and SAS addresses by others of the same length and look. First all
// texts are learned, then each is redacted. The same identifier is replaced by the same text
// everywhere, without regard to the case of its letters, and never by itself. As long as there are
// enough of that length, two identifiers are not replaced by one, and none by another original. A
// different redactor chooses different replacements.
//
// An identifier is known by the key of its line, as in "Serial Number : ...". Elsewhere a known one
// is replaced too when it has at least 6 characters; a shorter one could be anything there.
class CRedactor {
public:
    CRedactor();

    void Learn(const std::string& text);
    // The text must have been learned if it has identifiers of its own.
    std::string Redact(const std::string& text);

private:
    const std::string& ReplacementOf(const std::string& original);
    std::string Draw(const std::string& original);
    std::string RedactAnywhere(const std::string& text, size_t leastLength);

    std::mt19937 m_Random;
    std::set<std::string, std::less<>> m_Originals;  // in lower case, like the replacements
    std::set<size_t> m_Lengths;                      // of the originals
    std::map<std::string, std::string> m_Replacements;
    std::set<std::string> m_Used;
};

}  // namespace qorsim

#endif  // QORSIM_REDACT_H
