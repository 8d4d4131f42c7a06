#include "xml/XmlSerializer.h"

#include <utility>

CXmlSerializer::CXmlSerializer(std::string rootName, std::string component)
    : m_RootElement(std::move(rootName), ""),
      m_ComponentElement("component", std::move(component)),
      m_MaxDataSize(m_XmlData.max_size()) {
    m_XmlData = m_RootElement.CreateTag(CXmlElement::TAG_OPEN);
    m_XmlData += m_ComponentElement.CreateElement();
}

CXmlSerializer::~CXmlSerializer() = default;

unsigned int CXmlSerializer::XmlSerialize(void* data, char** out) {
    if (data == nullptr || *out != nullptr) {
        return RESULT_INVALID_ARGUMENT;
    }
    const unsigned int result = AddXmlData(m_RootElement.CreateTag(CXmlElement::TAG_CLOSE));
    if (result != RESULT_OK) {
        return result;
    }
    m_pResult = m_XmlData.data();
    *out = m_pResult;
    return RESULT_OK;
}

unsigned int CXmlSerializer::CheckDataSize(unsigned long addLength) const {
    return m_MaxDataSize - m_XmlData.size() < addLength ? RESULT_TOO_LARGE : RESULT_OK;
}

void CXmlSerializer::ReserveXmlData(std::string::size_type bodyLength) {
    const std::string::size_type rest =
        bodyLength + m_RootElement.CreateTag(CXmlElement::TAG_CLOSE).size();
    if (CheckDataSize(rest) == RESULT_OK) {
        m_XmlData.reserve(m_XmlData.size() + rest);
    }
}

unsigned int CXmlSerializer::AddXmlData(std::string data) {
    const unsigned int result = CheckDataSize(data.size());
    if (result == RESULT_OK) {
        m_XmlData += data;
    }
    return result;
}
