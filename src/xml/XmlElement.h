// One element of an XML document: a name and its character content.
//
// The documents of this library are one line: no declaration, no attributes, no white space
// between tags. Nothing is escaped: a "<", "&" or '"' in a value is copied as it stands, because
// the readers of these documents expect the bytes that the tool printed.
//
// Thread rule: a plain value; one thread at a time.
#ifndef QOR_XML_XMLELEMENT_H
#define QOR_XML_XMLELEMENT_H

#include <string>
#include <string_view>

class CXmlElement {
public:
    // The forms of a tag. CreateTag() takes the number, since any other one has a meaning too.
    static constexpr unsigned int TAG_OPEN = 0;   // "<name>"
    static constexpr unsigned int TAG_CLOSE = 1;  // "</name>"
    static constexpr unsigned int TAG_EMPTY = 2;  // "<name/>"

    // Neither text is checked. Throws std::bad_alloc only, as every operation here.
    CXmlElement(std::string name, std::string value);

    // The tag of this form, or the bare name when `type` is none of the three. The value plays no
    // part in it.
    std::string CreateTag(unsigned int type) const;

    // "<name>value</name>", or "<name/>" when the value is empty.
    std::string CreateElement() const;

    // What CreateTag() returns, appended to `out`.
    void AppendTag(std::string& out, unsigned int type) const;

    // What CreateElement() of an element (`name`, `value`) returns, appended to `out` without
    // copying the two texts into an element first.
    static void AppendElement(std::string& out, std::string_view name, std::string_view value);

private:
    std::string m_Name;
    std::string m_Value;
};

#endif  // QOR_XML_XMLELEMENT_H
