// The frame of every XML document: the root's opening tag and the component element at
// construction, the root's closing tag at the end. A derived class writes the body in between.
//
//     <root><component>TEXT</component> BODY </root>       or, with an empty component text,
//     <root><component/> BODY </root>                      all of it on one line, without blanks
//
// A serializer makes one document and owns its text.
// Thread rule: one thread at a time.
#ifndef QOR_XML_XMLSERIALIZER_H
#define QOR_XML_XMLSERIALIZER_H

#include <string>

#include "xml/XmlElement.h"

class CXmlSerializer {
public:
    // Results of the XML operations: the top byte tells the kind of failure.
    static constexpr unsigned int RESULT_OK = 0x00000000;
    static constexpr unsigned int RESULT_INVALID_ARGUMENT = 0x01000000;
    static constexpr unsigned int RESULT_UNKNOWN_TYPE = 0x02000000;
    static constexpr unsigned int RESULT_MALFORMED_LIST = 0x03000000;  // plus check and item number
    static constexpr unsigned int RESULT_TOO_LARGE = 0x04000000;

    // Writes the head of the document. Throws std::bad_alloc only.
    CXmlSerializer(std::string rootName, std::string component);
    virtual ~CXmlSerializer();

    // Not copyable: the text that was handed out belongs to exactly one serializer.
    CXmlSerializer(const CXmlSerializer&) = delete;
    CXmlSerializer& operator=(const CXmlSerializer&) = delete;

    // Ends the document and hands out its zero-terminated text.
    //   data  what the body was made of; here only tested for null
    //   out   never null; `*out` must be null on entry and points at the text after success. The
    //         serializer owns the text: the caller does not free it, and it lives as long as the
    //         serializer does.
    // Returns RESULT_OK, RESULT_INVALID_ARGUMENT (`data` null or `*out` not null; nothing is
    // written) or RESULT_TOO_LARGE. On failure `*out` is left as it was.
    virtual unsigned int XmlSerialize(void* data, char** out);

    // RESULT_OK if the document can grow by `addLength` bytes, else RESULT_TOO_LARGE.
    unsigned int CheckDataSize(unsigned long addLength) const;

    // Appends `data` to the document. RESULT_OK, or RESULT_TOO_LARGE with the document unchanged.
    // Throws std::bad_alloc, with the document unchanged.
    unsigned int AddXmlData(std::string data);

    // Everything written so far.
    const std::string& XmlData() const { return m_XmlData; }

private:
    std::string m_XmlData;
    CXmlElement m_RootElement;
    CXmlElement m_ComponentElement;
    char* m_pResult = nullptr;  // the characters of m_XmlData once the document is complete

protected:
    // Lets `append` write to the end of the document, which it gets as a std::string. RESULT_OK, or
    // RESULT_TOO_LARGE with the document as it was.
    template <class Append>
    unsigned int AppendXmlData(Append append) {
        const std::string::size_type size = m_XmlData.size();
        append(m_XmlData);
        if (m_XmlData.size() <= m_MaxDataSize) {
            return RESULT_OK;
        }
        m_XmlData.resize(size);
        return RESULT_TOO_LARGE;
    }

    // Makes room for a body of that many bytes and the end of the document, so that the document
    // does not have to move later.
    void ReserveXmlData(std::string::size_type bodyLength);

    // Bytes that the document may hold: all that a string can. A test of what happens in a full
    // document lowers it, as no machine has the memory to fill one.
    std::string::size_type m_MaxDataSize;
};

#endif  // QOR_XML_XMLSERIALIZER_H
