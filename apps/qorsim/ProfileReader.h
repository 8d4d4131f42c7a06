// Reading of a JSON document whose every mistake is to be reported with its place.
#ifndef QORSIM_PROFILEREADER_H
#define QORSIM_PROFILEREADER_H

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

namespace qorsim {

// What a text must match as a whole, and how a message calls that.
struct CTextForm {
    std::regex expression;
    const char* name;
};

// A value of the document and the JSON pointer of its place. The operations read what is there; the
// first mistake of the document is kept in the text that all its places share, and reading goes on
// with empty values, so that a reader checks once, at its end.
class CProfileReader {
public:
    // `problem` and `value` must outlive the reader and those made from it.
    CProfileReader(const nlohmann::json& value, std::string pointer, std::string& problem)
        : m_Value(&value), m_Pointer(std::move(pointer)), m_Problem(&problem) {}

    const nlohmann::json& Value() const { return *m_Value; }

    // Says what is wrong with this value, unless a mistake is known already.
    void Reject(const std::string& reason) const;

    // Demands an object with no other keys than these.
    void DemandKeys(std::initializer_list<const char*> keys) const;
    bool Has(const std::string& key) const;
    // A member; a missing one is a mistake and reads as null.
    CProfileReader Member(const std::string& key) const;
    // The names of an object's members, sorted.
    std::vector<std::string> Names() const;

    std::vector<CProfileReader> Elements() const;
    // The elements of a member that may be missing: none then.
    std::vector<CProfileReader> ElementsOf(const std::string& key) const;

    // A text of at most 1000 bytes without control characters: it becomes part of a line.
    std::string Text() const;
    std::string TextOf(const std::string& key, const std::string& absent) const;
    std::string TextLike(const CTextForm& form) const;
    std::string OneOf(std::initializer_list<const char*> texts) const;
    long Number(long least, long most) const;
    long NumberOf(const std::string& key, long least, long most, long absent) const;

private:
    const nlohmann::json* m_Value;
    std::string m_Pointer;
    std::string* m_Problem;
};

}  // namespace qorsim

#endif  // QORSIM_PROFILEREADER_H
