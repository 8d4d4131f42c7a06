#include "xml/XmlElement.h"

#include <utility>

namespace {

void AppendNamedTag(std::string& out, std::string_view name, unsigned int type) {
    switch (type) {
        case CXmlElement::TAG_OPEN:
            out.append("<").append(name).append(">");
            break;
        case CXmlElement::TAG_CLOSE:
            out.append("</").append(name).append(">");
            break;
        case CXmlElement::TAG_EMPTY:
            out.append("<").append(name).append("/>");
            break;
        default:
            out.append(name);
            break;
    }
}

}  // namespace

CXmlElement::CXmlElement(std::string name, std::string value)
    : m_Name(std::move(name)), m_Value(std::move(value)) {}

std::string CXmlElement::CreateTag(unsigned int type) const {
    std::string tag;
    AppendTag(tag, type);
    return tag;
}

std::string CXmlElement::CreateElement() const {
    std::string element;
    AppendElement(element, m_Name, m_Value);
    return element;
}

void CXmlElement::AppendTag(std::string& out, unsigned int type) const {
    AppendNamedTag(out, m_Name, type);
}

void CXmlElement::AppendElement(std::string& out, std::string_view name, std::string_view value) {
    if (value.empty()) {
        AppendNamedTag(out, name, TAG_EMPTY);
        return;
    }
    AppendNamedTag(out, name, TAG_OPEN);
    out.append(value);
    AppendNamedTag(out, name, TAG_CLOSE);
}
