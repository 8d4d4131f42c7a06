// Chooses the serializer of an XML request, runs it and keeps it, so that the text that it handed
// out stays valid until the next request.
//
// Thread rule: calls on one manager are not synchronised. Two at once are not allowed: each
// destroys the other's text.
#ifndef QOR_XML_MNGSRV_QORLIBMAN_H
#define QOR_XML_MNGSRV_QORLIBMAN_H

#include <memory>
#include <string>
#include <vector>

#include "xml/XmlSerializer.h"

class CMngSrv_QorLibMan {
public:
    // The serializer types: a list of display items as a document with the root "dispdata".
    static constexpr unsigned int TYPE_DISPDATA = 0;

    CMngSrv_QorLibMan();
    ~CMngSrv_QorLibMan();

    // Not copyable: the serializers are owned, and texts handed out point into them.
    CMngSrv_QorLibMan(const CMngSrv_QorLibMan&) = delete;
    CMngSrv_QorLibMan& operator=(const CMngSrv_QorLibMan&) = delete;

    // Makes one document.
    //   type       TYPE_DISPDATA
    //   component  text of the document's component element; zero-terminated, may be empty
    //   data       for TYPE_DISPDATA a std::list<CItemDisp*>*; only read
    //   out        never null; `*out` must be null on entry and points at the zero-terminated text
    //              after success. The manager owns the text: it is valid until the next call that
    //              passes the argument test, failed or not, and at most as long as the manager
    //              lives. The caller copies what it wants to keep and frees nothing.
    // Returns CXmlSerializer::RESULT_...:
    //   RESULT_INVALID_ARGUMENT  `component` or `data` null or `*out` not null (the previous text
    //                            stays valid), or the list is empty
    //   RESULT_UNKNOWN_TYPE
    //   RESULT_MALFORMED_LIST    with check and item number, see CXmlSerializer_DispData
    //   RESULT_TOO_LARGE
    // On failure `*out` stays null. Throws std::bad_alloc only, and leaks nothing then.
    unsigned int XmlSerialize(unsigned int type, const char* component, void* data, char** out);

    // Makes a serializer of this type the current one: RESULT_OK, or RESULT_UNKNOWN_TYPE with
    // nothing changed. One that was current before is not destroyed (its text may be in use); it
    // goes with the manager.
    unsigned int CreateXmlSerializer(unsigned int type, std::string component);

    // Destroys the current serializer and its text; harmless when there is none.
    void DeleteXmlSerializer();

    // Is there a current serializer?
    bool HasXmlSerializer() const { return m_pSerializer != nullptr; }

private:
    std::unique_ptr<CXmlSerializer> m_pSerializer;
    std::vector<std::unique_ptr<CXmlSerializer>> m_Replaced;  // former current ones
};

#endif  // QOR_XML_MNGSRV_QORLIBMAN_H
