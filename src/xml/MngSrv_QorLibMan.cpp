#include "xml/MngSrv_QorLibMan.h"

#include <utility>

#include "xml/XmlSerializer_DispData.h"

CMngSrv_QorLibMan::CMngSrv_QorLibMan() = default;

CMngSrv_QorLibMan::~CMngSrv_QorLibMan() = default;

unsigned int CMngSrv_QorLibMan::XmlSerialize(unsigned int type, const char* component, void* data,
                                             char** out) {
    if (component == nullptr || data == nullptr || *out != nullptr) {
        return CXmlSerializer::RESULT_INVALID_ARGUMENT;
    }
    DeleteXmlSerializer();
    const unsigned int result = CreateXmlSerializer(type, component);
    if (result != CXmlSerializer::RESULT_OK) {
        return result;
    }
    return m_pSerializer->XmlSerialize(data, out);
}

unsigned int CMngSrv_QorLibMan::CreateXmlSerializer(unsigned int type, std::string component) {
    if (type != TYPE_DISPDATA) {
        return CXmlSerializer::RESULT_UNKNOWN_TYPE;
    }
    auto serializer = std::make_unique<CXmlSerializer_DispData>("dispdata", std::move(component));
    if (HasXmlSerializer()) {
        m_Replaced.push_back(std::move(m_pSerializer));
    }
    m_pSerializer = std::move(serializer);
    return CXmlSerializer::RESULT_OK;
}

void CMngSrv_QorLibMan::DeleteXmlSerializer() {
    m_pSerializer.reset();
}
